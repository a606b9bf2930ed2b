// The stages of one parameter command.
#include "simulator/board/transaction.hpp"

#include "simulator/measuring/record_source.hpp"
#include "simulator/wire/bytes.hpp"
#include "simulator/wire/wire.hpp"

#include <algorithm>
#include <array>
#include <utility>

namespace simulator
{

namespace
{

constexpr size_t ANSWER_BYTES = 2;

} // namespace

void Transaction::begin(Response response)
{
    response_ = std::move(response);
    stage_ = Stage::announced;
}

uint8_t Transaction::take_poll()
{
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
    std::array<uint8_t, ANSWER_BYTES> bytes = big_endian(response_.answer);
    if (!response_.big_endian) {
        std::ranges::reverse(bytes);
    }
    std::ranges::copy(bytes, miso.begin());
    stage_ = response_.reply.empty() ? Stage::idle : Stage::reply;
    note_ = response_.answer_note;
}

} // namespace simulator
