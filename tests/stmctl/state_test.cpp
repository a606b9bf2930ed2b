// stmctl state, version, start and reset: what the co-processor is running, as text and numbers,
// and never a default instead of an answer.
#include "tests/stmctl/stmctl_bench.hpp"

namespace
{

class State : public StmctlBench
{
};

TEST_F(State, is_shown_as_text_and_number)
{
    EXPECT_EQ(says({"state"}), "application (2)\n");
    EXPECT_EQ(says({"state"}, {"--mode", "boot loader"}), "boot loader (1)\n");
}

TEST_F(State, version_is_shown_as_text_and_number)
{
    EXPECT_EQ(says({"version"}), "boot loader 1.5 (5)\n");
    EXPECT_EQ(says({"version"}, {"--version", "254"}), "boot loader 1.254 (254)\n");
}

TEST_F(State, is_shown_as_json)
{
    EXPECT_EQ(says({"state", "--json"}), "{\"state\":\"application\",\"number\":2}\n");
    EXPECT_EQ(says({"state", "--json"}, {"--mode", "boot loader"}),
              "{\"state\":\"boot loader\",\"number\":1}\n");
    EXPECT_EQ(says({"version", "--json"}), "{\"version\":\"1.5\",\"number\":5}\n");
    expect_failure(with_fault("silence", {"state", "--json"}), 1,
                   "state unknown: the answer is 0, so nothing is answering");
    expect_failure(with_fault("silence", {"version", "--json"}), 1,
                   "version unknown: the answer is 0, so nothing is answering");
}

TEST_F(State, start_and_reset_may_be_stopped_before_they_are_confirmed)
{
    for (const std::string command : {"start", "reset"}) {
        expect_failure(in_shell({command}, "<<<s"), 3,
                       command + ": sent, but stopped before it was confirmed");
        EXPECT_EQ(transcript().size(), 2U) << "the link and the command";
    }
}

TEST_F(State, start_and_reset_are_confirmed_by_the_mode)
{
    EXPECT_EQ(says({"start"}), "boot loader (1)\n");
    EXPECT_EQ(says({"state"}), "boot loader (1)\n");
    EXPECT_EQ(says({"reset"}), "application (2)\n");
    EXPECT_EQ(says({"state"}), "application (2)\n");
}

TEST_F(State, a_default_value_is_not_an_answer)
{
    const std::string silent = " unknown: the answer is 0, so nothing is answering";
    expect_failure(stmctl({"state"}, {"--mode", "unknown"}), 1, "state" + silent);
    expect_failure(stmctl({"version"}, {"--version", "0"}), 1, "version" + silent);
    expect_failure(with_fault("silence", {"state"}), 1, "state" + silent);
    expect_failure(with_fault("silence", {"version"}), 1, "version" + silent);
}

TEST_F(State, an_undriven_line_is_no_answer)
{
    const std::string undriven = " unknown: the answer is 255, so nothing drives the line";
    expect_failure(with_fault("bus-inactive", {"state"}), 1, "state" + undriven);
    expect_failure(with_fault("bus-inactive", {"version"}), 1, "version" + undriven);
}

TEST_F(State, start_and_reset_fail_if_the_mode_stays_another)
{
    expect_failure(with_fault("silence", {"start"}), 1,
                   "start: sent, but the boot loader is not running: the mode is 0 (unknown)");
    EXPECT_EQ(transcript().size(), 1U + 1U + 10 * 2U) << "the mode is asked for ten times";
    expect_failure(with_fault("bus-inactive", {"reset"}), 1,
                   "reset: sent, but the application is not running: the mode is 255 (unknown)");
}

TEST_F(State, failed_exchanges_are_reported_for_every_step)
{
    const std::string sending = "sending the command failed: Input/output error";
    const std::string fetching = "fetching the answer failed: Input/output error";
    expect_failure(with_fault("exchange@1", {"state"}), 1,
                   "synchronising the link failed: Input/output error");
    expect_failure(with_fault("exchange@2", {"state"}), 1, "state: " + sending);
    expect_failure(with_fault("exchange@3", {"state"}), 1, "state: " + fetching);
    expect_failure(with_fault("exchange@2", {"version"}), 1, "version: " + sending);
    expect_failure(with_fault("exchange@3", {"version"}), 1, "version: " + fetching);
    expect_failure(with_fault("exchange@2", {"start"}), 1, "start: " + sending);
    expect_failure(with_fault("exchange@3", {"start"}), 1,
                   "start: sent, but not confirmed: " + sending);
    expect_failure(with_fault("exchange@4", {"reset"}), 1,
                   "reset: sent, but not confirmed: " + fetching);
}

TEST_F(State, a_refused_clock_is_a_warning)
{
    const Result result = with_fault("speed-refused", {"state"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.output, "application (2)\n");
    EXPECT_EQ(result.errors, "stmctl: the device refused a clock of 6 MHz: Invalid argument; "
                             "continuing with the device's own clock\n");
}

TEST_F(State, a_transcript_on_standard_error_is_passed_on_and_is_not_a_failure)
{
    const Result result = stmctl({"state"}, {"--transcript", "-"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.output, "application (2)\n");
    EXPECT_NE(result.errors.find("; mode asked for\n"), std::string::npos);
    EXPECT_NE(result.errors.find("; answer\n"), std::string::npos);
}

TEST_F(State, a_device_that_cannot_be_opened_is_reported_with_the_remedy)
{
    for (const char *command : {"state", "version", "start", "reset"}) {
        expect_failure(with_fault("no-device", {command}), 4,
                       "cannot open /dev/spidev1.0: No such file or directory; the system has no "
                       "such SPI device, see stmctl --help access");
        expect_failure(with_fault("no-device=EACCES", {command}), 4,
                       "cannot open /dev/spidev1.0: Permission denied; your user must be in the "
                       "group spi, see stmctl --help access");
        expect_failure(with_fault("no-device=EPERM", {command}), 4,
                       "cannot open /dev/spidev1.0: Operation not permitted; your user must be in "
                       "the group spi, see stmctl --help access");
        expect_failure(with_fault("no-device=ENXIO", {command}), 4,
                       "cannot open /dev/spidev1.0: No such device or address; the system has no "
                       "such SPI device, see stmctl --help access");
        expect_failure(with_fault("no-device=ENODEV", {command}), 4,
                       "cannot open /dev/spidev1.0: No such device; the system has no such SPI "
                       "device, see stmctl --help access");
        expect_failure(with_fault("no-device=EIO", {command}), 4,
                       "cannot open /dev/spidev1.0: Input/output error; see stmctl --help access");
    }
}

// The driver keeps the mode that a program has set; here the board's folder does so.
TEST_F(State, an_odd_spi_mode_is_reported_once_and_changes_nothing_else)
{
    says({"state"});
    const auto with_mode = [&](const std::string &mode) {
        write_file("board/spi-mode", Bytes(mode.begin(), mode.end()));
        return stmctl({"state"});
    };
    const std::string end = ", left by another program; the co-processor expects 0, see stmctl "
                            "--help access\n";
    const Result third = with_mode("3");
    EXPECT_EQ(third.status, 0);
    EXPECT_EQ(third.output, "application (2)\n");
    EXPECT_EQ(third.errors, "stmctl: the SPI mode is 3" + end);
    EXPECT_EQ(with_mode("9").errors, "stmctl: the SPI mode is 1 (lsb-first)" + end);
    EXPECT_EQ(with_mode("0x834").errors,
              "stmctl: the SPI mode is 0 (cs-high, 3wire, loopback, 0x800)" + std::string(end))
        << "flags without a name are shown as a number";
    EXPECT_EQ(with_mode("0").errors, "");
}

TEST_F(State, one_exchange_more_or_less_is_not_made_because_of_the_mode)
{
    says({"state"});
    EXPECT_EQ(transcript().size(), 3U);
}

} // namespace
