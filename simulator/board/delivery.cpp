// A block on its way to a host that polls with twenty bytes.
#include "simulator/board/delivery.hpp"

#include "simulator/wire/bytes.hpp"
#include "simulator/wire/wire.hpp"

#include <algorithm>
#include <array>
#include <utility>

namespace simulator
{

namespace
{

constexpr size_t HEADER_SIZE = 3;

} // namespace

void Delivery::begin(Block block, size_t index, std::span<uint8_t> miso)
{
    block_ = std::move(block);
    end_ = HEADER_SIZE + std::min<size_t>(block_.length, LARGEST_BLOCK);
    const std::array<uint8_t, 2> length = big_endian(block_.length);
    block_.bytes.insert(block_.bytes.begin(), {READY, length[0], length[1]});
    sent_ = 0;
    advance(miso.subspan(index));
    note_ = "header of " + block_.name;
}

bool Delivery::is_in_header() const
{
    return sent_ < HEADER_SIZE;
}

size_t Delivery::missing() const
{
    return (is_in_header() ? HEADER_SIZE : end_) - sent_;
}

bool Delivery::expects(std::span<const uint8_t> mosi) const
{
    const uint8_t wanted = is_in_header() ? 0 : FILLER;
    return sent_ < end_ && mosi.size() == missing() && all_are(mosi, wanted);
}

void Delivery::give(std::span<uint8_t> miso)
{
    note_ = is_in_header() ? "length of " + block_.name : block_.name;
    advance(miso);
}

// The answer to the poll may contain more of a block than its announced length.
void Delivery::advance(std::span<uint8_t> miso)
{
    const size_t given = std::min(miso.size(), block_.bytes.size() - sent_);
    std::copy_n(block_.bytes.begin() + static_cast<std::ptrdiff_t>(sent_), given, miso.begin());
    sent_ += given;
}

} // namespace simulator
