// What the co-processor has to say to a command.
#include "simulator/board/response.hpp"

#include "simulator/words/text.hpp"

#include <algorithm>

namespace simulator
{

namespace
{

struct KindRow {
    const char *answer; // words for it
    const char *reply;
    bool has_answer;
    bool is_big_endian;
    bool is_block; // a reply of at most LARGEST_BLOCK bytes, whatever the answer
};

constexpr KindRow KIND_ROWS[] = {
    {"result", "reply", true, false, false},
    {"length of the reply", "reply", true, false, false},
    {"length of the values", "values", true, false, true},
    {"result", "raw bytes", false, false, false},
    {"length of ", "", true, true, true},
};

const KindRow &row_of(const Response &response)
{
    return KIND_ROWS[static_cast<size_t>(response.kind)];
}

} // namespace

bool has_answer(const Response &response)
{
    return row_of(response).has_answer;
}

bool is_big_endian(const Response &response)
{
    return row_of(response).is_big_endian;
}

size_t fetched_size(const Response &response)
{
    const KindRow &row = row_of(response);
    const size_t size = row.has_answer ? response.answer : response.size;
    return row.is_block ? std::min(size, LARGEST_BLOCK) : size;
}

std::string answer_note(const Response &response)
{
    const std::string words = row_of(response).answer;
    return response.kind == ResponseKind::block ? words + name_of(response.block) : words;
}

std::string reply_note(const Board &board, const Response &response)
{
    switch (response.kind) {
    case ResponseKind::values:
        return text("%d values", static_cast<uint8_t>(board.behaviour.adc_values));
    case ResponseKind::block:
        return name_of(response.block);
    case ResponseKind::result:
    case ResponseKind::reply:
    case ResponseKind::raw:
        break;
    }
    return row_of(response).reply;
}

void copy_reply(const Board &board, const Response &response, std::span<const uint8_t> buffer,
                std::span<uint8_t> miso)
{
    miso = miso.first(std::min<size_t>(miso.size(), response.size));
    switch (response.at) {
    case ReplyAt::buffer:
        std::ranges::copy(buffer.first(miso.size()), miso.begin());
        break;
    case ReplyAt::text:
        std::ranges::copy(answer_of(board, response.code).substr(0, miso.size()), miso.begin());
        break;
    case ReplyAt::memory:
        for (size_t i = 0; i < miso.size(); ++i) {
            miso[i] = board.bytes.memory[(response.address + i) % MEMORY_SIZE];
        }
        break;
    }
}

} // namespace simulator
