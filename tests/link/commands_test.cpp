// Goal: each single-byte command puts exactly its bytes on the wire, in cleared buffers, and the
// two that print say what came back, or what a failed query leaves.
#include "link/link.hpp"
#include "link/stm_com_funcs.h"
#include "tests/platform/dialogue.hpp"

#include <cerrno>
#include <cstring>

using namespace stm;

namespace
{

class Command : public Dialogue
{
  protected:
    Command() { open_link(); }
};

class Query : public Command
{
};

struct Printed {
    uint8_t answer;
    const char *text;
};

class PrintedVersion : public Command, public testing::WithParamInterface<Printed>
{
};

class PrintedState : public Command, public testing::WithParamInterface<Printed>
{
};

struct CommandCall {
    const char *name;
    int (*call)();
};

int query_state()
{
    uint8_t answer = 0;
    return stm_query_byte(0x23, &answer);
}

int query_version()
{
    uint8_t answer = 0;
    return stm_query_byte(0x91, &answer);
}

class EveryCommand : public Command, public testing::WithParamInterface<CommandCall>
{
};

Bytes all_but_the_first(size_t count, const uint8_t *buffer)
{
    return Bytes(buffer + count, buffer + 4096);
}

} // namespace

TEST_F(Command, start_bootloader_is_a_frame_of_eight_bytes)
{
    EXPECT_EQ(stm_start_bootloader(), 0);
    EXPECT_TRUE(happened({"exchange 8: 81 00*6 AA"}));
}

TEST_F(Command, reset_is_a_single_byte_without_an_end_byte)
{
    EXPECT_EQ(stm_reset(), 0);
    EXPECT_TRUE(happened({"exchange 1: 83"}));
    EXPECT_EQ(stm_link.tx_buffer[7], 0x00);
}

TEST_F(Command, failing_start_bootloader_is_reported)
{
    fail_exchange(1, EIO);
    EXPECT_EQ(stm_start_bootloader(), -1);
    EXPECT_TRUE(happened({"exchange 8: 81 00*6 AA", "perror \"SPI command\" EIO"}));
}

TEST_F(Command, failing_reset_is_reported)
{
    fail_exchange(1, ESHUTDOWN);
    EXPECT_EQ(stm_reset(), -1);
    EXPECT_TRUE(happened({"exchange 1: 83", "perror \"SPI command\" ESHUTDOWN"}));
}

TEST_F(Command, one_after_another_leaves_no_byte_of_the_one_before)
{
    uint8_t answer = 0;
    EXPECT_EQ(stm_query_byte(0x23, &answer), 0);
    EXPECT_EQ(stm_reset(), 0);
    EXPECT_EQ(stm_start_bootloader(), 0);
    EXPECT_TRUE(happened({
        "exchange 8: 23 00*6 AA",
        "sleep 100000",
        "exchange 1: 44",
        "exchange 1: 83",
        "exchange 8: 81 00*6 AA",
    }));
}

TEST_P(EveryCommand, clears_exactly_48_bytes_of_both_buffers)
{
    memset(stm_link.tx_buffer, 0x5A, sizeof(stm_link.tx_buffer));
    memset(stm_link.rx_buffer, 0xA5, sizeof(stm_link.rx_buffer));
    int exchanges = 0;
    watch = [&exchanges](const spi_ioc_transfer &) {
        if (++exchanges == 1) {
            EXPECT_EQ(Bytes(stm_link.tx_buffer + 8, stm_link.tx_buffer + 48), bytes_of(40, 0));
            EXPECT_EQ(Bytes(stm_link.rx_buffer, stm_link.rx_buffer + 48), bytes_of(48, 0));
        }
    };
    EXPECT_EQ(GetParam().call(), 0);
    EXPECT_GE(exchanges, 1);
    EXPECT_EQ(all_but_the_first(48, stm_link.tx_buffer), bytes_of(4048, 0x5A));
    EXPECT_EQ(all_but_the_first(48, stm_link.rx_buffer), bytes_of(4048, 0xA5));
}

TEST_P(EveryCommand, leaves_0x66_behind_its_48_bytes_after_opening)
{
    EXPECT_EQ(GetParam().call(), 0);
    EXPECT_EQ(all_but_the_first(48, stm_link.tx_buffer), bytes_of(4048, 0x66));
}

TEST_P(EveryCommand, has_a_descriptor_of_its_own)
{
    memset(static_cast<void *>(&stm_link.transfer), 0xEE, sizeof(stm_link.transfer));
    const spi_ioc_transfer shared = stm_link.transfer;
    watch = [](const spi_ioc_transfer &used) { EXPECT_NE(&used, &stm_link.transfer); };
    EXPECT_EQ(GetParam().call(), 0);
    EXPECT_EQ(memcmp(&stm_link.transfer, &shared, sizeof(shared)), 0);
}

TEST_P(EveryCommand, leaves_the_message_and_the_short_buffers_alone)
{
    strcpy(stm_link.message, "the last report");
    memset(stm_link.tx_short, 0x11, sizeof(stm_link.tx_short));
    memset(stm_link.rx_short, 0x22, sizeof(stm_link.rx_short));
    EXPECT_EQ(GetParam().call(), 0);
    EXPECT_STREQ(stm_link.message, "the last report");
    EXPECT_EQ(bytes_in(stm_link.tx_short), bytes_of(13, 0x11));
    EXPECT_EQ(bytes_in(stm_link.rx_short), bytes_of(10, 0x22));
}

INSTANTIATE_TEST_SUITE_P(Each, EveryCommand,
                         testing::Values(CommandCall{"start", stm_start_bootloader},
                                         CommandCall{"reset", stm_reset},
                                         CommandCall{"state", query_state},
                                         CommandCall{"version", query_version}),
                         [](const auto &each) { return each.param.name; });

TEST_F(Query, state_is_asked_for_with_a_frame_and_fetched_100_ms_later)
{
    uint8_t answer = 0;
    answer_statuses({0x11, 0x02});
    EXPECT_EQ(stm_query_byte(0x23, &answer), 0);
    EXPECT_EQ(answer, 0x02);
    EXPECT_TRUE(happened({"exchange 8: 23 00*6 AA", "sleep 100000", "exchange 1: 44"}));
}

TEST_F(Query, version_is_asked_for_with_a_single_byte)
{
    uint8_t answer = 0;
    answer_statuses({0x11, 0x05});
    EXPECT_EQ(stm_query_byte(0x91, &answer), 0);
    EXPECT_EQ(answer, 0x05);
    EXPECT_TRUE(happened({"exchange 1: 91", "sleep 100000", "exchange 1: 44"}));
}

TEST_F(Query, of_all_commands_only_the_number_sign_is_sent_as_a_frame)
{
    for (int command = 0; command < 256; ++command) {
        forget();
        uint8_t answer = 0;
        const auto byte = static_cast<uint8_t>(command);
        EXPECT_EQ(stm_query_byte(byte, &answer), 0);
        const Bytes sent = command == 0x23 ? Bytes{0x23, 0, 0, 0, 0, 0, 0, 0xAA} : Bytes{byte};
        EXPECT_TRUE(happened({exchange(sent), "sleep 100000", "exchange 1: 44"}));
    }
}

TEST_F(Query, every_answer_byte_is_an_answer)
{
    for (int value = 0; value < 256; ++value) {
        forget();
        answer(2, {static_cast<uint8_t>(value)});
        uint8_t answer = 0x77;
        EXPECT_EQ(stm_query_byte(0x91, &answer), 0);
        EXPECT_EQ(answer, value);
    }
}

TEST_F(Query, fetching_replaces_the_command_alone)
{
    uint8_t answer = 0;
    EXPECT_EQ(stm_query_byte(0x23, &answer), 0);
    EXPECT_EQ(Bytes(stm_link.tx_buffer, stm_link.tx_buffer + 9),
              Bytes({0x44, 0, 0, 0, 0, 0, 0, 0xAA, 0}));
}

TEST_F(Query, failing_command_leaves_the_answer_untouched_and_fetches_nothing)
{
    uint8_t answer = 0x77;
    fail_exchange(1, EIO);
    EXPECT_EQ(stm_query_byte(0x91, &answer), -1);
    EXPECT_EQ(answer, 0x77);
    EXPECT_TRUE(happened({"exchange 1: 91", "perror \"SPI command\" EIO"}));
}

TEST_F(Query, failing_frame_is_reported_like_a_failing_byte)
{
    uint8_t answer = 0x77;
    fail_exchange(1, EIO);
    EXPECT_EQ(stm_query_byte(0x23, &answer), -1);
    EXPECT_EQ(answer, 0x77);
    EXPECT_TRUE(happened({"exchange 8: 23 00*6 AA", "perror \"SPI command\" EIO"}));
}

TEST_F(Query, failing_fetch_leaves_the_answer_untouched)
{
    uint8_t answer = 0x77;
    answer_statuses({0x11});
    fail_exchange(2, EIO);
    EXPECT_EQ(stm_query_byte(0x91, &answer), -1);
    EXPECT_EQ(answer, 0x77);
    EXPECT_TRUE(happened({
        "exchange 1: 91",
        "sleep 100000",
        "exchange 1: 44",
        "perror \"read data\" EIO",
    }));
}

TEST_P(PrintedVersion, is_the_minor_number_behind_a_fixed_major_one)
{
    output_result = 23;
    strcpy(stm_link.message, "the last report");
    answer_statuses({0x11, GetParam().answer});
    EXPECT_EQ(stm_print_booter_version(poll, output), 23);
    EXPECT_TRUE(
        happened({"exchange 1: 91", "sleep 100000", "exchange 1: 44", say(GetParam().text)}));
    EXPECT_STREQ(stm_link.message, "the last report");
}

INSTANTIATE_TEST_SUITE_P(
    Answers, PrintedVersion,
    testing::Values(Printed{0, "Booter Version unknown\n"}, Printed{1, "Booter Version 1.1\n"},
                    Printed{5, "Booter Version 1.5\n"}, Printed{127, "Booter Version 1.127\n"},
                    Printed{128, "Booter Version 1.128\n"}, Printed{200, "Booter Version 1.200\n"},
                    Printed{255, "Booter Version 1.255\n"}));

TEST_P(PrintedState, is_the_number_alone)
{
    output_result = -5;
    strcpy(stm_link.message, "the last report");
    answer_statuses({0x11, GetParam().answer});
    EXPECT_EQ(stm_print_state(poll, output), -5);
    EXPECT_TRUE(happened(
        {"exchange 8: 23 00*6 AA", "sleep 100000", "exchange 1: 44", say(GetParam().text)}));
    EXPECT_STREQ(stm_link.message, "the last report");
}

INSTANTIATE_TEST_SUITE_P(Answers, PrintedState,
                         testing::Values(Printed{0, "0\n"}, Printed{1, "1\n"}, Printed{2, "2\n"},
                                         Printed{10, "10\n"}, Printed{128, "128\n"},
                                         Printed{255, "255\n"}));

TEST_F(Command, version_after_a_failing_command_is_unknown)
{
    output_result = 4;
    fail_exchange(1, EIO);
    EXPECT_EQ(stm_print_booter_version(poll, output), 4);
    EXPECT_TRUE(happened({
        "exchange 1: 91",
        "perror \"SPI command\" EIO",
        "say 0 \"Booter Version unknown\\n\"",
    }));
}

TEST_F(Command, version_after_a_failing_fetch_is_unknown)
{
    answer_statuses({0x11});
    fail_exchange(2, EIO);
    EXPECT_EQ(stm_print_booter_version(poll, output), 0);
    EXPECT_TRUE(happened({
        "exchange 1: 91",
        "sleep 100000",
        "exchange 1: 44",
        "perror \"read data\" EIO",
        "say 0 \"Booter Version unknown\\n\"",
    }));
}

TEST_F(Command, state_after_a_failing_command_is_0)
{
    output_result = 4;
    fail_exchange(1, EIO);
    EXPECT_EQ(stm_print_state(poll, output), 4);
    EXPECT_TRUE(happened({
        "exchange 8: 23 00*6 AA",
        "perror \"SPI command\" EIO",
        "say 0 \"0\\n\"",
    }));
}

TEST_F(Command, state_after_a_failing_fetch_is_0)
{
    answer_statuses({0x11});
    fail_exchange(2, EIO);
    EXPECT_EQ(stm_print_state(poll, output), 0);
    EXPECT_TRUE(happened({
        "exchange 8: 23 00*6 AA",
        "sleep 100000",
        "exchange 1: 44",
        "perror \"read data\" EIO",
        "say 0 \"0\\n\"",
    }));
}

TEST_F(Command, exchange_that_returns_0_has_not_failed)
{
    exchange_result = 0;
    EXPECT_EQ(stm_reset(), 0);
    EXPECT_EQ(stm_start_bootloader(), 0);
}

TEST_F(Query, answer_that_does_not_come_back_is_the_byte_before)
{
    watch = [](const spi_ioc_transfer &descriptor) {
        if (descriptor.len == 1 && stm_link.tx_buffer[0] == 0x91) {
            stm_link.rx_buffer[0] = 0x77;
        }
    };
    bytes_come_back = false;
    uint8_t answer = 0;
    EXPECT_EQ(stm_query_byte(0x91, &answer), 0);
    EXPECT_EQ(answer, 0x77);
}
