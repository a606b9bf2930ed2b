// What the tests of the continuous read-outs share: the three operations, with the texts that they
// alone have.
#pragma once

#include "tests/readout/stream_fixture.hpp"

struct ContinuousReadout {
    const char *name;
    void (*read)(int format, StmPollFn poll, StmOutputFn output);
    RecordKind kind;
    uint8_t command;
    uint8_t second; // byte of the request
    size_t size;
    const char *header;
    bool pauses;
};

constexpr ContinuousReadout CONTINUOUS_READOUTS[] = {
    {"base", stm_continuous_readout, RecordKind::base, 0xC8, 0x49, 56,
     "\"nr\";\"rel_t\";\"U1e\";\"U2e\";\"U3e\";\"Uen\";\"I1\";\"I2\";\"I3\";\"negIe\";\"BE1\";"
     "\"BE2\";\"BE\";\"BE32_01_ext\";\"buffered\";\"checksum\";\n",
     false},
    {"omega", stm_continuous_readout_omega, RecordKind::omega, 0xC1, 0x4E, 52,
     "\"nr\";\"omega_t\";\"rel_t\";\"U1e\";\"U2e\";\"U3e\";\"Uen\";\"I1\";\"I2\";\"I3\";\"negIe\";"
     "\"BE1\";\"BE2\";\"BE\";\"BE32_01_ext\";\"buffered\";\"checksum\";\n",
     false},
    {"temp", stm_continuous_readout_temp, RecordKind::temp, 0x02, 0x55, 48,
     "\"nr\";\"omega_t\";\"rel_t\";\"U1e\";\"U2e\";\"U3e\";\"Uen\";\"I1\";\"I2\";\"I3\";\"negIe\";"
     "\"BE1\";\"BE2\";\"BE\";\"buffered\";\"checksum\";\n",
     true},
};

class ContinuousDialogue : public StreamScript,
                           public testing::WithParamInterface<ContinuousReadout>
{
  protected:
    static constexpr int HEX = 1;
    static constexpr int TEXT = 2;
    static constexpr int CSV = 3;
    static constexpr int SILENT = 0;

    static void read(int format) { GetParam().read(format, poll, output); }

    static std::string request()
    {
        return short_exchange(
            {GetParam().command, GetParam().second, 0xB2, 0xB3, 0xB4, 0xB5, 0xB6, 0xAA});
    }

    // A block, from the poll that finds its header to the request behind it.
    static Transcript fetched(size_t length)
    {
        return joined({STREAM_POLL, {rest(length - held(INDEX)), request()}});
    }

    void send(const Bytes &block) { send_block(INDEX, block); }

    // The pause behind a block, and behind each tenth.
    static Transcript paused()
    {
        return GetParam().pauses ? Transcript{"sleep 20000"} : Transcript();
    }
    static Transcript long_paused()
    {
        return GetParam().pauses ? Transcript{"sleep 60000", "sleep 20000"} : Transcript();
    }

    static const GoldenRecord &golden(size_t index)
    {
        return golden_records(GetParam().kind).at(index);
    }

  private:
    static constexpr size_t INDEX = 6;
};

inline void PrintTo(const ContinuousReadout &readout, std::ostream *stream)
{
    *stream << readout.name;
}

inline std::string readout_name(const testing::TestParamInfo<ContinuousReadout> &info)
{
    return info.param.name;
}

#define INSTANTIATE_FOR_ALL_CONTINUOUS(SUITE)                                                      \
    INSTANTIATE_TEST_SUITE_P(Each, SUITE, testing::ValuesIn(CONTINUOUS_READOUTS), readout_name)
