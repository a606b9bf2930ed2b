// The stages of one parameter command.
#include "simulator/board/transaction.hpp"

#include "simulator/wire/bytes.hpp"
#include "simulator/wire/wire.hpp"

#include <algorithm>
#include <array>

namespace simulator
{

namespace
{

constexpr size_t ANSWER_BYTES = 2;

} // namespace

void Transaction::begin(const Response &response)
{
    response_ = response;
    stage_ = Stage::announced;
}

uint8_t Transaction::take_poll()
{
    stage_ = has_answer(response_) ? Stage::answer : Stage::reply;
    return READY;
}

bool Transaction::expects(std::span<const uint8_t> mosi) const
{
    if (stage_ == Stage::answer) {
        return mosi.size() == ANSWER_BYTES && all_are(mosi, 0);
    }
    return stage_ == Stage::reply && mosi.size() == fetched_size(response_) &&
           all_are(mosi, FILLER);
}

std::string Transaction::give(const Board &board, std::span<const uint8_t> buffer,
                              std::span<uint8_t> miso)
{
    if (stage_ == Stage::answer) {
        return give_answer(miso);
    }
    copy_reply(board, response_, buffer, miso);
    stage_ = Stage::idle;
    return reply_note(board, response_);
}

std::string Transaction::give_answer(std::span<uint8_t> miso)
{
    std::array<uint8_t, ANSWER_BYTES> bytes = big_endian(response_.answer);
    if (!is_big_endian(response_)) {
        std::ranges::reverse(bytes);
    }
    std::ranges::copy(bytes, miso.begin());
    stage_ = response_.size == 0 ? Stage::idle : Stage::reply;
    return answer_note(response_);
}

} // namespace simulator
