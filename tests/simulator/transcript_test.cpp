// The dialogue as text.
#include "simulator/driver/spi_device.hpp"
#include "simulator/driver/transcript.hpp"

#include <gtest/gtest.h>

#include <cerrno>

namespace simulator
{

namespace
{

using Bytes = std::vector<uint8_t>;
using std::chrono::nanoseconds;

TEST(Transcript, shortens_runs_of_four_and_more)
{
    EXPECT_EQ(transcript_bytes({}), "");
    EXPECT_EQ(transcript_bytes(Bytes{0xAB}), " ab");
    EXPECT_EQ(transcript_bytes(Bytes{1, 1, 1, 2}), " 01 01 01 02");
    EXPECT_EQ(transcript_bytes(Bytes{1, 1, 1, 1, 2}), " 01*4 02");
    EXPECT_EQ(transcript_bytes(Bytes(4096, 0x66)), " 66*4096");
}

TEST(Transcript, has_a_line_for_an_exchange)
{
    const Bytes sent = {0x81};
    const Bytes received = {0x00};
    EXPECT_EQ(transcript_line({7, sent, received, 1, 1, "noted"}, nanoseconds(1'234'567'999)),
              "    7     1.234567     1 > 81 < 00 ; noted\n");
    EXPECT_EQ(transcript_line({7, sent, received, 1, 1, ""}, nanoseconds(0)),
              "    7     0.000000     1 > 81 < 00\n");
}

TEST(Transcript, names_the_error_of_a_failed_exchange)
{
    EXPECT_EQ(transcript_line({8, {}, {}, 4097, -EMSGSIZE, ""}, nanoseconds(999)),
              "    8     0.000000  4097 > ! EMSGSIZE\n");
    EXPECT_EQ(transcript_line({8, {}, {}, 1, -4000, ""}, nanoseconds(0)),
              "    8     0.000000     1 > ! errno 4000\n");
}

} // namespace

} // namespace simulator
