// Goal: what virtual-board is told reaches the library in the program, through the environment.
#include "simulator/settings.hpp"

#include <gtest/gtest.h>

#include <cstdlib>

namespace simulator
{

namespace
{

Settings told()
{
    Settings settings;
    settings.directory = "/board";
    settings.transcript = "-";
    settings.counts_time = true;
    settings.behaviour.busy_polls = 3;
    settings.behaviour.seed = 1'000'000'000;
    settings.behaviour.adc_values = 0;
    settings.behaviour.rate = 1'000'000;
    settings.behaviour.header_index = ANY_HEADER_INDEX;
    settings.behaviour.buffer_size = 1'048'576;
    return settings;
}

TEST(SettingsOfABoard, arrive_as_they_were_told)
{
    Settings settings = told();
    std::string reason;
    EXPECT_TRUE(add_fault(settings, "flip@7=13", reason));
    EXPECT_TRUE(add_fault(settings, "deaf@0xC8=2", reason));
    EXPECT_TRUE(add_fault(settings, "intrusion@t=2.5s=/a=b@c", reason));
    put_into_environment(settings);
    Settings taken;
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

TEST(SettingsOfABoard, are_refused_if_a_number_is_missing_or_none)
{
    for (const char *variable :
         {"VIRTUAL_BOARD_BUSY", "VIRTUAL_BOARD_SEED", "VIRTUAL_BOARD_SAMPLES", "VIRTUAL_BOARD_RATE",
          "VIRTUAL_BOARD_HEADER_INDEX", "VIRTUAL_BOARD_BUFSIZ"}) {
        for (const char *words : {"", "x", "-1", "1000000001"}) {
            put_into_environment(told());
            setenv(variable, words, 1);
            Settings taken;
            EXPECT_FALSE(take_from_environment(taken)) << variable << words;
        }
        put_into_environment(told());
        unsetenv(variable);
        Settings taken;
        EXPECT_FALSE(take_from_environment(taken)) << variable;
    }
}

} // namespace

} // namespace simulator
