// The stages of one parameter command.
#include "simulator/board/transaction.hpp"

#include "simulator/measuring/record_source.hpp"

#include <algorithm>
#include <utility>

namespace simulator
{

namespace
{

constexpr uint8_t BUSY = 0x00;
constexpr uint8_t READY = 0x55;
constexpr uint8_t FILLER = 0x66;
constexpr size_t ANSWER_BYTES = 2;

bool all_are(std::span<const uint8_t> bytes, uint8_t value)
{
    return std::ranges::count(bytes, value) == std::ssize(bytes);
}

} // namespace

void Transaction::begin(Response response, int64_t busy_polls)
{
    response_ = std::move(response);
    busy_ = busy_polls;
    stage_ = Stage::busy;
}

uint8_t Transaction::take_poll()
{
    if (busy_ > 0) {
        --busy_;
        note_ = "busy";
        return BUSY;
    }
    stage_ = response_.has_answer ? Stage::answer : Stage::reply;
    note_ = "ready";
    return READY;
}

bool Transaction::expects(std::span<const uint8_t> mosi) const
{
    if (stage_ == Stage::answer) {
        return mosi.size() == ANSWER_BYTES && all_are(mosi, 0);
    }
    return stage_ == Stage::reply && mosi.size() == reply_size() && all_are(mosi, FILLER);
}

size_t Transaction::reply_size() const
{
    const size_t size = response_.has_answer ? response_.answer : response_.reply.size();
    return response_.is_block ? std::min(size, LARGEST_BLOCK) : size;
}

void Transaction::give(std::span<uint8_t> miso)
{
    if (stage_ == Stage::answer) {
        give_answer(miso);
        return;
    }
    const size_t size = std::min(miso.size(), response_.reply.size());
    std::copy_n(response_.reply.begin(), size, miso.begin());
    stage_ = Stage::idle;
    note_ = response_.reply_note;
}

void Transaction::give_answer(std::span<uint8_t> miso)
{
    miso[response_.big_endian ? 1 : 0] = static_cast<uint8_t>(response_.answer);
    miso[response_.big_endian ? 0 : 1] = static_cast<uint8_t>(response_.answer >> 8);
    stage_ = response_.reply.empty() ? Stage::idle : Stage::reply;
    note_ = response_.answer_note;
}

} // namespace simulator
