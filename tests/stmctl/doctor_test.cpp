// stmctl doctor: each line with what makes it good, bad or unknown, and the overall status.
#include "tests/stmctl/doctor_bench.hpp"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

namespace
{

constexpr char DEVICE_LINE[] = "device    good     /dev/spidev1.0, a character device (153, 0)\n";

TEST_F(Doctor, all_is_good_on_a_good_board)
{
    const Result result = doctor();
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.errors, "");
    const std::string rights = line(result, "rights");
    EXPECT_EQ(rights.find("rights    good     user "), 0U) << rights;
    EXPECT_NE(rights.find(" may read and write it: owner "), std::string::npos) << rights;
    const std::string gnuplot = line(result, "gnuplot");
    EXPECT_EQ(result.output,
              DEVICE_LINE + rights +
                  "users     good     no other process has it open\n"
                  "lock      good     free\n"
                  "bufsiz    good     the driver accepts 4096 bytes at once\n"
                  "SPI mode  good     0, 8-bit words\n"
                  "clock     good     6 MHz, previously 1 MHz\n"
                  "link      good     exchanges work\n"
                  "exchange  good     4096 bytes take 5.46 ms, the wire alone 5.46 ms\n"
                  "runs      good     the application\n"
                  "version   good     boot loader 1.5\n"
                  "query     good     sampletime is 0\n"
                  "ring      good     none; stmctl ring write creates one\n" +
                  gnuplot);
    EXPECT_EQ(gnuplot.find("gnuplot   good     "), 0U);
}

TEST_F(Doctor, a_real_exchange_takes_no_less_than_the_wire)
{
    const Result result = run(on_board_in_real_time({}, {program(), "doctor"}));
    double takes = 0;
    EXPECT_EQ(sscanf(line(result, "exchange").c_str(),
                     "exchange %*s 4096 bytes take %lf ms, the wire alone 5.46 ms", &takes),
              1)
        << result.output;
    EXPECT_GE(takes, 5.46);
}

TEST_F(Doctor, the_boot_loader_is_good_and_answers_no_queries)
{
    const Result result = doctor({"--mode", "boot loader", "--version", "7"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(line(result, "runs"),
              "runs      good     the boot loader; stmctl reset starts the application\n");
    EXPECT_EQ(line(result, "version"), "version   good     boot loader 1.7\n");
    EXPECT_EQ(line(result, "query"),
              "query     unknown  not asked: the application is not running\n");
    EXPECT_EQ(stmctl({"state"}).output, "boot loader (1)\n") << "the mode is never switched";
}

TEST_F(Doctor, a_line_without_an_answer_is_bad)
{
    const Result silent = doctor({"--fault", "silence"});
    expect_bad(silent, "1 of 14 checks failed: runs");
    EXPECT_EQ(line(silent, "runs"),
              "runs      bad      the answer is 0, so nothing is answering\n"
              "                   does it have power, or has it hung? switch it off and on\n");
    EXPECT_EQ(line(silent, "version"),
              "version   unknown  the answer is 0, so nothing is answering\n");
    const Result undriven = doctor({"--fault", "bus-inactive"});
    expect_bad(undriven, "1 of 14 checks failed: runs");
    EXPECT_NE(line(undriven, "runs").find("the answer is 255, so nothing drives the line\n"),
              std::string::npos);
}

TEST_F(Doctor, an_application_that_does_not_answer_is_bad)
{
    const Result result = doctor({"--fault", "late@0x03=3000"});
    expect_bad(result, "1 of 14 checks failed: query");
    EXPECT_EQ(line(result, "query"),
              "query     bad      sampletime: no answer in time\n"
              "                   it runs but does not answer; try stmctl start, stmctl reset\n");
}

TEST_F(Doctor, what_the_application_answers_is_shown)
{
    EXPECT_EQ(line(doctor({"--answer", "0x03=123"}), "query"),
              "query     good     sampletime is 123\n");
}

TEST_F(Doctor, failing_exchanges_are_bad_where_they_fail)
{
    const Result first = doctor({"--fault", "exchange@1"});
    expect_bad(first, "1 of 14 checks failed: link");
    EXPECT_EQ(line(first, "link"), "link      bad      an exchange failed: Input/output error\n"
                                   "                   see the lines above and dmesg\n");
    EXPECT_EQ(line(first, "runs"), "runs      unknown  not asked: the link fails\n");
    EXPECT_EQ(transcript().size(), 1U) << "no more is tried";
    const Result third = doctor({"--fault", "exchange@3"});
    expect_bad(third, "1 of 14 checks failed: runs");
    EXPECT_EQ(line(third, "runs"),
              "runs      bad      fetching the answer failed: Input/output error\n"
              "                   see dmesg\n");
    const Result fifth = doctor({"--fault", "exchange@5"});
    expect_bad(fifth, "1 of 14 checks failed: version");
}

// The five exchanges of which the quickest is shown come last.
TEST_F(Doctor, each_exchange_that_is_timed_may_fail)
{
    doctor();
    const size_t all = transcript().size();
    for (const size_t at : {all - 4, all}) {
        const Result result = doctor({"--fault", "exchange@" + std::to_string(at)});
        expect_bad(result, "1 of 14 checks failed: exchange");
        EXPECT_EQ(line(result, "exchange"),
                  "exchange  bad      synchronising the link failed: Input/output error\n"
                  "                   see dmesg\n");
        EXPECT_EQ(transcript().size(), at) << "no more is tried";
    }
    EXPECT_NE(transcript()[all - 6].length, 4096U);
}

TEST_F(Doctor, a_buffer_that_is_too_small_shows_in_the_longest_exchange)
{
    const Result result = doctor({"--bufsiz", "4095"});
    expect_bad(result, "2 of 14 checks failed: bufsiz, link");
    EXPECT_EQ(line(result, "bufsiz").find("bufsiz    bad      the driver refuses 4096 bytes"), 0U);
    EXPECT_NE(line(result, "bufsiz").find("set it where the driver is loaded, see stmctl --help"),
              std::string::npos);
    EXPECT_EQ(
        line(result, "link").find("link      bad      an exchange failed: Message too long\n"), 0U);
}

TEST_F(Doctor, a_refused_clock_is_bad)
{
    const Result result = doctor({"--fault", "speed-refused"});
    expect_bad(result, "1 of 14 checks failed: clock");
    EXPECT_EQ(line(result, "clock"),
              "clock     bad      1 MHz; 6 MHz was refused: Invalid argument\n"
              "                   spi-max-frequency in the device tree must "
              "allow it\n");
    EXPECT_EQ(line(result, "exchange"),
              "exchange  good     4096 bytes take 32.77 ms, the wire alone 32.77 ms\n");
}

TEST_F(Doctor, a_mode_that_another_program_left_is_bad_and_reported_once)
{
    doctor();
    write_file("board/spi-mode", {'3'});
    const Result result = doctor();
    expect_bad(result, "1 of 14 checks failed: SPI mode");
    EXPECT_EQ(line(result, "SPI mode"),
              "SPI mode  bad      3, left by another program; 0 is needed\n"
              "                   set it to 0 or restart the system, see stmctl --help "
              "access\n");
}

TEST_F(Doctor, a_device_that_cannot_be_opened_is_status_4)
{
    const Result missing = doctor({"--fault", "no-device"});
    expect_bad(missing, "1 of 14 checks failed: device", 4);
    EXPECT_EQ(line(missing, "device"),
              "device    bad      /dev/spidev1.0 cannot be opened: No such file or directory\n"
              "                   the system has no such SPI device, see stmctl --help access\n");
    EXPECT_EQ(line(missing, "rights"), "rights    unknown  there is no device to check\n");
    for (const char *name : {"users", "lock", "SPI mode", "clock"}) {
        EXPECT_NE(line(missing, name).find(" unknown  the device cannot be opened\n"),
                  std::string::npos)
            << name;
    }
    for (const char *name : {"exchange", "runs", "version", "query"}) {
        EXPECT_NE(line(missing, name).find(" unknown  not asked: the device cannot be opened\n"),
                  std::string::npos)
            << name;
    }
    const Result forbidden = doctor({"--fault", "no-device=EACCES"});
    expect_bad(forbidden, "1 of 14 checks failed: rights", 4);
    EXPECT_EQ(line(forbidden, "device"), DEVICE_LINE);
    EXPECT_NE(line(forbidden, "rights").find(" may not read and write it: owner "),
              std::string::npos);
}

TEST_F(Doctor, nothing_is_sent_while_another_program_has_the_device_open)
{
    const Result result = beside_another("", {"doctor"});
    EXPECT_EQ(result.status, 0) << "nothing is known to be bad";
    EXPECT_EQ(result.errors, "");
    EXPECT_EQ(line(result, "users").find("users     unknown  process "), 0U) << result.output;
    EXPECT_TRUE(line(result, "users")
                    .ends_with(") has it open; nothing was sent\n"
                               "                   once it has ended, the rest can be checked\n"))
        << result.output;
    for (const char *name : {"bufsiz", "clock", "link", "exchange", "runs", "version", "query"}) {
        const std::string said = line(result, name);
        EXPECT_NE(said.find(" unknown  "), std::string::npos) << said;
        EXPECT_NE(said.find(") has the device open\n"), std::string::npos) << said;
    }
    EXPECT_EQ(line(result, "SPI mode"), "SPI mode  good     0, 8-bit words\n");
    EXPECT_EQ(transcript().size(), 0U);
}

TEST_F(Doctor, several_programs_that_talk_at_once_are_bad)
{
    const Result result = beside_another(
        "exec 9<>/dev/spidev1.0; mkfifo never; cat <>never & cat=$!; trap 'kill $cat' EXIT; ",
        {"doctor"});
    expect_bad(result, "1 of 14 checks failed: users");
    EXPECT_NE(line(result, "users")
                  .find(" have it open\n                   end all but one: their dialogues mix\n"),
              std::string::npos)
        << result.output;
    const std::string runs = line(result, "runs");
    EXPECT_TRUE(runs.ends_with(") have the device open\n")) << runs;
    EXPECT_EQ(count(runs, "process "), 2U) << runs;
    EXPECT_EQ(count(runs, ") and process "), 1U) << runs;
}

TEST_F(Doctor, a_stmctl_at_work_is_named_as_the_holder_of_the_lock)
{
    const Result result = in_script(
        really({"--fault", "silence"}, {"get", "sampletime"}) +
        " 2>held.err </dev/null & held=$!\n" + "polls 3; " +
        quoted(on_board({"--transcript", "other"}, {program(), "doctor"})) +
        "; echo [$?]; kill $held; wait $held; ls other 2>/dev/null | wc -l; wc -l <other\n");
    EXPECT_NE(result.output.find("\nlock      good     process "), std::string::npos)
        << result.output;
    EXPECT_NE(result.output.find("stmctl get sampletime) holds it; --wait waits for it\n"),
              std::string::npos);
    EXPECT_NE(result.output.find("\nruns      unknown  not asked: process "), std::string::npos);
    EXPECT_NE(result.output.find("\n[0]\n"), std::string::npos);
    EXPECT_TRUE(result.output.ends_with("\n0\n")) << "nothing was sent";
}

// Its holder may be hidden from us, as here one that has the device open in order to wait.
TEST_F(Doctor, nothing_is_sent_while_another_one_holds_the_lock)
{
    doctor();
    const int lock = open(path("board/spidev1.0").c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    ASSERT_EQ(flock(lock, LOCK_EX), 0);
    const Result result = doctor();
    close(lock);
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(line(result, "users"), "users     good     no other process has it open\n");
    EXPECT_EQ(line(result, "lock").find("lock      good     process "), 0U) << result.output;
    EXPECT_NE(line(result, "runs").find(" holds the lock\n"), std::string::npos);
    EXPECT_EQ(transcript().size(), 0U);
}

// Another one may hold it: which is not known.
TEST_F(Doctor, nothing_is_sent_if_the_lock_cannot_be_tried)
{
    const std::string preload = "LD_PRELOAD=" + probe_program("libfailing_flock.so");
    const std::string admitted = std::string(ADMIT_INSTRUMENTED) + " " + preload + " ";
    const Result result =
        run({"bash", "-c", "exec env " + admitted + quoted(on_board_with({}, {"doctor"}))});
    expect_bad(result, "1 of 14 checks failed: lock");
    EXPECT_EQ(line(result, "lock"),
              "lock      bad      cannot lock /dev/spidev1.0: No locks available\n"
              "                   see dmesg\n");
    EXPECT_EQ(line(result, "runs"),
              "runs      unknown  not asked: cannot lock /dev/spidev1.0: No locks available\n");
    EXPECT_EQ(transcript().size(), 0U);
}

// The boot loader is asked nothing for which the module looks at its user's wishes.
TEST_F(Doctor, is_ended_by_its_user_whatever_it_asks)
{
    for (const std::string mode : {"application", "boot loader"}) {
        expect_failure(in_shell({"doctor"}, "<<<s", {"--mode", mode}), 3,
                       "doctor: stopped before it had finished");
    }
}

TEST_F(Doctor, shows_the_same_as_json)
{
    const Result result = stmctl({"doctor", "--json"}, {"--fault", "silence"});
    expect_bad(result, "1 of 14 checks failed: runs");
    EXPECT_EQ(result.output.find("{\"overall\":\"bad\",\"checks\":[{\"name\":\"device\",\"state\":"
                                 "\"good\",\"words\":\"/dev/spidev1.0, a character device "
                                 "(153, 0)\",\"remedy\":null},"),
              0U)
        << result.output;
    EXPECT_NE(result.output.find("{\"name\":\"runs\",\"state\":\"bad\",\"words\":\"the answer is "
                                 "0, so nothing is answering\",\"remedy\":\"does it have power, or "
                                 "has it hung? switch it off and on\"},"),
              std::string::npos);
    EXPECT_EQ(count(result.output, "\"name\":"), 14U);
    EXPECT_EQ(says({"doctor", "--json"}).find("{\"overall\":\"good\""), 0U);
    EXPECT_EQ(
        says({"doctor", "--json"}, {"--mode", "boot loader"}).find("{\"overall\":\"unknown\""), 0U);
    EXPECT_EQ(
        stmctl({"doctor", "--jsn"}).errors,
        "stmctl: unexpected argument: --jsn; did you mean --json? See stmctl doctor --help\n");
}

} // namespace
