// stmctl completion bash: a real bash takes the script and completes words with it.
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
    EXPECT_EQ(offered({"stmctl", "flash", "--"}), "--help --yes --start --limit --retries --wait");
    EXPECT_EQ(offered({"stmctl", "list", "--"}), "--help --json");
    EXPECT_EQ(offered({"stmctl", "peek", "0", "--l"}), "--long");
}

TEST_F(Completion, offers_short_names_too)
{
    write_file("image.bin", {1});
    EXPECT_EQ(offered({"stmctl", "flash", "-"}), "--help -h --yes -y --start --limit --retries --wait");
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

// bash makes three words of it.
TEST_F(Completion, offers_values_behind_an_equals_sign_too)
{
    EXPECT_EQ(offered({"stmctl", "records", "--format", "="}), "text csv hex jsonl");
    EXPECT_EQ(offered({"stmctl", "records", "--format", "=", "c"}), "csv");
    EXPECT_EQ(offered({"stmctl", "records", "--format", "=", "csv", "--vari"}), "--variant");
}

TEST_F(Completion, offers_the_shell)
{
    EXPECT_EQ(offered({"stmctl", "completion", ""}), "bash");
}

} // namespace
