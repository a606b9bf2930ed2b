// stmctl completion bash: a real bash reads the script and completes words with it.
#include "tests/stmctl/stmctl_bench.hpp"

namespace
{

class Completion : public StmctlBench
{
  protected:
    void SetUp() override
    {
        Words words = directly({}, {program(), "completion", "bash"});
        const Result script = run(words);
        EXPECT_EQ(script.status, 0);
        write_file("script", {script.output.begin(), script.output.end()});
    }

    Result bash(const std::string &commands)
    {
        return run({"bash", "--norc", "-c", "set -eu; source ./script; " + commands});
    }

    // What is offered for the last of the words, separated by blanks.
    std::string offered(const Words &words)
    {
        const Result result = bash("COMP_WORDS=(" + quoted(words) +
                                   "); COMP_CWORD=" + std::to_string(words.size() - 1) +
                                   "; _stmctl; echo ${COMPREPLY[*]-}");
        EXPECT_EQ(result.status, 0);
        EXPECT_EQ(result.errors, "");
        return result.output.substr(0, result.output.size() - 1);
    }
};

TEST_F(Completion, is_registered_for_stmctl)
{
    EXPECT_EQ(bash("complete -p stmctl").output, "complete -F _stmctl stmctl\n");
}

TEST_F(Completion, has_entries_only_for_what_offers_something)
{
    const std::string script = read_text("script");
    EXPECT_NE(script.find("        [\"stmctl ring\"]=\"write read status remove\"\n"),
              std::string::npos);
    EXPECT_EQ(script.find("=\"\""), std::string::npos);
}

TEST_F(Completion, offers_the_commands)
{
    EXPECT_EQ(offered({"stmctl", "fl"}), "flash");
    EXPECT_EQ(offered({"stmctl", "st"}), "state start");
    const std::string all = offered({"stmctl", ""});
    EXPECT_EQ(all.find("flash state version start reset get set list save restore"), 0U);
    EXPECT_EQ(offered({"stmctl", "--v"}), "--version");
    EXPECT_EQ(offered({"stmctl", "nonsense"}), "");
}

TEST_F(Completion, offers_names_in_their_direction)
{
    EXPECT_EQ(offered({"stmctl", "get", "t"}), "text-21 text-22");
    EXPECT_EQ(offered({"stmctl", "set", "t"}), "");
    EXPECT_EQ(offered({"stmctl", "set", "adc2"}), "adc2-value adc2-value-pair");
    EXPECT_EQ(offered({"stmctl", "get", "adc2"}), "");
    EXPECT_EQ(offered({"stmctl", "get", "text-21", ""}), "");
}

TEST_F(Completion, offers_the_options_of_a_command)
{
    EXPECT_EQ(offered({"stmctl", "flash", "--"}),
              "--help --yes --start --limit --retries --wait --quiet --verbose");
    EXPECT_EQ(offered({"stmctl", "list", "--"}), "--help --json");
    EXPECT_EQ(offered({"stmctl", "peek", "0", "--l"}), "--long");
}

TEST_F(Completion, offers_short_names_too)
{
    write_file("image.bin", {1});
    EXPECT_EQ(offered({"stmctl", "flash", "-"}),
              "--help -h --yes -y --start --limit --retries --wait --quiet -q --verbose -v");
    EXPECT_EQ(offered({"stmctl", "records", "-o", "im"}), "image.bin");
}

TEST_F(Completion, offers_files_where_a_file_belongs)
{
    write_file("image.bin", {1});
    EXPECT_EQ(offered({"stmctl", "flash", ""}), "firmware booter");
    EXPECT_EQ(offered({"stmctl", "flash", "firmware", "im"}), "image.bin");
    EXPECT_EQ(offered({"stmctl", "flash", "firmware", "--retries", "2", "im"}), "image.bin");
    EXPECT_EQ(offered({"stmctl", "flash", "--yes", "booter", "im"}), "image.bin");
    EXPECT_EQ(offered({"stmctl", "flash", "firmware", "--retries", "im"}), "");
}

TEST_F(Completion, takes_a_word_for_an_option_that_a_value_follows_only_if_it_is_one)
{
    EXPECT_EQ(offered({"stmctl", "plot", "-", "--col"}), "--columns");
    EXPECT_EQ(offered({"stmctl", "plot", "--", "--col"}), "--columns");
    EXPECT_EQ(offered({"stmctl", "plot", "-o", "--col"}), "") << "it is the picture";
}

TEST_F(Completion, offers_files_for_every_file)
{
    write_file("image.bin", {1});
    const Words commands[] = {
        {"restore"}, {"save"}, {"plot"}, {"plot", "-o"}, {"plot", "--output"},
    };
    for (const Words &command : commands) {
        Words words = {"stmctl"};
        words.insert(words.end(), command.begin(), command.end());
        words.emplace_back("im");
        EXPECT_EQ(offered(words), "image.bin") << joined(words);
    }
}

// bash makes three words of it.
TEST_F(Completion, offers_values_after_an_equals_sign_too)
{
    EXPECT_EQ(offered({"stmctl", "records", "--format", "="}), "text csv hex jsonl");
    EXPECT_EQ(offered({"stmctl", "records", "--format", "=", "c"}), "csv");
    EXPECT_EQ(offered({"stmctl", "records", "--format", "=", "csv", "--vari"}), "--variant");
}

TEST_F(Completion, offers_the_shell)
{
    EXPECT_EQ(offered({"stmctl", "completion", ""}), "bash zsh");
}

TEST_F(Completion, offers_topics_and_commands_after_help)
{
    for (const char *help : {"--help", "-h", "help"}) {
        EXPECT_EQ(offered({"stmctl", help, "sta"}), "status state start") << help;
        EXPECT_EQ(offered({"stmctl", help, "acc"}), "access") << help;
    }
    EXPECT_EQ(offered({"stmctl", "flash", "--help", "acc"}), "");
    EXPECT_EQ(offered({"stmctl", "acc"}), "");
}

// A real zsh, whose completion is asked for with what it would insert.
class ZshCompletion : public StmctlBench
{
  protected:
    void SetUp() override
    {
        if (run({"bash", "-c", "command -v zsh"}).status != 0) {
            GTEST_SKIP() << "there is no zsh here";
        }
        const Result script = run(directly({}, {program(), "completion", "zsh"}));
        EXPECT_EQ(script.status, 0);
        write_file("_stmctl", {script.output.begin(), script.output.end()});
    }

    // What is offered for the last of the words. compadd and _files print their arguments.
    std::string offered(const Words &words)
    {
        const Result result =
            run({"zsh", "-f", "-c",
                 "compdef() { registered=\"$*\" }\n"
                 "compset() { prefix=${current%%=*}= }\n"
                 "compadd() { shift; for word; do\n"
                 "  [[ $word == ${words[CURRENT]#$prefix}* ]] && print -rn -- \"$word \"; done; "
                 "true }\n"
                 "_files() { print -n 'files ' }\n"
                 "source ./_stmctl\n"
                 "[[ $registered == '_stmctl stmctl' ]] || print -n 'not registered '\n"
                 "words=(" +
                     quoted(words) + "); CURRENT=$#words; _stmctl"});
        EXPECT_EQ(result.status, 0);
        EXPECT_EQ(result.errors, "");
        return result.output;
    }
};

TEST_F(ZshCompletion, offers_the_same_as_that_for_bash)
{
    EXPECT_EQ(offered({"stmctl", "fl"}), "flash ");
    EXPECT_EQ(offered({"stmctl", "st"}), "state start ");
    EXPECT_EQ(offered({"stmctl", "ring", "r"}), "read remove ");
    EXPECT_EQ(offered({"stmctl", "get", "t"}), "text-21 text-22 ");
    EXPECT_EQ(offered({"stmctl", "set", "t"}), "");
    EXPECT_EQ(offered({"stmctl", "--help", "acc"}), "access ");
    EXPECT_EQ(offered({"stmctl", "completion", ""}), "bash zsh ");
    EXPECT_EQ(offered({"stmctl", "peek", "0", "--l"}), "--long ");
    EXPECT_EQ(offered({"stmctl", "records", "--format", "c"}), "csv ");
    EXPECT_EQ(offered({"stmctl", "records", "--format=c"}), "csv ");
    EXPECT_EQ(offered({"stmctl", "records", "--format=csv", "--vari"}), "--variant ");
    EXPECT_EQ(offered({"stmctl", "flash", "firmware", ""}), "files ");
    EXPECT_EQ(offered({"stmctl", "flash", "firmware", "--retries", ""}), "");
    EXPECT_EQ(offered({"stmctl", "plot", "-", "--col"}), "--columns ");
    EXPECT_EQ(offered({"stmctl", "nonsense", ""}).find("flash"), 0U);
}

} // namespace
