// Programs in front of a board to which something happens while they run.
#include "tests/tool/workbench.hpp"

#include <iterator>
#include <sstream>

namespace
{

Words split(const std::string &text)
{
    std::istringstream words(text);
    return {std::istream_iterator<std::string>(words), std::istream_iterator<std::string>()};
}

class TimedFault : public Workbench
{
  protected:
    // Runs the steps of the probe, in counted time, and returns what it prints.
    std::string steps(const Words &options, const std::string &steps)
    {
        Words command = {probe_program("timeline")};
        for (const std::string &word : split(steps)) {
            command.push_back(word);
        }
        const Result result = run(on_board(options, command));
        EXPECT_EQ(result.status, 0);
        EXPECT_EQ(result.errors, "");
        return result.output;
    }

    void expect_refused(const std::string &fault, const std::string &reason)
    {
        const Result result = run(virtual_board({"--fault", fault, "true"}));
        EXPECT_EQ(result.status, 125);
        EXPECT_EQ(result.errors, "virtual-board: " + reason + "\n");
    }
};

TEST_F(TimedFault, restart_leaves_the_board_in_its_mode_and_the_mode_in_its_file)
{
    EXPECT_EQ(
        steps({"--fault", "restart@t=2.5s=boot-loader"}, "open wait 2400 mode 0 wait 100 mode 0"),
        "open: done\nmode: 2\nmode: 1\n");
    EXPECT_EQ(read_text("board/mode"), "boot loader\n");
}

TEST_F(TimedFault, restart_between_two_opens_is_not_undone_by_the_second)
{
    EXPECT_EQ(steps({"--fault", "restart@t=1s=boot-loader"}, "open close 0 wait 1000 open mode 1"),
              "open: done\nclose: done\nopen: done\nmode: 1\n");
}

TEST_F(TimedFault, silence_lasts_from_one_time_to_the_other)
{
    EXPECT_EQ(steps({"--fault", "silence@t=2s..4s"},
                    "open ver 0 wait 2000 ver 0 wait 1999 ver 0 wait 1 ver 0"),
              "open: done\nver: 5\nver: 0\nver: 0\nver: 5\n");
}

TEST_F(TimedFault, device_that_was_gone_works_for_those_that_open_it_anew)
{
    EXPECT_EQ(steps({"--fault", "gone@t=2s..4s"},
                    "open open ver 0 ver 1 wait 2000 ver 0 ver 1 open wait 2000 ver 0 open ver 2 "
                    "ver 1 same 0 1 same 0 2"),
              joined({"open: done", "open: done", "ver: 5", "ver: 5", "ver: ESHUTDOWN",
                      "ver: ESHUTDOWN", "open: ENOENT", "ver: ESHUTDOWN", "open: done", "ver: 5",
                      "ver: ESHUTDOWN", "same: yes", "same: no"}));
}

TEST_F(TimedFault, device_comes_back_with_its_own_clock_whatever_becomes_of_old_descriptors)
{
    EXPECT_EQ(steps({"--fault", "gone@t=2s..4s"},
                    "open speed 0 speed 0 wait 4000 speed 0 open speed 1 close 0 speed 1 ver 1"),
              joined({"open: done", "speed: done 1000000", "speed: done 2000000",
                      "speed: ESHUTDOWN 0", "open: done", "speed: done 1000000", "close: done",
                      "speed: done 2000000", "ver: 5"}));
}

TEST_F(TimedFault, device_that_is_gone_has_no_file)
{
    EXPECT_EQ(
        steps({"--fault", "gone@t=2s..4s"}, "there open there wait 2000 there wait 2000 there"),
        joined({"there: device", "open: done", "there: device", "there: ENOENT", "there: device"}));
    EXPECT_EQ(steps({"--fault", "no-device"}, "there open openx openp"),
              joined({"there: ENOENT", "open: ENOENT", "openx: ENOENT", "openp: ENOENT"}));
    EXPECT_EQ(steps({}, "openx openp"), joined({"openx: EEXIST", "openp: done"}));
    EXPECT_EQ(steps({"--fault", "gone@t=2s..4s"}, "open read 0 wait 2000 read 0"),
              joined({"open: done", "read: done", "read: ESHUTDOWN"}));
    EXPECT_EQ(steps({"--fault", "no-device=EACCES"}, "there open"),
              joined({"there: device", "open: EACCES"}));
}

TEST_F(TimedFault, device_can_be_gone_twice_and_from_the_begin_on)
{
    EXPECT_EQ(steps({"--fault", "gone@t=0s..1s", "--fault", "gone@t=2s..3s"},
                    "open wait 1000 open ver 0 wait 1000 ver 0 open wait 1000 open ver 0 ver 1"),
              joined({"open: ENOENT", "open: done", "ver: 5", "ver: ESHUTDOWN", "open: ENOENT",
                      "open: done", "ver: ESHUTDOWN", "ver: 5"}));
}

TEST_F(TimedFault, exchanges_with_a_device_that_is_gone_are_in_the_transcript)
{
    steps({"--fault", "gone@t=1s..2s"}, "open wait 1000 ver 0");
    ASSERT_EQ(transcript().size(), 1U);
    EXPECT_EQ(transcript()[0].error, "ESHUTDOWN");
    EXPECT_EQ(transcript()[0].length, 1U);
}

TEST_F(TimedFault, intrusion_is_another_programs_transcript_played_between)
{
    update({"-start"});
    EXPECT_EQ(transcript().size(), 2U);
    std::filesystem::rename(path(".transcript"), path("start=1@2"));
    EXPECT_EQ(steps({"--mode", "application", "--fault", "intrusion@t=2s=start=1@2"},
                    "open wait 1900 mode 0 wait 200 mode 0 ver 0"),
              "open: done\nmode: 2\nmode: 1\nver: 5\n");
    for (const Line &line : transcript()) {
        EXPECT_LT(line.length, 4096U) << "only the program's own exchanges are written";
    }
    EXPECT_EQ(transcript().size(), 6U);
    EXPECT_EQ(read_text("board/mode"), "boot loader\n");
}

TEST_F(TimedFault, intrusion_loads_a_whole_image)
{
    write_file("image.bin", noise(5000, 9));
    update({"-firmware", "image.bin"});
    std::filesystem::rename(path(".transcript"), path("download"));
    std::filesystem::remove_all(path("board"));
    steps({"--fault", "intrusion@t=1s=download"}, "open wait 600000 ver 0");
    EXPECT_EQ(flash(16384, 5000), read_file("image.bin"));
}

TEST_F(TimedFault, intrusion_without_a_transcript_is_refused_before_the_command_begins)
{
    expect_refused("intrusion@t=1s=" + path("none"), path("none") + ": No such file or directory");
    write_file("bad", {'x', '\n'});
    expect_refused("intrusion@t=1s=" + path("bad"),
                   path("bad") + ": line 1 is not a line of a transcript");
    write_file("empty", {});
    expect_refused("intrusion@t=1s=" + path("empty"), path("empty") + ": it contains no exchange");
    expect_refused("intrusion@t=1s=a b", "fault 'intrusion@t=1s=" + path("a b") +
                                             "': it contains a blank, which cannot be passed on");
}

TEST_F(TimedFault, counts_of_the_board_are_in_its_folder_and_begin_anew_with_each_program)
{
    run(on_board({}, {probe_program("front_end"), "records", "200", "3"}));
    std::string counts = read_text("board/counts");
    EXPECT_TRUE(counts.starts_with("measured                   200\n"
                                   "delivered                  200\n"))
        << counts;
    EXPECT_TRUE(counts.ends_with("rel_t                      200\n")) << counts;
    steps({"--fault", "restart@t=1s=application"}, "open wait 1000 ver 0");
    counts = read_text("board/counts");
    EXPECT_TRUE(counts.starts_with("measured                     0\n")) << counts;
    EXPECT_NE(counts.find("restarts                     1\n"), std::string::npos) << counts;
    EXPECT_EQ(read_text("board/lives"),
              "life seconds measured delivered begun overrun discarded blocks\n"
              "1 1.000000 0 0 0 0 0 0\n");
}

TEST_F(TimedFault, counts_outlast_a_program_that_only_looks_at_the_device)
{
    run(on_board({}, {probe_program("front_end"), "records", "200", "3"}));
    const std::string counts = read_text("board/counts");
    EXPECT_EQ(steps({}, "there"), "there: device\n");
    EXPECT_EQ(read_text("board/counts"), counts);
    steps({}, "open");
    EXPECT_NE(read_text("board/counts"), counts);
}

TEST_F(TimedFault, counts_outlast_a_program_that_is_killed)
{
    const Result result =
        run(on_board({"--fault", "restart@t=1s=application"},
                     {probe_program("timeline"), "open", "wait", "1000", "ver", "0", "die", "9"}));
    EXPECT_NE(result.status, 0);
    EXPECT_NE(read_text("board/counts").find("restarts                     1\n"),
              std::string::npos);
}

TEST_F(TimedFault, buffer_of_the_driver_holds_what_it_is_told_to)
{
    EXPECT_EQ(steps({}, "open long 0"), "open: done\nlong: EMSGSIZE\n");
    EXPECT_EQ(steps({"--bufsiz", "8192"}, "open long 0"), "open: done\nlong: done\n");
    EXPECT_EQ(steps({"--bufsiz", "8191"}, "open long 0"), "open: done\nlong: EMSGSIZE\n");
}

} // namespace
