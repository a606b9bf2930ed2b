// What the tests of writer and watcher share: the live stream of records with a temperature.
#pragma once

#include "tests/readout/stream_fixture.hpp"

class TempStream : public StreamScript
{
  protected:
    static constexpr char REQUEST[] = "short exchange 8: 02 55 B2 B3 B4 B5 B6 AA";

    // A record with this number and time stamp.
    static Bytes stamped(int nr, int64_t rel_t, int buffered = 0)
    {
        return record(RecordKind::temp, {{"nr", nr}, {"rel_t", rel_t}, {"buffered", buffered}});
    }

    // So many of them with a number each, and time stamps one after another.
    static Bytes stamped_run(int count, int64_t first)
    {
        Bytes all;
        for (int i = 0; i < count; ++i) {
            all = chained({all, stamped((i + 1) % 256, first + i)});
        }
        return all;
    }

    static Bytes bad_record() { return spoiled(stamped(9, 900), 11); }
    static std::string complaint() { return wrong_stream_checksum(bad_record(), 48); }

    // A block, and what happens from the poll that finds its header to the request behind it.
    void send(const Bytes &block) { send_block(INDEX, block); }

    static Transcript fetched(size_t length)
    {
        return joined({STREAM_POLL, {rest(length - held(INDEX)), REQUEST}});
    }

  private:
    static constexpr size_t INDEX = 9;
};
