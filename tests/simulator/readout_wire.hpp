// A wire on which measurements are read out, and what a host makes of the bytes.
#pragma once

#include "tests/simulator/virtual_wire.hpp"

#include <string>
#include <utility>

namespace simulator
{

// A kind of record, as a host knows it.
struct RecordKind {
    uint8_t code;
    size_t size;
    int most;
};

inline constexpr RecordKind BASE = {0xC8, 56, 73};
inline constexpr RecordKind OMEGA = {0xC1, 52, 78};
inline constexpr RecordKind TEMPERATURE = {0x02, 48, 85};
inline constexpr RecordKind KINDS[] = {BASE, OMEGA, TEMPERATURE};

inline uint32_t number_at(const Bytes &bytes, size_t at, size_t width)
{
    uint32_t number = 0;
    for (size_t i = width; i-- > 0;) {
        number = number << 8 | bytes.at(at + i);
    }
    return number;
}

inline int32_t signed_at(const Bytes &bytes, size_t at)
{
    return static_cast<int32_t>(number_at(bytes, at, 4));
}

inline bool is_intact(const Bytes &record)
{
    return bitwise_crc(std::span(record).first(record.size() - 2)) ==
           number_at(record, record.size() - 2, 2);
}

// The records of a block, one after another; a rest that is no whole one is left out.
inline std::vector<Bytes> records_of(const Bytes &block, const RecordKind &kind)
{
    std::vector<Bytes> records;
    for (size_t at = 0; at + kind.size <= block.size(); at += kind.size) {
        const auto begin = block.begin() + static_cast<std::ptrdiff_t>(at);
        records.emplace_back(begin, begin + static_cast<std::ptrdiff_t>(kind.size));
    }
    return records;
}

class ReadoutWire : public VirtualWire
{
  protected:
    static Bytes frame(uint8_t code, int count = 0)
    {
        return {code, static_cast<uint8_t>(count), 0, 0, 0, 0, 0, 0xAA};
    }

    const std::string &note() const { return coprocessor->note(); }

    void power_on_with(const Faults &faults) { power_on({}, {0, faults}); }

    // Polls until the board is ready. The number of polls, 0 if that takes more than a host bears.
    int wait()
    {
        for (int polls = 1; polls <= 3000; ++polls) {
            if (poll_data() == 0x55) {
                return polls;
            }
        }
        return 0;
    }

    size_t fetch_big_endian_length()
    {
        const Bytes length = exchange({0, 0});
        return length[0] * 256U + length[1];
    }

    Bytes fetch(size_t length) { return exchange(Bytes(length, 0x66)); }

    // Reads one block from its request on. announced is its length.
    Bytes read_block(const RecordKind &kind, int count, size_t &announced)
    {
        EXPECT_EQ(exchange(frame(kind.code, count)), Bytes(8, 0));
        EXPECT_NE(wait(), 0);
        announced = fetch_big_endian_length();
        return fetch(announced);
    }

    Bytes read_block(const RecordKind &kind, int count)
    {
        size_t announced = 0;
        return read_block(kind, count, announced);
    }
};

} // namespace simulator
