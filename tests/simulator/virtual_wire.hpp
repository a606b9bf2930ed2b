// A wire to a virtual co-processor, and the frames that a host sends over it.
#pragma once

#include "simulator/board/coprocessor.hpp"
#include "simulator/wire/crc.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

namespace simulator
{

using Bytes = std::vector<uint8_t>;

// A frame of a download. The bytes behind its data are those of the tail.
inline Bytes image_frame(uint32_t address, uint32_t size, const Bytes &data, uint8_t tail = 0)
{
    Bytes frame(IMAGE_FRAME_SIZE, 0);
    std::fill(frame.end() - 10, frame.end(), tail);
    for (size_t i = 0; i < 4; ++i) {
        frame[2 + i] = static_cast<uint8_t>(address >> (8 * i));
        frame[6 + i] = static_cast<uint8_t>(size >> (8 * i));
    }
    std::ranges::copy(data, frame.begin() + 10);
    const uint16_t checksum = bitwise_crc(std::span(frame).subspan(2));
    frame[0] = static_cast<uint8_t>(checksum);
    frame[1] = static_cast<uint8_t>(checksum >> 8);
    return frame;
}

class VirtualWire : public testing::Test
{
  protected:
    void power_on(BoardIdentity identity, Behaviour behaviour)
    {
        coprocessor.emplace(bytes(), identity, std::move(behaviour));
    }

    virtual Bytes exchange(const Bytes &mosi)
    {
        Bytes miso(mosi.size(), 0x77);
        coprocessor->exchange(mosi, miso);
        return miso;
    }

    // The same for exchanges whose answer does not matter.
    void send(const Bytes &mosi) { exchange(mosi); }

    uint8_t poll_status() { return exchange({0x33})[0]; }
    uint8_t poll_data() { return exchange({0x44})[0]; }

    // Sends a frame and fetches its status.
    uint8_t status_of(const Bytes &mosi)
    {
        send(mosi);
        return poll_status();
    }

    Bytes flash_at(uint32_t address, size_t size) const
    {
        const auto begin = flash.begin() + (address - FLASH_START);
        return {begin, begin + static_cast<std::ptrdiff_t>(size)};
    }

    BoardBytes bytes()
    {
        return {std::span<uint8_t, FLASH_SIZE>(flash), std::span<uint8_t, MEMORY_SIZE>(memory)};
    }

    Bytes flash = Bytes(FLASH_SIZE, 0xEE);
    Bytes memory = Bytes(MEMORY_SIZE, 0);
    std::optional<Coprocessor> coprocessor = Coprocessor(bytes(), BoardIdentity(), Behaviour());
};

} // namespace simulator
