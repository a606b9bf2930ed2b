// Boards that are told what happens to them while programs use them.
#include "tests/tool/workbench.hpp"

#include <csignal>
#include <iterator>
#include <sstream>

namespace
{

class Telling : public Workbench
{
  protected:
    // Runs the steps of the probe, in counted time. An order is a step, too: "tell gone".
    std::string steps(const Words &options, const std::string &steps)
    {
        std::istringstream words(steps);
        Words command = {probe_program("timeline")};
        for (std::string word; words >> word;) {
            command.push_back(word);
            if (word == "tell") {
                command.insert(command.end(), {TOOL_VIRTUAL_BOARD, path("board")});
            }
        }
        const Result result = run(on_board(options, command));
        EXPECT_EQ(result.status, 0);
        EXPECT_EQ(result.errors, "");
        return result.output;
    }

    void expect_refused(const Words &words, const std::string &reason)
    {
        Words command = {TOOL_VIRTUAL_BOARD, "tell"};
        command.insert(command.end(), words.begin(), words.end());
        const Result result = run(command);
        EXPECT_EQ(result.status, 125);
        EXPECT_EQ(result.output, "");
        EXPECT_EQ(result.errors, "virtual-board: " + reason + "\n");
    }
};

TEST_F(Telling, restarts_the_co_processor_in_its_application_or_its_boot_loader)
{
    EXPECT_EQ(
        steps({}, "open mode 0 tell restart=boot-loader mode 0 tell restart mode 0 mode 0"),
        joined({"open: done", "mode: 2", "tell: 0", "mode: 1", "tell: 0", "mode: 2", "mode: 2"}));
    EXPECT_NE(read_text("board/counts").find("restarts                     2\n"),
              std::string::npos);
    EXPECT_EQ(read_text("board/mode"), "application\n");
}

TEST_F(Telling, to_restart_takes_none_of_the_restarts_that_come_by_themselves)
{
    EXPECT_EQ(steps({"--fault", "restart@t=2s=boot-loader"},
                    "open wait 1000 tell restart mode 0 wait 1000 mode 0"),
              joined({"open: done", "tell: 0", "mode: 2", "mode: 1"}));
    EXPECT_EQ(read_text("board/lives"),
              "life seconds measured delivered begun overrun discarded blocks\n"
              "1 1.000000 0 0 0 0 0 0\n"
              "2 2.000000 0 0 0 0 0 0\n");
}

TEST_F(Telling, silences_the_co_processor_until_it_is_back)
{
    EXPECT_EQ(steps({}, "open ver 0 tell silence ver 0 wait 9000 ver 0 tell back ver 0"),
              joined({"open: done", "ver: 5", "tell: 0", "ver: 0", "ver: 0", "tell: 0", "ver: 5"}));
}

TEST_F(Telling, takes_the_device_away_for_those_that_have_it_and_for_all_until_it_is_back)
{
    EXPECT_EQ(
        steps({}, "open ver 0 speed 0 tell gone ver 0 open tell back ver 0 open ver 1 speed 1"),
        joined({"open: done", "ver: 5", "speed: done 1000000", "tell: 0", "ver: ESHUTDOWN",
                "open: ENOENT", "tell: 0", "ver: ESHUTDOWN", "open: done", "ver: 5",
                "speed: done 1000000"}));
}

TEST_F(Telling, of_an_absence_that_nobody_saw_is_noticed_nevertheless)
{
    EXPECT_EQ(steps({}, "open tell gone tell gone tell back ver 0 open ver 1 same 0 1"),
              joined({"open: done", "tell: 0", "tell: 0", "tell: 0", "ver: ESHUTDOWN", "open: done",
                      "ver: 5", "same: no"}));
}

TEST_F(Telling, of_an_absence_adds_to_those_that_come_by_themselves)
{
    EXPECT_EQ(steps({"--fault", "gone@t=2s..4s"},
                    "open tell gone wait 3000 tell back open wait 1000 open ver 0 ver 1"),
              joined({"open: done", "tell: 0", "tell: 0", "open: ENOENT", "open: done",
                      "ver: ESHUTDOWN", "ver: 5"}));
}

TEST_F(Telling, is_over_with_the_power)
{
    EXPECT_EQ(steps({}, "open tell gone tell silence"),
              joined({"open: done", "tell: 0", "tell: 0"}));
    EXPECT_EQ(steps({}, "open ver 0"), joined({"open: done", "ver: 5"}));
}

TEST_F(Telling, reaches_programs_that_run_in_real_time)
{
    const pid_t program =
        start(on_board_in_real_time({}, {probe_program("sharer"), "1", "1000000000"}));
    wait_for_lines(1);
    EXPECT_EQ(run({TOOL_VIRTUAL_BOARD, "tell", path("board"), "gone"}).status, 0);
    const Result result = finish(program);
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.errors, "ioctl: Cannot send after transport endpoint shutdown\n");
}

TEST_F(Telling, is_refused_where_nobody_uses_a_board)
{
    run(on_board({}, {probe_program("sharer"), "1", "1"}));
    expect_refused({path("board"), "gone"}, path("board") + ": no program uses this board");
    expect_refused({path("none"), "gone"}, path("none") + ": no program uses this board");
    EXPECT_FALSE(std::filesystem::exists(path("none")));
    EXPECT_EQ(steps({}, "open ver 0"), joined({"open: done", "ver: 5"}));
}

TEST_F(Telling, needs_a_folder_and_an_order_that_exists)
{
    const std::string all = "restart, restart=boot-loader, silence, gone, back";
    for (const Words &words : {Words{}, Words{"board"}, Words{"board", "gone", "back"}}) {
        expect_refused(words, "tell needs a board's folder and one of these: " + all);
    }
    expect_refused({"board", "restart=nothing"},
                   "a board cannot be told 'restart=nothing', only one of these: " + all);
}

} // namespace
