// The virtual co-processor's commands and answers.
#include "tests/simulator/virtual_wire.hpp"

namespace simulator
{

namespace
{

using Commands = VirtualWire;

const Bytes MODE_QUERY = {0x23, 0, 0, 0, 0, 0, 0, 0xAA};

TEST_F(Commands, a_fresh_board_runs_its_application)
{
    EXPECT_EQ(exchange(MODE_QUERY), Bytes(8, 0));
    EXPECT_EQ(poll_data(), 2);
}

TEST_F(Commands, an_answer_is_given_once)
{
    send({0x91});
    EXPECT_EQ(poll_data(), 5);
    EXPECT_EQ(coprocessor->note(), "answer");
    EXPECT_EQ(poll_data(), 0);
    EXPECT_EQ(coprocessor->note(), "nothing to answer");
}

TEST_F(Commands, a_new_command_forgets_the_answer_to_the_last)
{
    send({0x91});
    send({0x83});
    EXPECT_EQ(poll_data(), 0);
}

TEST_F(Commands, the_version_is_the_boards_own)
{
    power_on({Mode::application, 200}, {});
    send({0x91});
    EXPECT_EQ(poll_data(), 200);
}

TEST_F(Commands, start_and_reset_switch_the_mode)
{
    send({0x81, 0, 0, 0, 0, 0, 0, 0xAA});
    EXPECT_EQ(coprocessor->note(), "boot loader started");
    EXPECT_EQ(coprocessor->mode(), Mode::boot_loader);
    send(MODE_QUERY);
    EXPECT_EQ(poll_data(), 1);
    send({0x83});
    EXPECT_EQ(coprocessor->note(), "application started");
    send(MODE_QUERY);
    EXPECT_EQ(poll_data(), 2);
}

TEST_F(Commands, an_unknown_mode_answers_0)
{
    power_on({Mode::unknown, 5}, {});
    send(MODE_QUERY);
    EXPECT_EQ(poll_data(), 0);
}

TEST_F(Commands, a_frame_with_a_wrong_end_is_ignored)
{
    send({0x81, 0, 0, 0, 0, 0, 0, 0xAB});
    EXPECT_EQ(coprocessor->note(), "command 0x81 ends in 0xAB");
    EXPECT_EQ(coprocessor->mode(), Mode::application);
    send({0x23, 0, 0, 0, 0, 0, 0, 0x00});
    EXPECT_EQ(poll_data(), 0);
}

TEST_F(Commands, what_is_not_understood_is_said_to_be_so)
{
    send({0x24});
    EXPECT_EQ(coprocessor->note(), "not understood");
    send({0x24, 0, 0, 0, 0, 0, 0, 0xAA});
    EXPECT_EQ(coprocessor->note(), "unknown command 0x24");
    send(Bytes(7, 0x81));
    EXPECT_EQ(coprocessor->note(), "not understood");
    send(Bytes(1034, 0x66));
    EXPECT_EQ(coprocessor->note(), "synchronised");
    send(Bytes(1034, 0x67));
    EXPECT_EQ(coprocessor->note(), "not understood");
    EXPECT_EQ(poll_status(), 0);
    EXPECT_EQ(coprocessor->note(), "nothing to acknowledge");
}

TEST_F(Commands, an_empty_exchange_means_nothing)
{
    send({0x91});
    send({});
    EXPECT_EQ(poll_data(), 5);
}

TEST_F(Commands, a_board_without_bus_reads_ff_and_does_nothing)
{
    power_on({}, {0, {{FaultKind::bus_inactive, ALWAYS, 0}}});
    EXPECT_EQ(exchange({0x81, 0, 0, 0, 0, 0, 0, 0xAA}), Bytes(8, 0xFF));
    EXPECT_EQ(poll_data(), 0xFF);
    EXPECT_EQ(coprocessor->mode(), Mode::application);
}

TEST_F(Commands, a_silent_board_reads_00_and_does_nothing)
{
    power_on({}, {0, {{FaultKind::silence, ALWAYS, 0}}});
    EXPECT_EQ(exchange({0x81, 0, 0, 0, 0, 0, 0, 0xAA}), Bytes(8, 0x00));
    send({0x91});
    EXPECT_EQ(poll_data(), 0x00);
    EXPECT_EQ(coprocessor->mode(), Mode::application);
}

} // namespace

} // namespace simulator
