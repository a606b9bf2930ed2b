// stmctl get --all, save and restore: a board gets the settings of another one, and a wrong file
// changes neither board nor file.
#include "tests/stmctl/stmctl_bench.hpp"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <regex>

namespace
{

class Settings : public StmctlBench
{
  protected:
    void write_text(const std::string &name, const std::string &text) const
    {
        write_file(name, {text.begin(), text.end()});
    }

    // On a second board, without a transcript.
    Result on_other_board(const std::string &words)
    {
        Words words_of_board = virtual_board({"--board", "other", "--count-time"});
        words_of_board.push_back(program());
        return run({"bash", "-c", quoted(words_of_board) + " " + words});
    }

    void expect_untouched(const Words &words, int status, const std::string &sentences)
    {
        const Result result = stmctl(words);
        EXPECT_EQ(result.status, status);
        EXPECT_EQ(result.output, "");
        EXPECT_EQ(result.errors, sentences);
        EXPECT_TRUE(transcript().empty()) << "the device is not touched";
    }

    // The lines of a text that contain the words.
    static std::string lines_with(const std::string &text, const std::string &words)
    {
        std::istringstream lines(text);
        std::string found;
        for (std::string line; std::getline(lines, line);) {
            found += line.find(words) != std::string::npos ? line + '\n' : "";
        }
        return found;
    }

    // Numbers with the highest bit of their kind, and others.
    void set_some()
    {
        write_text("board/settings", "0x51 = 32000\n0x52 = 200\n0x53 = 3\n0x54/7 = 40000\n"
                                     "0x56/1 = 40000\n0x5B/0 = 65535\n0x98/1 = 32768\n"
                                     "0x9B/3 = 4294967295\n0x9C/1 = 2147483648\n");
    }
};

constexpr char ALL_SET[] = "sampletime = 32000\n"
                           "sampleskip = 200\n"
                           "interpolation = 3\n";

TEST_F(Settings, get_all_sends_every_query_for_every_channel)
{
    stmctl({"state"}); // makes the board
    set_some();
    const std::string all = says({"get", "--all"});
    EXPECT_EQ(all.substr(0, sizeof(ALL_SET) - 1), ALL_SET);
    EXPECT_EQ(std::count(all.begin(), all.end(), '\n'), 3 + 16 + 12 + 4 + 16 + 5);
    EXPECT_NE(all.find("\nadc-word-54 6 = 0\nadc-word-54 7 = 40000\nadc-word-55 0 = 0\n"),
              std::string::npos);
    EXPECT_NE(all.find("\nchannel-word-56 1 = -25536\n"), std::string::npos);
    EXPECT_NE(all.find("\nbe-long 1 = -2147483648\n"), std::string::npos);
    EXPECT_NE(all.find("\nbe-long 7 = 0\ntext-21 = virtual co-processor\ntext-22 = firmware 1.0\n"
                       "byte-73 = 1\nbyte-c7 = 3\nlong-a0 = 123456\n"),
              std::string::npos);
}

TEST_F(Settings, saved_from_one_board_and_restored_to_another_are_the_same_on_both)
{
    stmctl({"state"});
    set_some();
    const std::string all = says({"get", "--all"});
    says({"save", "settings.txt"});
    const Result restored = on_other_board("restore settings.txt");
    EXPECT_EQ(restored.status, 0);
    EXPECT_EQ(restored.errors, "stmctl: restore: 45 of 45 settings sent, 45 read back the same\n");
    EXPECT_EQ(lines_with(restored.output, "channel-word-56"),
              "channel-word-56 0 = 0 (answer 1)\nchannel-word-56 1 = 40000 (answer 1)\n");
    EXPECT_EQ(on_other_board("get --all").output, all);
}

// get --all shows the answers with their signs.
TEST_F(Settings, of_get_all_are_restored_as_far_as_they_can_be_set)
{
    stmctl({"state"});
    set_some();
    const std::string all = says({"get", "--all"});
    write_text("all.txt", all);
    const Result restored = on_other_board("restore - <all.txt");
    EXPECT_EQ(restored.status, 0);
    EXPECT_EQ(restored.errors,
              "stmctl: restore: skipped (can only be read): be-long 2, be-long 3, "
              "be-long 4, be-long 5, be-long 6, be-long 7, text-21, text-22, byte-73, byte-c7, "
              "long-a0\nstmctl: restore: 45 of 45 settings sent, 45 read back the same\n");
    EXPECT_EQ(on_other_board("get --all").output, all);
}

TEST_F(Settings, are_saved_as_text_that_describes_itself)
{
    stmctl({"state"});
    set_some();
    const std::string shown = says({"save", "-"});
    const std::string head = "# The co-processor's settings, saved by stmctl ";
    EXPECT_EQ(shown.substr(0, head.size()), head);
    EXPECT_TRUE(std::regex_search(
        shown, std::regex("^.* saved by stmctl [0-9.]+ at 20[0-9]{2}-[0-9]{2}-[0-9]{2} "
                          "[0-9]{2}:[0-9]{2}:[0-9]{2} UTC\\.\n"
                          "# Each line is NAME \\[CHANNEL\\] VALUE; stmctl restore sends them\\.\n"
                          "sampletime ")))
        << shown.substr(0, 200);
    EXPECT_NE(shown.find("\nsampletime 32000\n# Only the lowest 8 bits of sampleskip can be read.\n"
                         "sampleskip 200\ninterpolation 3\nadc-word-54 0 0\n"),
              std::string::npos);
    EXPECT_NE(shown.find("\nadc-long 3 4294967295\n"), std::string::npos);
    EXPECT_NE(shown.find("\nbe-long 0 0\nbe-long 1 2147483648\n"), std::string::npos);
    EXPECT_EQ(shown.find("be-long 2"), std::string::npos);
    EXPECT_EQ(shown.find("text-21"), std::string::npos);
}

TEST_F(Settings, that_cannot_be_set_as_they_are_are_saved_as_comments)
{
    const Result result = stmctl({"save", "settings.txt"}, {"--answer", "0x05=4"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.errors,
              "stmctl: save: sampleskip is 0, which cannot be set: SKIP takes 3 to 32000; it "
              "is saved as a comment\n"
              "stmctl: save: interpolation is 4, which cannot be set: MODE takes 0 to 3; it "
              "is saved as a comment\n");
    EXPECT_EQ(lines_with(read_text("settings.txt"), "interpolation"),
              "# interpolation 4    cannot be set: MODE takes 0 to 3\n");
    EXPECT_EQ(stmctl({"restore", "settings.txt"}).errors,
              "stmctl: restore: 43 of 43 settings sent, 43 read back the same\n");
}

TEST_F(Settings, file_stays_as_it_was_when_the_board_does_not_answer_everything)
{
    write_text("settings.txt", "sampletime 7\n");
    const Result result = stmctl({"save", "settings.txt"}, {"--fault", "late@0x9A=3000"});
    EXPECT_EQ(result.status, 1);
    EXPECT_NE(result.errors.find("stmctl: be-long 0: the co-processor did not answer in time; the "
                                 "application is running but does not answer this\n"),
              std::string::npos);
    EXPECT_EQ(read_text("settings.txt"), "sampletime 7\n");
    EXPECT_EQ(run({"bash", "-c", "ls settings.txt*"}).output, "settings.txt\n");
}

TEST_F(Settings, file_is_replaced_with_its_rights_and_behind_its_link)
{
    write_text("settings.txt", std::string(100000, '#'));
    chmod(path("settings.txt").c_str(), 0640);
    run({"ln", "-s", "settings.txt", "link"});
    EXPECT_EQ(stmctl({"save", "link"}).status, 0);
    EXPECT_EQ(run({"stat", "-c", "%a %F", "settings.txt"}).output, "640 regular file\n");
    EXPECT_EQ(run({"stat", "-c", "%F", "link"}).output, "symbolic link\n");
    EXPECT_EQ(read_text("settings.txt").find("##"), std::string::npos);
    EXPECT_NE(read_text("settings.txt").find("sampletime 0\n"), std::string::npos);
    EXPECT_EQ(stmctl({"save", "/dev/null"}).status, 0);
    EXPECT_EQ(run({"stat", "-c", "%F", "/dev/null"}).output, "character special file\n");
}

TEST_F(Settings, file_that_cannot_be_written_is_reported_before_the_device_is_touched)
{
    expect_untouched({"save", "no/settings.txt"}, 1,
                     "stmctl: cannot write 'no/settings.txt': No such file or directory\n");
    expect_untouched({"save", "."}, 1, "stmctl: cannot write '.': Is a directory\n");
    expect_untouched({"save"}, 2, "stmctl: FILE is required; see stmctl save --help\n");
}

TEST_F(Settings, every_error_in_a_file_is_reported_and_nothing_sent)
{
    write_text("settings.txt", "# comment\n"
                               "\n"
                               "sampletime 32001\n"
                               "sampletime=100  # good\n"
                               "nonsense 1\n"
                               "adc-word-54 8 1\n"
                               "adc-word-54 7 -32769\n"
                               "channel-word-56 1\n"
                               "0x51 = 7\n"
                               "be-long 8 1\n"
                               "adc-value-pair 3 12.5 0.25\n"
                               "interpolation -1\n");
    expect_untouched(
        {"restore", "settings.txt"}, 1,
        "stmctl: settings.txt:3: TIME must be a number from 0 to 32000, not '32001'\n"
        "stmctl: settings.txt:5: unknown setting 'nonsense'; see stmctl list\n"
        "stmctl: settings.txt:6: channel must be a number from 0 to 7, not '8'\n"
        "stmctl: settings.txt:7: VALUE must be a number from 0 to 65535, not '-32769'\n"
        "stmctl: settings.txt:8: channel-word-56 takes CHANNEL VALUE\n"
        "stmctl: settings.txt:9: sampletime is already set in line 4\n"
        "stmctl: settings.txt:10: channel must be a number from 0 to 1, not '8'\n"
        "stmctl: settings.txt:12: MODE must be a number from 0 to 3, not '-1'\n"
        "stmctl: restore: nothing was sent: 8 errors in settings.txt\n");
    write_text("settings.txt", "x\n");
    expect_untouched({"restore", "settings.txt"}, 1,
                     "stmctl: settings.txt:1: unknown setting 'x'; see stmctl list\n"
                     "stmctl: restore: nothing was sent: 1 error in settings.txt\n");
}

TEST_F(Settings, file_without_any_is_refused)
{
    write_text("settings.txt", "# nothing\n");
    write_text("large.txt", std::string((1 << 20) + 1, ' '));
    expect_untouched({"restore", "settings.txt"}, 1,
                     "stmctl: settings.txt: it holds no settings\n");
    expect_untouched({"restore", "no.txt"}, 1, "stmctl: no.txt: No such file or directory\n");
    expect_untouched({"restore", "."}, 1, "stmctl: .: Is a directory\n");
    expect_untouched({"restore", "large.txt"}, 1,
                     "stmctl: large.txt: more than 1048576 bytes, which cannot be settings\n");
}

TEST_F(Settings, file_of_exactly_the_largest_size_is_accepted)
{
    const std::string setting = "sampletime 100\n";
    write_text("settings.txt", setting + std::string((1 << 20) - setting.size(), ' '));
    EXPECT_EQ(stmctl({"restore", "settings.txt"}).output, "sampletime = 100 (answer 1)\n");
}

// Who reads on behind it gets the rest.
TEST_F(Settings, file_is_read_no_further_than_a_byte_above_the_largest_size)
{
    write_text("large.txt", std::string((1 << 20) + 1, ' ') + "rest");
    const Result result = run(
        {"bash", "-c", "{ " + quoted(on_board_with({}, {"restore", "-"})) + "; cat; } <large.txt"});
    EXPECT_EQ(result.errors,
              "stmctl: standard input: more than 1048576 bytes, which cannot be settings\n");
    EXPECT_EQ(result.output, "rest");
}

TEST_F(Settings, written_by_hand_may_be_such_as_cannot_be_asked_for)
{
    write_text("settings.txt", "adc-value-pair 3 12.5 0.25\nbe-word-97 1 = 0xFFFF\n");
    const Result result = stmctl({"restore", "settings.txt"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.output, "adc-value-pair 3 = 12.50 0.25 (answer 1)\n"
                             "be-word-97 1 = 65535 (answer 1)\n");
    EXPECT_EQ(result.errors, "stmctl: restore: 2 of 2 settings sent, 1 read back the same\n");
}

constexpr char THREE[] = "sampletime 100\nsampleskip 5\ninterpolation 2\n";

TEST_F(Settings, that_are_not_answered_are_reported_and_the_others_sent)
{
    write_text("settings.txt", THREE);
    const Result late = with_fault("late@0x52=3000", {"restore", "settings.txt"});
    EXPECT_EQ(late.status, 1);
    EXPECT_EQ(late.output, "sampletime = 100 (answer 1)\ninterpolation = 2 (answer 1)\n");
    EXPECT_EQ(late.errors, "stmctl: sampleskip: the co-processor did not answer in time; the "
                           "application is running but does not answer this\n"
                           "stmctl: restore: 2 of 3 settings sent, 3 read back the same\n");
}

TEST_F(Settings, are_no_longer_sent_to_a_dead_board)
{
    write_text("settings.txt", THREE);
    const Result result = with_fault("silence@0x52", {"restore", "settings.txt"});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.output, "sampletime = 100 (answer 1)\n");
    EXPECT_EQ(result.errors, "stmctl: sampleskip: the co-processor did not answer in time; nothing "
                             "is answering: does the co-processor have power, or has it hung?\n"
                             "stmctl: restore: ended early, 1 of 3 settings sent\n");
}

TEST_F(Settings, that_read_back_differently_are_reported)
{
    write_text("settings.txt", THREE);
    const Result result = stmctl({"restore", "settings.txt"}, {"--answer", "0x03=-100"});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.errors, "stmctl: sampletime: 100 was sent, -100 read back\n"
                             "stmctl: restore: 3 of 3 settings sent, 2 read back the same\n");
}

TEST_F(Settings, are_not_asked_for_afterwards_if_their_user_says_so)
{
    write_text("settings.txt", THREE);
    const Result result =
        stmctl({"restore", "settings.txt", "--no-verify"}, {"--answer", "0x03=-100"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.errors, "stmctl: restore: 3 of 3 settings sent\n");
}

// Only the firmware knows what its answers mean.
TEST_F(Settings, are_not_judged_by_the_answer)
{
    write_text("settings.txt", THREE);
    const Result result = stmctl({"restore", "settings.txt"}, {"--answer", "0x52=0"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.output, "sampletime = 100 (answer 1)\nsampleskip = 5 (answer 0)\n"
                             "interpolation = 2 (answer 1)\n");
    EXPECT_EQ(result.errors, "stmctl: restore: 3 of 3 settings sent, 3 read back the same\n");
}

TEST_F(Settings, of_a_pipe_are_waited_for_until_an_interrupt)
{
    mkfifo(path("pipe").c_str(), 0600);
    const pid_t pid = start(on_board_with({}, {"restore", "pipe"}));
    const int pipe = open(path("pipe").c_str(), O_WRONLY | O_CLOEXEC); // once it is read
    kill(pid, SIGINT);
    expect_failure(finish(pid), 3, "pipe: stopped while it was being read");
    close(pipe);
}

TEST_F(Settings, get_all_continues_after_an_unanswered_query_while_the_application_runs)
{
    const Result result = with_fault("late@0x04=3000", {"get", "--all"});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.output.substr(0, 33), "sampletime = 0\ninterpolation = 0\n");
    EXPECT_NE(result.output.find("long-a0 = 123456\n"), std::string::npos);
    EXPECT_EQ(result.errors, "stmctl: sampleskip: the co-processor did not answer in time; the "
                             "application is running but does not answer this\n");
    const Result dead = stmctl({"get", "--all"}, {"--mode", "boot loader"});
    expect_failure(dead, 1,
                   "sampletime: the co-processor did not answer in time; the boot loader is "
                   "running (stmctl reset starts the application)");
    expect_untouched({"get", "--all", "sampletime"}, 2,
                     "stmctl: --all reads everything and takes no NAME; see stmctl get "
                     "--help\n");
}

TEST_F(Settings, are_shown_as_json)
{
    EXPECT_EQ(says({"get", "--json", "adc-word-54", "3"}, {"--answer", "0x06/3=-250"}),
              "{\"name\":\"adc-word-54\",\"channel\":3,\"value\":-250}\n");
    EXPECT_EQ(says({"get", "text-21", "--json"}, {"--answer", "0x21=a \"b\""}),
              "{\"name\":\"text-21\",\"value\":\"a \\\"b\\\"\"}\n");
    const std::string all = says({"get", "--all", "--json"});
    EXPECT_TRUE(all.starts_with("[{\"name\":\"sampletime\",\"value\":0},"
                                "{\"name\":\"sampleskip\",\"value\":0},"));
    EXPECT_TRUE(all.ends_with(",{\"name\":\"long-a0\",\"value\":123456}]\n"));
    EXPECT_EQ(std::count(all.begin(), all.end(), '{'), 56);
}

TEST_F(Settings, list_is_shown_as_json)
{
    const std::string list = says({"list", "--json"});
    EXPECT_TRUE(list.starts_with(
        "[{\"direction\":\"get\",\"name\":\"sampletime\",\"code\":\"0x03\",\"last_channel\":null,"
        "\"answers\":\"signed number, 16 bits\",\"function\":\"stm_query_short\"},"));
    EXPECT_NE(list.find("{\"direction\":\"set\",\"name\":\"sampleskip\",\"code\":\"0x52\","
                        "\"last_channel\":null,"
                        "\"takes\":[{\"name\":\"SKIP\",\"least\":3,\"most\":32000}],"),
              std::string::npos);
    EXPECT_TRUE(list.ends_with(
        ",{\"direction\":\"set\",\"name\":\"adc2-value-pair\",\"code\":\"0xC6\",\"last_channel\":1,"
        "\"takes\":[{\"name\":\"FIRST\",\"least\":0.00,\"most\":655.35},"
        "{\"name\":\"SECOND\",\"least\":0.00,\"most\":655.35}],"
        "\"function\":\"stm_set_adc2_value_pair\"}]\n"));
}

TEST_F(Settings, that_are_not_kept_as_typed_are_reported_before_they_are_sent)
{
    const auto remark_of = [this](const Words &words) {
        const Result result = stmctl(words);
        EXPECT_EQ(result.status, 0);
        return result.errors;
    };
    EXPECT_EQ(remark_of({"set", "channel-word-56", "1", "40000"}),
              "stmctl: channel-word-56 1: 40000 reads back as -25536: the answer is a signed "
              "16-bit number\n");
    EXPECT_EQ(remark_of({"set", "channel-word-56", "1", "32767"}), "");
    EXPECT_EQ(remark_of({"set", "adc-word-54", "1", "40000"}), "") << "its answer has 32 bits";
    EXPECT_EQ(remark_of({"set", "adc-long", "1", "0x80000000"}),
              "stmctl: adc-long 1: 2147483648 reads back as -2147483648: the answer is a signed "
              "32-bit number\n");
    EXPECT_EQ(remark_of({"set", "sampleskip", "256"}),
              "stmctl: sampleskip: 256 reads back as 0: the answer is an unsigned 8-bit number\n");
    EXPECT_EQ(remark_of({"set", "sampleskip", "255"}), "");
    EXPECT_EQ(remark_of({"set", "adc-value-pair", "1", "1.239", "2.001"}),
              "stmctl: FIRST: 1.239 is sent in hundredths, as 1.23\n"
              "stmctl: SECOND: 2.001 is sent in hundredths, as 2.00\n");
    EXPECT_EQ(remark_of({"set", "adc-value", "1", "1.2300"}), "");
    EXPECT_EQ(with_fault("exchange@2", {"set", "sampleskip", "256"}).errors,
              "stmctl: sampleskip: 256 reads back as 0: the answer is an unsigned 8-bit number\n"
              "stmctl: sampleskip: sending the command failed: Input/output error\n");
}

} // namespace
