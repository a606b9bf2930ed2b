// A block on its way to a host that polls with twenty bytes.
#include "simulator/board/delivery.hpp"

#include "simulator/wire/bytes.hpp"
#include "simulator/wire/wire.hpp"

#include <algorithm>
#include <array>

namespace simulator
{

namespace
{

constexpr size_t HEADER_SIZE = 3;

} // namespace

std::string Delivery::begin(const Block &block, size_t index, std::span<const uint8_t> buffer,
                            std::span<uint8_t> miso)
{
    block_ = block;
    end_ = static_cast<uint16_t>(HEADER_SIZE + std::min<size_t>(block_.length, LARGEST_BLOCK));
    sent_ = 0;
    advance(buffer, miso.subspan(index));
    return "header of " + name_of(block_);
}

bool Delivery::is_in_header() const
{
    return sent_ < HEADER_SIZE;
}

size_t Delivery::missing() const
{
    return (is_in_header() ? HEADER_SIZE : size_t{end_}) - sent_;
}

bool Delivery::expects(std::span<const uint8_t> mosi) const
{
    const uint8_t wanted = is_in_header() ? 0 : FILLER;
    return sent_ < end_ && mosi.size() == missing() && all_are(mosi, wanted);
}

std::string Delivery::give(std::span<const uint8_t> buffer, std::span<uint8_t> miso)
{
    const char *part = is_in_header() ? "length of " : "";
    advance(buffer, miso);
    return part + name_of(block_);
}

// The answer to the poll may contain more of a block than its announced length.
void Delivery::advance(std::span<const uint8_t> buffer, std::span<uint8_t> miso)
{
    const std::array<uint8_t, 2> length = big_endian(block_.length);
    const uint8_t header[HEADER_SIZE] = {READY, length[0], length[1]};
    const size_t whole = HEADER_SIZE + block_.size;
    for (size_t i = 0; i < miso.size() && sent_ < whole; ++i, ++sent_) {
        miso[i] = is_in_header() ? header[sent_] : buffer[sent_ - HEADER_SIZE];
    }
}

} // namespace simulator
