// A wire on which a stream is read out, in a time that the tests count.
#pragma once

#include "tests/simulator/readout_wire.hpp"

#include <chrono>

namespace simulator
{

using std::chrono::microseconds;
using std::chrono::milliseconds;
using std::chrono::nanoseconds;
using std::chrono::seconds;

class StreamWire : public ReadoutWire
{
  protected:
    void pass(nanoseconds time) { now += time; }

    void request(const RecordKind &kind) { send(frame(kind.code, kind.most)); }

    Bytes exchange(const Bytes &mosi) override
    {
        coprocessor->advance_to(now);
        return ReadoutWire::exchange(mosi);
    }

    Bytes poll_stream() { return exchange(Bytes(20, 0x44)); }

    // Requests and polls once, with which the board begins to measure.
    void begin_stream(const RecordKind &kind)
    {
        request(kind);
        EXPECT_EQ(poll_stream(), Bytes(20, 0));
    }

    // Fetches a block whose header the poll has found. announced is its length.
    Bytes fetch_behind(const Bytes &poll, size_t &announced)
    {
        const auto header = static_cast<size_t>(std::ranges::find(poll, 0x55) - poll.begin());
        Bytes bytes(poll.begin() + static_cast<std::ptrdiff_t>(header), poll.end());
        if (bytes.empty()) {
            ADD_FAILURE() << "no header";
            return {};
        }
        if (bytes.size() < 3) {
            append(bytes, exchange(Bytes(3 - bytes.size(), 0)));
        }
        announced = bytes[1] * 256U + bytes[2];
        bytes.erase(bytes.begin(), bytes.begin() + 3);
        const size_t fetched = std::min<size_t>(announced, 4096);
        append(bytes, fetch(fetched - std::min(fetched, bytes.size())));
        bytes.resize(fetched);
        return bytes;
    }

    // Reads the next block of a stream, its request included.
    Bytes read_stream(const RecordKind &kind)
    {
        request(kind);
        size_t announced = 0;
        return fetch_behind(poll_stream(), announced);
    }

    static void append(Bytes &bytes, const Bytes &more)
    {
        bytes.insert(bytes.end(), more.begin(), more.end());
    }

    static std::vector<uint32_t> times_of(const Bytes &block, const RecordKind &kind)
    {
        std::vector<uint32_t> times;
        for (const Bytes &record : records_of(block, kind)) {
            EXPECT_TRUE(is_intact(record));
            times.push_back(number_at(record, 4, 4));
        }
        return times;
    }

    // first, and those that follow it.
    static std::vector<uint32_t> run_from(uint32_t first, size_t count)
    {
        std::vector<uint32_t> run(count);
        for (size_t i = 0; i < count; ++i) {
            run[i] = first + static_cast<uint32_t>(i);
        }
        return run;
    }

    static int buffered_of(const Bytes &record) { return record[record.size() - 3]; }

    nanoseconds now{0};
};

} // namespace simulator
