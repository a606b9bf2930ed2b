// stmctl flash: its status is 0 if and only if the image is in the flash; otherwise one sentence
// says why.
#include "tests/stmctl/stmctl_bench.hpp"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <sstream>

namespace
{

constexpr size_t FIRMWARE_OFFSET = 16384;

class Flash : public StmctlBench
{
  protected:
    void SetUp() override { write_file("image.bin", noise(5000, 9)); }

    static std::string tenths_of_image()
    {
        return " 20 %  1024 of 5000 bytes\n"
               " 40 %  2048 of 5000 bytes\n"
               " 60 %  3072 of 5000 bytes\n"
               " 80 %  4096 of 5000 bytes\n"
               "100 %  5000 of 5000 bytes\n";
    }

    // Standard error without the progress.
    static std::string without_tenths(const std::string &errors)
    {
        std::string rest;
        std::istringstream lines(errors);
        for (std::string line; std::getline(lines, line);) {
            rest += line.find(" %  ") == 3 ? "" : line + "\n";
        }
        return rest;
    }

    Result flash_with(const std::string &fault, const Words &more = {})
    {
        Words words = {"flash", "firmware", "image.bin"};
        words.insert(words.end(), more.begin(), more.end());
        return with_fault(fault, words);
    }

    // With this fault, it reports why and ends with status 1.
    void expect_incomplete(const std::string &fault, const std::string &why)
    {
        const Result result = flash_with(fault);
        EXPECT_EQ(result.status, 1) << fault;
        EXPECT_EQ(without_tenths(result.errors), "stmctl: flash incomplete " + why + "\n") << fault;
        EXPECT_EQ(result.output.find("written"), std::string::npos) << fault;
    }

    void expect_flashed(const std::string &fault)
    {
        const Result result = flash_with(fault);
        EXPECT_EQ(result.status, 0) << fault;
        EXPECT_EQ(result.errors, tenths_of_image()) << fault;
        EXPECT_TRUE(flash(FIRMWARE_OFFSET, 5000) == read_file("image.bin")) << fault;
    }

    void expect_refused(const Words &words, int status, const std::string &sentence)
    {
        expect_failure(stmctl(words), status, sentence);
        EXPECT_TRUE(transcript().empty()) << "the device is not touched";
    }
};

TEST_F(Flash, shows_tenths_and_then_what_was_written_and_how_fast)
{
    const Result result = stmctl({"flash", "firmware", "image.bin"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.errors, tenths_of_image());
    EXPECT_EQ(result.output,
              "5000 bytes of firmware written to 0x08004000 in 0.09 s, 57.3 KiB/s; stmctl reset "
              "starts it\n");
    EXPECT_TRUE(flash(FIRMWARE_OFFSET, 5000) == read_file("image.bin"));
}

TEST_F(Flash, one_byte_is_counted_in_the_singular)
{
    write_file("one.bin", {1});
    const Result result = stmctl({"flash", "firmware", "one.bin"});
    EXPECT_EQ(result.errors, "100 %  1 of 1 byte\n");
    EXPECT_EQ(result.output.find("1 byte of firmware written to "), 0U) << result.output;
    const Result late = stmctl({"flash", "firmware", "one.bin"}, {"--fault", "exchange@6"});
    EXPECT_NE(late.errors.find("after 0 of 1 byte"), std::string::npos) << late.errors;
}

TEST_F(Flash, shows_no_tenth_twice)
{
    write_file("image.bin", noise(30000, 4));
    const std::string errors = stmctl({"flash", "firmware", "image.bin"}).errors;
    EXPECT_EQ(std::count(errors.begin(), errors.end(), '\n'), 10);
}

class SizeOf : public Flash, public testing::WithParamInterface<size_t>
{
};

TEST_P(SizeOf, firmware_arrives_whole)
{
    write_file("image.bin", noise(GetParam(), 3));
    EXPECT_EQ(stmctl({"flash", "firmware", "image.bin"}).status, 0);
    EXPECT_TRUE(flash(FIRMWARE_OFFSET, GetParam()) == read_file("image.bin"));
}

INSTANTIATE_TEST_SUITE_P(Firmware, SizeOf, testing::Values(1, 1023, 1024, 1025, 507904));

TEST_F(Flash, boot_loader_goes_to_the_start_of_the_flash)
{
    write_file("image.bin", noise(16384, 5));
    const Result result = stmctl({"flash", "booter", "image.bin", "--yes"});
    EXPECT_EQ(result.status, 0);
    EXPECT_NE(result.output.find("16384 bytes of boot loader written to 0x08000000"),
              std::string::npos);
    EXPECT_TRUE(flash(0, 16384) == read_file("image.bin"));
    EXPECT_EQ(flash(FIRMWARE_OFFSET, 1024), Bytes(1024, 0xFF));
}

TEST_F(Flash, boot_loader_is_not_written_without_a_confirmation)
{
    const Result result = in_shell({"flash", "booter", "image.bin"}, "</dev/null");
    expect_failure(
        result, 2,
        "flash booter: cannot ask for confirmation without a terminal; use --yes to continue");
    EXPECT_TRUE(transcript().empty());
}

TEST_F(Flash, file_is_checked_before_the_device)
{
    write_file("empty.bin", {});
    write_file("large.bin", noise(507905, 1));
    write_file("large-booter.bin", noise(16385, 1));
    expect_refused({"flash", "firmware", "no.bin"}, 1, "no.bin: No such file or directory");
    expect_refused({"flash", "firmware", "empty.bin"}, 1, "empty.bin: the file is empty");
    expect_refused({"flash", "firmware", "."}, 1, ".: not a regular file");
    expect_refused({"flash", "firmware", "large.bin"}, 1,
                   "large.bin: 507905 bytes, but at most 507904 fit");
    expect_refused({"flash", "booter", "large-booter.bin", "--yes"}, 1,
                   "large-booter.bin: 16385 bytes, but at most 16384 fit");
}

TEST_F(Flash, limit_replaces_that_of_the_region)
{
    expect_refused({"flash", "firmware", "image.bin", "--limit", "4999"}, 1,
                   "image.bin: 5000 bytes, but at most 4999 fit");
    EXPECT_EQ(stmctl({"flash", "firmware", "image.bin", "--limit", "0x1388"}).status, 0);
    EXPECT_EQ(stmctl({"flash", "firmware", "image.bin", "--limit", "4294967295"}).status, 0);
    write_file("image.bin", noise(16385, 1));
    const Result result = stmctl({"flash", "booter", "image.bin", "--yes", "--limit", "99999"});
    EXPECT_EQ(result.status, 1) << "the co-processor has the last word";
    EXPECT_EQ(without_tenths(result.errors),
              "stmctl: flash incomplete at the header: address error (the co-processor does not "
              "accept this address or size)\n");
}

// A rate is only shown where it is meaningful.
TEST_F(Flash, tiny_image_has_a_rate_in_bytes)
{
    write_file("image.bin", {1});
    const Result tiny = stmctl({"flash", "firmware", "image.bin"});
    EXPECT_EQ(tiny.errors, "100 %  1 of 1 byte\n");
    EXPECT_EQ(tiny.output,
              "1 byte of firmware written to 0x08004000 in 0.04 s, 28 B/s; stmctl reset starts "
              "it\n");
    const Result slow = with_fault("late@0=1400", {"flash", "firmware", "image.bin"});
    EXPECT_NE(slow.output.find("written to 0x08004000 in 15.44 s; stmctl reset"), std::string::npos)
        << slow.output;
}

TEST_F(Flash, start_runs_the_firmware_and_says_so)
{
    EXPECT_EQ(says({"flash", "firmware", "image.bin", "--start", "-q"}),
              "5000 bytes of firmware written to 0x08004000 in 0.09 s, 57.3 KiB/s; starting it\n"
              "application (2)\n");
    EXPECT_EQ(says({"state"}), "application (2)\n");
}

TEST_F(Flash, a_failed_start_differs_from_a_failed_download)
{
    says({"flash", "firmware", "image.bin", "-q"});
    const auto exchanges = transcript().size();
    const Result result = flash_with("exchange@" + std::to_string(exchanges + 1), {"--start"});
    EXPECT_EQ(result.status, 1);
    EXPECT_NE(result.output.find("; starting it\n"), std::string::npos);
    EXPECT_EQ(without_tenths(result.errors),
              "stmctl: flash --start: sending the command failed: Input/output error\n");
    const Result failed = flash_with("checksum-error@3", {"--start"});
    EXPECT_EQ(failed.status, 1);
    EXPECT_EQ(failed.output.find("starting"), std::string::npos);
    EXPECT_EQ(says({"state"}), "boot loader (1)\n");
}

TEST_F(Flash, image_comes_from_standard_input_or_a_pipe)
{
    const Result piped = in_shell({"flash", "firmware", "-", "-q"}, "<image.bin");
    EXPECT_EQ(piped.status, 0);
    EXPECT_EQ(piped.errors, "");
    EXPECT_TRUE(flash(FIRMWARE_OFFSET, 5000) == read_file("image.bin"));
    write_file("image.bin", noise(507904, 2));
    mkfifo(path("pipe").c_str(), 0600);
    const Result named = in_script("cat image.bin >pipe & " +
                                   quoted(on_board_with({}, {"flash", "firmware", "pipe", "-q"})));
    EXPECT_EQ(named.status, 0);
    EXPECT_EQ(named.errors, "");
    EXPECT_TRUE(flash(FIRMWARE_OFFSET, 507904) == read_file("image.bin"));
    const Result booter =
        in_shell({"flash", "booter", "-", "--yes"}, "< <(head -c 16384 image.bin)");
    EXPECT_EQ(booter.status, 0);
    Bytes expected = read_file("image.bin");
    expected.resize(16384);
    EXPECT_TRUE(flash(0, 16384) == expected);
}

TEST_F(Flash, pipe_is_read_before_the_device_is_touched)
{
    const auto refused = [this](const Words &words, const std::string &input, int status,
                                const std::string &sentence) {
        expect_failure(in_shell(words, input), status, sentence);
        EXPECT_TRUE(transcript().empty()) << sentence;
    };
    refused({"flash", "firmware", "-"}, "</dev/null", 1, "standard input: no data came");
    refused({"flash", "firmware", "-"}, "< <(head -c 507905 /dev/zero)", 1,
            "standard input: more data than the 507904 bytes that fit");
    refused({"flash", "firmware", "-"}, "</dev/zero", 1,
            "standard input: more data than the 507904 bytes that fit");
    refused({"flash", "firmware", "-"}, "<.", 1, "standard input: Is a directory");
    refused({"flash", "booter", "-"}, "<image.bin", 2,
            "flash booter: cannot ask for confirmation while the image comes from standard input; "
            "use --yes to continue");
}

TEST_F(Flash, pipe_is_waited_for_until_an_interrupt)
{
    mkfifo(path("pipe").c_str(), 0600);
    const pid_t pid = start(on_board_with({}, {"flash", "firmware", "pipe", "-q"}));
    const int pipe = open(path("pipe").c_str(), O_WRONLY | O_CLOEXEC); // once it is read
    EXPECT_EQ(write(pipe, "half", 4), 4);
    kill(pid, SIGINT);
    expect_failure(finish(pid), 3, "pipe: stopped while it was being read");
    EXPECT_TRUE(transcript().empty());
    close(pipe);
}

TEST_F(Flash, contradictory_options_are_refused)
{
    expect_refused({"flash", "firmware", "image.bin", "--limit", "0"}, 2,
                   "--limit must be a number from 1 to 4294967295, not '0'");
    expect_refused({"flash", "firmware", "image.bin", "--retries", "x"}, 2,
                   "--retries must be a number from 0 to 1000, not 'x'");
    expect_refused({"flash", "nonsense", "image.bin"}, 2,
                   "REGION: 'nonsense' is not one of firmware, booter; see stmctl flash --help");
    expect_refused({"flash", "booter", "image.bin", "--yes", "--start"}, 2,
                   "flash booter: --start is for flash firmware only");
    expect_refused({"flash", "firmware"}, 2, "FILE is required; see stmctl flash --help");
}

constexpr char AT_MODE[] = "at the mode command: ";
constexpr char AT_HEADER[] = "at the header: ";
constexpr char AT_BLOCK_3[] = "at block 3, after 3072 of 5000 bytes: ";

class WithoutAcknowledge : public Flash,
                           public testing::WithParamInterface<std::pair<const char *, const char *>>
{
};

TEST_P(WithoutAcknowledge, reports_why_at_every_step)
{
    const auto &[fault, why] = GetParam();
    const std::string name = fault;
    expect_incomplete(name + "@mode", std::string(AT_MODE) + why);
    expect_incomplete(name + "@header", std::string(AT_HEADER) + why);
    expect_incomplete(name + "@3", std::string(AT_BLOCK_3) + why);
}

INSTANTIATE_TEST_SUITE_P(
    Faults, WithoutAcknowledge,
    testing::Values(
        std::pair("bus-inactive", "the bus is inactive (no co-processor drives it)"),
        std::pair("silence", "time-out (no acknowledgement within 16.5 seconds); nothing is "
                             "answering: does the co-processor have power, or has it hung?"),
        std::pair("checksum-error",
                  "checksum error (the co-processor received other bytes than were sent)"),
        std::pair("address-error",
                  "address error (the co-processor does not accept this address or size)")));

TEST_F(Flash, dead_board_is_reported_at_the_mode_command)
{
    expect_incomplete("bus-inactive",
                      "at the mode command: the bus is inactive (no co-processor drives it)");
    expect_incomplete("silence",
                      "at the mode command: time-out (no acknowledgement within 16.5 seconds); "
                      "nothing is answering: does the co-processor have power, or has it hung?");
}

TEST_F(Flash, failing_exchange_is_reported_for_every_step)
{
    const std::string error = " failed: Input/output error";
    const std::string acknowledge = "asking for the acknowledgement" + error;
    expect_incomplete("exchange@2", AT_MODE + ("sending the command" + error));
    expect_incomplete("exchange@3", AT_MODE + acknowledge);
    expect_incomplete("exchange@4", AT_HEADER + ("sending the header" + error));
    expect_incomplete("exchange@5", AT_HEADER + acknowledge);
    expect_incomplete("exchange@6", "at block 0, after 0 of 5000 bytes: sending the data" + error);
    expect_incomplete("exchange@7=ESHUTDOWN",
                      "at block 0, after 0 of 5000 bytes: asking for the acknowledgement failed: "
                      "Cannot send after transport endpoint shutdown; the device is gone, see "
                      "stmctl --help access");
    expect_incomplete("exchange@14",
                      "at block 4, after 4096 of 5000 bytes: sending the data" + error);
    expect_incomplete("exchange@15", "at block 4, after 4096 of 5000 bytes: " + acknowledge);
}

TEST_F(Flash, link_that_cannot_be_synchronised_ends_it_before_it_begins)
{
    expect_failure(flash_with("exchange@1"), 1,
                   "synchronising the link failed: Input/output error");
    EXPECT_EQ(transcript().size(), 1U);
}

TEST_F(Flash, odd_status_is_either_an_acknowledgement_or_none)
{
    expect_flashed("status@mode=0xF2");
    expect_flashed("status@2=0xFE");
    expect_incomplete("status@3=0xEF", std::string(AT_BLOCK_3) +
                                           "time-out (no acknowledgement within 16.5 seconds)");
}

TEST_F(Flash, late_but_in_time_is_good)
{
    expect_flashed("late=20");
    expect_flashed("late@header=1499");
    expect_incomplete("late@header=1500",
                      std::string(AT_HEADER) + "time-out (no acknowledgement within 16.5 seconds)");
}

TEST_F(Flash, refused_clock_is_a_warning)
{
    const Result result = flash_with("speed-refused");
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(without_tenths(result.errors), "stmctl: the device refused a clock of 6 MHz: Invalid "
                                             "argument; continuing with the device's own clock\n");
    EXPECT_TRUE(flash(FIRMWARE_OFFSET, 5000) == read_file("image.bin"));
}

TEST_F(Flash, retries_begin_again_from_the_start)
{
    const Result result = flash_with("exchange@9", {"--retries", "1"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(without_tenths(result.errors),
              "stmctl: attempt 1 of 2 failed at block 1, after 1024 of 5000 bytes: asking for the "
              "acknowledgement failed: Input/output error; trying again\n");
    EXPECT_TRUE(flash(FIRMWARE_OFFSET, 5000) == read_file("image.bin"));
    EXPECT_EQ(transcript().at(9).note, "synchronised");
    EXPECT_GE(transcript().at(9).microseconds - transcript().at(8).microseconds, 1'000'000);
}

TEST_F(Flash, link_that_cannot_be_synchronised_before_another_attempt_is_reported)
{
    const Result result = stmctl({"flash", "firmware", "image.bin", "--retries", "1"},
                                 {"--fault", "exchange@9", "--fault", "exchange@10"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(without_tenths(result.errors),
              "stmctl: attempt 1 of 2 failed at block 1, after 1024 of 5000 bytes: asking for the "
              "acknowledgement failed: Input/output error; trying again\n"
              "stmctl: synchronising the link failed: Input/output error\n");
}

TEST_F(Flash, retries_are_not_endless)
{
    const Result result = flash_with("checksum-error@0", {"--retries", "2"});
    const std::string why = " at block 0, after 0 of 5000 bytes: checksum error (the co-processor "
                            "received other bytes than were sent)";
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(without_tenths(result.errors),
              "stmctl: attempt 1 of 3 failed" + why + "; trying again\n" +
                  "stmctl: attempt 2 of 3 failed" + why + "; trying again\n" +
                  "stmctl: flash incomplete" + why + "\n");
}

TEST_F(Flash, reader_that_goes_away_does_not_end_it)
{
    const Result result =
        in_shell({"flash", "firmware", "image.bin"}, "| true; exit ${PIPESTATUS[0]}");
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.errors, tenths_of_image());
    EXPECT_TRUE(flash(FIRMWARE_OFFSET, 5000) == read_file("image.bin"));
}

TEST_F(Flash, progress_is_visible_during_the_download)
{
    const pid_t pid = start(on_board_in_real_time({"--fault", "silence@2"},
                                                  {program(), "flash", "firmware", "image.bin"}));
    wait_for_lines(10);
    EXPECT_EQ(read_text(".errors"), " 20 %  1024 of 5000 bytes\n 40 %  2048 of 5000 bytes\n");
    kill(pid, SIGKILL);
    finish(pid);
}

TEST_F(Flash, full_disk_does_not_end_it_but_is_reported)
{
    const Result result = in_shell({"flash", "firmware", "image.bin"}, ">/dev/full");
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(without_tenths(result.errors),
              "stmctl: flash: all bytes have been written\n"
              "stmctl: cannot write the output: No space left on device\n");
    EXPECT_TRUE(flash(FIRMWARE_OFFSET, 5000) == read_file("image.bin"));
}

TEST_F(Flash, missing_device_is_reported_with_the_remedy)
{
    expect_failure(flash_with("no-device"), 4,
                   "cannot open /dev/spidev1.0: No such file or directory; the system has no such "
                   "SPI device, see stmctl --help access");
}

} // namespace
