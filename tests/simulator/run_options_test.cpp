// Goal: what virtual-board is told reaches the library in the program, through the environment.
#include "simulator/run/run_options.hpp"

#include <gtest/gtest.h>

#include <cstdlib>

namespace simulator
{

namespace
{

RunOptions told()
{
    RunOptions options;
    options.directory = "/board";
    options.transcript = "-";
    options.counts_time = true;
    options.behaviour.busy_polls = 3;
    options.behaviour.seed = 1'000'000'000;
    options.behaviour.adc_values = 0;
    options.behaviour.rate = 1'000'000;
    options.behaviour.header_index = ANY_HEADER_INDEX;
    options.behaviour.buffer_size = 1'048'576;
    return options;
}

TEST(OptionsOfARun, arrive_as_they_were_told)
{
    RunOptions options = told();
    std::string reason;
    EXPECT_TRUE(add_fault(options, "flip@7=13", reason));
    EXPECT_TRUE(add_fault(options, "deaf@0xC8=2", reason));
    EXPECT_TRUE(add_fault(options, "intrusion@t=2.5s=/a=b@c", reason));
    put_into_environment(options);
    RunOptions taken;
    ASSERT_TRUE(take_from_environment(taken));
    EXPECT_EQ(taken.directory, "/board");
    EXPECT_EQ(taken.transcript, "-");
    EXPECT_TRUE(taken.counts_time);
    EXPECT_FALSE(taken.through);
    EXPECT_EQ(taken.behaviour.busy_polls, 3);
    EXPECT_EQ(taken.behaviour.seed, 1'000'000'000);
    EXPECT_EQ(taken.behaviour.adc_values, 0);
    EXPECT_EQ(taken.behaviour.rate, 1'000'000);
    EXPECT_EQ(taken.behaviour.header_index, ANY_HEADER_INDEX);
    EXPECT_EQ(taken.behaviour.buffer_size, 1'048'576);
    ASSERT_EQ(taken.behaviour.faults.size(), 3U);
    EXPECT_EQ(taken.behaviour.faults[1].value, 2);
    EXPECT_EQ(taken.behaviour.faults[2].span.from, std::chrono::milliseconds(2500));
    EXPECT_EQ(taken.behaviour.faults[2].file, "/a=b@c");
}

TEST(OptionsOfARun, are_refused_if_a_number_is_missing_or_none)
{
    for (const char *variable :
         {"VIRTUAL_BOARD_BUSY", "VIRTUAL_BOARD_SEED", "VIRTUAL_BOARD_SAMPLES", "VIRTUAL_BOARD_RATE",
          "VIRTUAL_BOARD_HEADER_INDEX", "VIRTUAL_BOARD_BUFSIZ"}) {
        for (const char *words : {"", "x", "-1", "1000000001"}) {
            put_into_environment(told());
            setenv(variable, words, 1);
            RunOptions taken;
            EXPECT_FALSE(take_from_environment(taken)) << variable << words;
        }
        put_into_environment(told());
        unsetenv(variable);
        RunOptions taken;
        EXPECT_FALSE(take_from_environment(taken)) << variable;
    }
}

} // namespace

} // namespace simulator
