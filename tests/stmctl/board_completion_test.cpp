// virtual-board --completion: real shells take the scripts and complete words with them, those of
// the command after the options with its own.
#include "tests/stmctl/stmctl_bench.hpp"

namespace
{

class BoardCompletion : public StmctlBench
{
  protected:
    std::string script_for(const std::string &shell)
    {
        const Result script = run({TOOL_VIRTUAL_BOARD, "--completion", shell});
        EXPECT_EQ(script.status, 0);
        return script.output;
    }

    void SetUp() override
    {
        const std::string script = script_for("bash");
        write_file("script", {script.begin(), script.end()});
        const Result own = run(directly({}, {program(), "completion", "bash"}));
        write_file("own", {own.output.begin(), own.output.end()});
        write_file("image.bin", {1});
    }

    // What bash offers for the last of the words, separated by blanks.
    std::string offered(const Words &words)
    {
        const Result result =
            run({"bash", "--norc", "-c",
                 "set -eu; source ./script; source ./own; COMP_WORDS=(" + quoted(words) +
                     "); COMP_CWORD=$((${#COMP_WORDS[@]} - 1)); _virtual_board; "
                     "echo ${COMPREPLY[*]-}"});
        EXPECT_EQ(result.status, 0);
        EXPECT_EQ(result.errors, "");
        return result.output.substr(0, result.output.size() - 1);
    }

    std::string offered_by_zsh(const Words &words)
    {
        const std::string script = script_for("zsh");
        write_file("_virtual_board", {script.begin(), script.end()});
        const Result result = run(
            {"zsh", "-f", "-c",
             "compdef() { registered=\"$*\" }\n"
             "compset() { prefix=${words[CURRENT]%%=*}= }\n"
             "compadd() { while [[ $1 != -- ]]; do shift; done; shift; for word; do\n"
             "  [[ $word == ${words[CURRENT]#$prefix}* ]] && print -rn -- \"$word \"; done; true "
             "}\n"
             "_files() { print -n 'files ' }\n"
             "_command_names() { print -n 'commands ' }\n"
             "_normal() { print -rn -- \"of the command: $words, $CURRENT\" }\n"
             "source ./_virtual_board\n"
             "[[ $registered == '_virtual_board virtual-board' ]] || print -n 'not registered '\n"
             "words=(" +
                 quoted(words) + "); CURRENT=$#words; _virtual_board"});
        EXPECT_EQ(result.status, 0);
        EXPECT_EQ(result.errors, "");
        return result.output;
    }
};

TEST_F(BoardCompletion, offers_options_and_what_they_take)
{
    EXPECT_EQ(offered({"virtual-board", "--b"}), "--board --busy --bufsiz");
    EXPECT_EQ(offered({"virtual-board", "--fault", "s"}),
              "silence status@ stuck@ short@ speed-refused silence@t=");
    EXPECT_EQ(offered({"virtual-board", "--fault", "re"}), "restart@t=");
    EXPECT_EQ(offered({"virtual-board", "--fault", "=", "fl"}), "flip@");
    EXPECT_EQ(offered({"virtual-board", "--board", "im"}), "image.bin");
    EXPECT_EQ(offered({"virtual-board", "--mode", "a"}), "application");
    EXPECT_EQ(offered({"virtual-board", "--rate", ""}), "");
    EXPECT_EQ(offered({"virtual-board", "--completion", ""}), "bash zsh");
    EXPECT_EQ(offered({"virtual-board", "--count-time", "gre"}).find("grep"), 0U);
}

TEST_F(BoardCompletion, offers_after_the_options_what_the_command_has)
{
    EXPECT_EQ(offered({"virtual-board", "stmctl", "fl"}), "flash");
    EXPECT_EQ(offered({"virtual-board", "--count-time", "--board", "b", "stmctl", "ring", "rea"}),
              "read");
    EXPECT_EQ(offered({"virtual-board", "--fault", "late", "@", "header", "=", "20", "./bin/stmctl",
                       "fl"}),
              "flash");
    EXPECT_EQ(offered({"virtual-board", "--", "stmctl", "fl"}), "flash");
    EXPECT_EQ(offered({"virtual-board", "update", "-firmware", "im"}), "image.bin");
}

TEST_F(BoardCompletion, offers_the_orders_to_a_board)
{
    ASSERT_EQ(run({"mkdir", "my-board"}).status, 0);
    EXPECT_TRUE((offered({"virtual-board", "tel"}) + ' ').ends_with("tell "));
    EXPECT_FALSE((offered({"virtual-board", "--count-time", "tel"}) + ' ').ends_with("tell "));
    EXPECT_EQ(offered({"virtual-board", "tell", "m"}), "my-board");
    EXPECT_EQ(offered({"virtual-board", "tell", "my-board", "r"}), "restart restart=boot-loader");
    EXPECT_EQ(offered({"virtual-board", "tell", "my-board", "gone", ""}), "");
}

TEST_F(BoardCompletion, is_there_for_zsh)
{
    if (run({"bash", "-c", "command -v zsh"}).status != 0) {
        GTEST_SKIP() << "there is no zsh here";
    }
    EXPECT_EQ(offered_by_zsh({"virtual-board", "--bo"}), "--board ");
    EXPECT_EQ(offered_by_zsh({"virtual-board", "--fault", "re"}), "restart@t= ");
    EXPECT_EQ(offered_by_zsh({"virtual-board", "--fault=fl"}), "flip@ ");
    EXPECT_EQ(offered_by_zsh({"virtual-board", "--board", ""}), "files ");
    EXPECT_EQ(offered_by_zsh({"virtual-board", ""}), "tell commands ");
    EXPECT_EQ(offered_by_zsh({"virtual-board", "tell", ""}), "files ");
    EXPECT_EQ(offered_by_zsh({"virtual-board", "tell", "b", "b"}), "back ");
    EXPECT_EQ(offered_by_zsh({"virtual-board", "--board", "b", "stmctl", "fl"}),
              "of the command: stmctl fl, 2");
}

TEST_F(BoardCompletion, another_shell_is_refused)
{
    const Result result = run({TOOL_VIRTUAL_BOARD, "--completion", "fish"});
    EXPECT_EQ(result.status, 125);
    EXPECT_EQ(result.errors, "virtual-board: --completion cannot be 'fish'\n");
}

} // namespace
