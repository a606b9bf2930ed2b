// -q and -v: how much a command says besides its results and failures.
#include "tests/stmctl/ring_bench.hpp"

#include <regex>

namespace
{

class DetailOf : public RecordBench
{
  protected:
    // The numbers of seconds vary with the amount of output: they are left out.
    static std::string without_times(const std::string &errors)
    {
        return std::regex_replace(errors, std::regex("[0-9]+\\.[0-9]{3} s"), "T");
    }

    void expect_said(const Words &arguments, const std::string &errors, const Words &options = {},
                     int status = 0)
    {
        const Result result = stmctl(arguments, options);
        EXPECT_EQ(result.status, status) << arguments[0];
        EXPECT_EQ(without_times(result.errors), errors) << arguments[0];
    }
};

const std::string OPENED = "stmctl: /dev/spidev1.0: locked after T, opened and synchronised in T\n";
const Words SILENT = {"--fault", "silence@t=2s..4s"};

TEST_F(DetailOf, quiet_runs_have_no_summary)
{
    write_file("image.bin", noise(5000, 9));
    expect_said({"follow", "-n", "3", "-q"}, "");
    expect_said({"follow", "--duration", "1", "--quiet"}, "", {"--fault", "stuck@100"});
    expect_said({"records", "-n", "300", "-q"}, "", {"--fault", "stuck@100"});
    expect_said({"watch", "--duration", "1", "-q"}, "");
    expect_said({"adc", "--duration", "1", "-q", "--keep-going"}, "", {"--fault", "flip@3"});
    expect_said({"raw", "-n", "3", "-q", "--keep-going"}, "", {"--fault", "flip@2"});
    expect_said({"flash", "firmware", "image.bin", "-q"}, "");
}

TEST_F(DetailOf, quiet_runs_report_what_goes_wrong_and_why_they_fail)
{
    expect_said({"follow", "--duration", "6", "--keep-going", "-q"},
                "stmctl: follow: no data from the co-processor; asking again\n"
                "stmctl: follow: records are coming again after 2.1 s\n",
                SILENT);
    expect_said(
        {"follow", "--duration", "1", "--fail-on-loss", "-q"},
        "stmctl: follow: 999 records, 1 lost, 0 rejected, 0 overflowing, 1 step back in rel_t\n",
        {"--fault", "stuck@100"}, 1);
    expect_said({"records", "-n", "5", "-q"},
                "stmctl: records: 2 of 5 records, 0 lost, 1 rejected, 0 overflowing\n",
                {"--fault", "flip@3"}, 1);
    write_file("image.bin", noise(5000, 9));
    expect_said({"flash", "firmware", "image.bin", "-q", "--retries", "1"},
                "stmctl: attempt 1 of 2 failed at block 2, after 2048 of 5000 bytes: checksum "
                "error (the co-processor received other bytes than were sent); trying again\n"
                "stmctl: flash incomplete at block 2, after 2048 of 5000 bytes: checksum error "
                "(the co-processor received other bytes than were sent)\n",
                {"--fault", "checksum-error@2"}, 1);
}

TEST_F(DetailOf, quiet_watch_still_shows_its_lines)
{
    EXPECT_EQ(count(says({"watch", "--duration", "2.5", "-q"}), "\n"), 2U);
}

TEST_F(DetailOf, verbose_runs_report_the_opening_of_the_device)
{
    expect_said({"follow", "-n", "3", "-v"},
                OPENED + "stmctl: follow: 3 of 3 records, 0 lost, 0 rejected, 0 overflowing\n");
    for (const Words &command :
         {Words{"records", "-v"}, Words{"adc", "-v"}, Words{"raw", "--verbose"}}) {
        expect_said(command, OPENED);
    }
    expect_said({"watch", "--duration", "1", "-v"},
                OPENED + "stmctl: watch: 983 records, 0 lost, 0 rejected, 0 overflowing\n");
}

TEST_F(DetailOf, verbose_runs_report_each_time_out_and_each_request)
{
    expect_said({"follow", "--duration", "6", "--keep-going", "-v"},
                OPENED +
                    "stmctl: follow: time-out 1, nothing came for 0.0 s\n"
                    "stmctl: follow: time-out 2, nothing came for 0.5 s\n"
                    "stmctl: follow: no data from the co-processor; asking again\n"
                    "stmctl: follow: asking again, 1.1 s after the last data\n"
                    "stmctl: follow: time-out 3, nothing came for 1.1 s\n"
                    "stmctl: follow: time-out 4, nothing came for 1.6 s\n"
                    "stmctl: follow: records are coming again after 2.1 s\n"
                    "stmctl: follow: 4117 records, 1882 lost, 0 rejected, 64 overflowing, silent "
                    "for 2.1 s, 4 time-outs\n",
                SILENT);
}

TEST_F(DetailOf, verbose_runs_report_a_device_that_came_back)
{
    const Result result =
        stmctl({"follow", "--duration", "5", "--keep-going", "-v"}, {"--fault", "gone@t=2s..3s"});
    EXPECT_EQ(count(result.errors, "/dev/spidev1.0: locked after "), 2U) << result.errors;
}

TEST_F(DetailOf, verbose_runs_without_a_terminal_report_each_minute)
{
    const Result result =
        stmctl({"follow", "--duration", "2.5m", "-v", "-o", "a.txt"}, {"--rate", "10"});
    EXPECT_EQ(count(result.errors, "stmctl: follow: 1:00  "), 1U) << result.errors;
    EXPECT_EQ(count(result.errors, "stmctl: follow: 2:00  "), 1U);
    EXPECT_EQ(count(result.errors, "/s  lost 0  "), 2U);
}

TEST_F(DetailOf, verbose_flash_reports_each_step)
{
    write_file("image.bin", noise(1500, 9));
    expect_said({"flash", "firmware", "image.bin", "-v"},
                OPENED + "stmctl: flash: after T the boot loader accepted the command\n"
                         "stmctl: flash: after T block 0 sent, all before it acknowledged\n"
                         "stmctl: flash: after T block 1 sent, all before it acknowledged\n"
                         " 60 %  1024 of 1500 bytes\n"
                         "stmctl: flash: after T all 1500 bytes acknowledged\n"
                         "100 %  1500 of 1500 bytes\n");
}

TEST_F(DetailOf, both_are_refused)
{
    write_file("image.bin", noise(5000, 9));
    for (const Words &command :
         {Words{"follow"}, Words{"records"}, Words{"watch"}, Words{"adc"}, Words{"raw"},
          Words{"ring", "write"}, Words{"ring", "read"}, Words{"flash", "firmware", "image.bin"}}) {
        for (const Words &both : {Words{"-q", "-v"}, Words{"--verbose", "--quiet"}, Words{"-qv"}}) {
            Words words = command;
            words.insert(words.end(), both.begin(), both.end());
            expect_failure(stmctl(words), 2, "--quiet and --verbose cannot be combined");
            EXPECT_TRUE(transcript().empty());
        }
    }
}

class DetailOfRing : public RingBench
{
};

TEST_F(DetailOfRing, quiet_writer_and_reader_report_nothing_about_a_good_run)
{
    const Result result = script("$BOARD --count-time $STMCTL ring write --duration 0.1 -q\n"
                                 "$STMCTL ring read --from-oldest -n 5 -q -o a.txt");
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.errors, "");
}

TEST_F(DetailOfRing, quiet_reader_reports_why_it_fails)
{
    const Result result = script("fill 0.1; $BOARD --count-time $STMCTL ring read --duration 1 -q");
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.errors, "stmctl: ring read: 0 records, 0 lost, 0 rejected, 0 overflowing, 0 "
                             "overruns, 0 restarts of the writer; its writer has ended\n");
}

TEST_F(DetailOfRing, verbose_writer_and_reader_report_more)
{
    const Result written = script("$BOARD --count-time $STMCTL ring write --duration 0.1 -v");
    EXPECT_EQ(count(written.errors, "stmctl: /dev/spidev1.0: locked after "), 1U);
    const Result read =
        script("$BOARD --count-time $STMCTL ring read --duration 2m --from-oldest -v -o a.txt");
    EXPECT_EQ(count(read.errors, "stmctl: ring read: 1:00  "), 1U) << read.errors;
}

} // namespace
