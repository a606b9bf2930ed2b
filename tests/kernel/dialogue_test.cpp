// What two dialogues have to have in common, and what may differ.
#include "tests/kernel/dialogue.hpp"

#include <gtest/gtest.h>

using kernel_test::difference;
using kernel_test::events_of;
using kernel_test::without_times;

namespace
{

const std::string ASKED =
    "    1     0.000011     8 > c8 49 00*5 aa < 00*8 ; 73 records asked for\n";

// A block with records of six bytes: a mark, two of content, the number still buffered, a checksum.
std::string block_of(const std::string &records, int count)
{
    return "    2     0.000020     4 > 44*4 < 55 00 00 " + records.substr(0, 2) +
           " ; header of block 1: " + std::to_string(count) + " records\n" +
           "    3     0.000030     9 > 66*9 <" + records.substr(2) +
           " ; block 1: " + std::to_string(count) + " records\n";
}

std::string compared(const std::string &one, const std::string &other)
{
    return difference(events_of(one), events_of(other));
}

} // namespace

TEST(Dialogue, numbers_and_times_do_not_count)
{
    EXPECT_EQ(
        compared("    1     0.000011     1 > 81 < 00\n", "    7     3.500011     1 > 81 < 00\n"),
        "");
}

TEST(Dialogue, a_byte_that_was_sent_or_received_counts)
{
    const std::string one = "    1     0.000011     1 > 81 < 00\n";
    EXPECT_EQ(compared(one, "    1     0.000011     1 > 82 < 00\n"),
              "event 1:\n  1 >  81 < 00\n  1 >  82 < 00");
    EXPECT_NE(compared(one, "    1     0.000011     1 > 81 < 55\n"), "");
    EXPECT_NE(compared(one, "    1     0.000011     1 > 81 ! EIO\n"), "");
}

TEST(Dialogue, an_exchange_that_is_missing_counts)
{
    EXPECT_EQ(compared("    1     0.000011     1 > 81 < 00\n", ""),
              "event 1:\n  1 >  81 < 00\n  (the end)");
    EXPECT_NE(compared("", "    1     0.000011     1 > 81 < 00\n"), "");
}

TEST(Dialogue, what_the_board_made_of_it_counts)
{
    EXPECT_NE(compared("    1     0.000011     1 > 81 < 00 ; firmware download begins\n",
                       "    1     0.000011     1 > 81 < 00\n"),
              "");
}

TEST(Dialogue, polls_that_got_nothing_do_not_count)
{
    EXPECT_EQ(
        compared("    1     0.000011     1 > 33 < 00\n    2     0.000022    20 > 44*20 < 00*20\n",
                 ""),
        "");
    EXPECT_NE(compared("    1     0.000011     1 > 33 < 55\n", ""), "");
    EXPECT_NE(compared("    1     0.000011     1 > 66 < 00\n", ""), "");
}

TEST(Dialogue, what_never_reached_the_wire_does_not_count)
{
    EXPECT_EQ(compared("    1     0.000011  4097 > ! EMSGSIZE\n    2     0.000011     0 > <\n"
                       "    3     0.000011    16 > <\n",
                       ""),
              "");
    EXPECT_NE(compared("    1     0.000011     1 > ! EIO\n", ""), "");
}

TEST(Dialogue, records_count_however_they_are_divided_among_blocks)
{
    const std::string both = ASKED + block_of("55 0a 0b 01 11 12 55 0c 0d 00 13 14", 2);
    const std::string one_by_one =
        ASKED + block_of("55 0a 0b 00 21 22", 1) + ASKED + block_of("55 0c 0d 00 13 14", 1);
    EXPECT_EQ(compared(both, one_by_one), "");
    EXPECT_NE(compared(both, ASKED + block_of("55 0a 0b 01 11 12 55 0c 0e 00 13 14", 2)), "");
}

TEST(Dialogue, a_stream_may_end_with_more_records_but_not_without_any)
{
    const std::string two = ASKED + block_of("55 0a 0b 01 11 12 55 0c 0d 00 13 14", 2);
    EXPECT_EQ(compared(two, ASKED + block_of("55 0a 0b 00 21 22", 1)), "");
    EXPECT_NE(compared(two, ASKED), "");
}

TEST(Dialogue, what_is_no_line_of_a_transcript_is_not_passed_over)
{
    EXPECT_NE(compared("nonsense\n", ""), "");
}

TEST(Outputs, measured_times_and_rates_do_not_count)
{
    EXPECT_EQ(without_times("5000 bytes in 0.09 s, 57.3 KiB/s; silent for 2 s, 4 time-outs"),
              "5000 bytes in T s, T KiB/s; silent for T s, T time-outs");
}
