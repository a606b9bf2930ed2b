// The file of a log: replaced, continued or protected, and never anything in between.
#include "tests/stmctl/record_bench.hpp"

#include <sys/stat.h>

namespace
{

constexpr char OTHER_LINE[] =
    "cannot append to 'log': its first line does not match; was it written with another --format, "
    "--variant, --separator or --timestamps?";

class LogFile : public RecordBench
{
  protected:
    void write_text(const std::string &name, const std::string &text) const
    {
        write_file(name, Bytes(text.begin(), text.end()));
    }

    Result records(const Words &more)
    {
        Words words = {"records", "-n", "2"};
        words.insert(words.end(), more.begin(), more.end());
        return stmctl(words);
    }

    // A run that continues after what the log holds.
    Result append(const Words &more)
    {
        Words words = {"-o", "log", "--append"};
        words.insert(words.end(), more.begin(), more.end());
        return records(words);
    }

    std::string shown(const Words &more) { return records(more).output; }

    void expect_kept(const Result &result, int status, const std::string &sentence,
                     const std::string &text)
    {
        expect_failure(result, status, sentence);
        EXPECT_EQ(read_text("log"), text);
    }
};

std::string without_first_line(const std::string &text)
{
    return text.substr(text.find('\n') + 1);
}

TEST_F(LogFile, runs_follow_each_other_below_one_header)
{
    const std::string once = shown({"--format", "csv"});
    EXPECT_EQ(append({"--format", "csv"}).errors, "");
    EXPECT_EQ(read_text("log"), once);
    EXPECT_EQ(append({"--format", "csv"}).errors, "");
    EXPECT_EQ(read_text("log"), once + without_first_line(once));
    write_text("log", "");
    EXPECT_EQ(append({"--format", "csv"}).status, 0);
    EXPECT_EQ(read_text("log"), once) << "an empty one gets it";
}

TEST_F(LogFile, every_format_is_continued)
{
    for (const char *format : {"text", "jsonl", "hex"}) {
        const std::string once = shown({"--format", format});
        write_text("log", once);
        EXPECT_EQ(append({"--format", format}).errors, "");
        EXPECT_EQ(read_text("log"), once + once);
    }
}

TEST_F(LogFile, frames_are_continued_too)
{
    for (const char *command : {"adc", "raw"}) {
        for (const char *format : {"csv", "jsonl", "text"}) {
            const Words words = {command,   "--format", format, "-o", command + std::string(format),
                                 "--append"};
            const std::string once = says({command, "--format", format});
            says(words);
            says(words);
            const std::string header = once.starts_with("\"value\"") ? "\"value\";\n" : "";
            EXPECT_EQ(read_text(words[4]), once + once.substr(header.size())) << words[4];
        }
    }
}

TEST_F(LogFile, a_log_that_looks_otherwise_than_usual_is_continued)
{
    for (const Words &words :
         {Words{"records"}, Words{"adc"}, Words{"adc", "-n", "2"}, Words{"raw"}}) {
        for (const Words &look : {Words{"--timestamps"}, Words{"--separator", ","},
                                  Words{"--timestamps", "--separator", "tab"}}) {
            Words all = words;
            all.insert(all.end(), look.begin(), look.end());
            all.insert(all.end(), {"--format", "csv", "-o", "log", "--append"});
            std::filesystem::remove(path("log"));
            EXPECT_EQ(stmctl(all).errors, "");
            const size_t lines = count(read_text("log"), "\n");
            EXPECT_EQ(stmctl(all).errors, "") << all[0] << look[0];
            const size_t headers = words[0] == "raw" ? 0 : 1;
            EXPECT_EQ(count(read_text("log"), "\n"), 2 * lines - headers) << all[0] << look[0];
        }
    }
}

TEST_F(LogFile, half_a_line_of_a_killed_run_is_cut_off)
{
    const std::string csv = shown({"--format", "csv"});
    write_text("log", csv + "3;3;8953");
    EXPECT_EQ(append({"--format", "csv"}).errors,
              "stmctl: 'log': removed the incomplete last line (8 bytes)\n");
    EXPECT_EQ(read_text("log"), csv + without_first_line(csv));
    write_text("log", csv.substr(0, 30));
    EXPECT_EQ(append({"--format", "csv"}).errors,
              "stmctl: 'log': removed the incomplete last line (30 bytes)\n");
    EXPECT_EQ(read_text("log"), csv) << "half a header is none";
    const std::string jsonl = shown({"--format", "jsonl"});
    write_text("log", "{\"nr\":1,\"re");
    EXPECT_NE(append({"--format", "jsonl"}).errors, "");
    EXPECT_EQ(read_text("log"), jsonl);
    const std::string text = shown({});
    write_text("log", text + "stm_uint8_t  nr   : 3\nstm_int32");
    EXPECT_NE(append({}).errors, "");
    EXPECT_EQ(read_text("log"), text + "stm_uint8_t  nr   : 3\n" + text);
    write_text("log", csv + std::string(10'000, '7'));
    EXPECT_NE(append({"--format", "csv"}).errors, "") << "over several pieces";
    EXPECT_EQ(read_text("log"), csv + without_first_line(csv));
}

TEST_F(LogFile, a_file_of_something_else_is_not_continued)
{
    const std::string csv = shown({"--format", "csv"});
    const std::string text = "stm_uint8_t  nr   : 1\n";
    write_text("log", csv + "half");
    for (const Words &words :
         {Words{"--format", "csv", "--variant", "temp"}, Words{"--format", "csv", "--timestamps"},
          Words{"--format", "jsonl"}}) {
        expect_kept(append(words), 1, OTHER_LINE, csv + "half");
    }
    write_text("log", text);
    expect_kept(append({"--format", "csv"}), 1, OTHER_LINE, text);
    expect_kept(stmctl({"raw", "--format", "csv", "-o", "log", "--append"}), 1, OTHER_LINE, text);
    expect_kept(stmctl({"adc", "--format", "csv", "-o", "log", "--append"}), 1, OTHER_LINE, text);
    write_text("log", "no line");
    expect_kept(append({}), 1, "cannot append to 'log': it holds no complete line", "no line");
}

TEST_F(LogFile, an_existing_file_is_kept_if_the_user_says_so)
{
    write_text("log", "old");
    expect_kept(records({"-o", "log", "--no-clobber"}), 1,
                "'log' already exists; --no-clobber keeps it", "old");
    EXPECT_EQ(records({"-o", "new", "--no-clobber"}).errors, "");
    EXPECT_EQ(read_text("new"), shown({}));
}

TEST_F(LogFile, options_for_a_file_require_one)
{
    for (const Words &words : {Words{}, Words{"-o", "-"}}) {
        for (const char *option : {"--append", "--no-clobber"}) {
            Words all = words;
            all.emplace_back(option);
            expect_failure(records(all), 2, std::string(option) + " requires -o FILE");
        }
    }
    expect_failure(append({"--no-clobber"}), 2, "--append and --no-clobber cannot be combined");
    EXPECT_FALSE(std::filesystem::exists(path("log")));
}

TEST_F(LogFile, a_run_that_does_not_begin_changes_nothing)
{
    const std::string text = shown({}) + "half";
    write_text("log", text);
    for (const char *option : {"--append", "--timestamps", "--keep-going"}) {
        const Words words = {"records", "-o", "log", option};
        EXPECT_NE(with_fault("no-device", words).status, 0);
        EXPECT_EQ(read_text("log"), text);
    }
    EXPECT_EQ(with_fault("no-device", {"records", "-o", "new", "--append"}).status, 4);
    EXPECT_FALSE(std::filesystem::exists(path("new")));
}

TEST_F(LogFile, anything_but_a_regular_file_is_simply_written)
{
    EXPECT_EQ(append({"--format", "csv", "-o", "/dev/null"}).status, 2);
    EXPECT_EQ(records({"-o", "/dev/null", "--append"}).errors, "");
    ASSERT_EQ(mkfifo(path("pipe").c_str(), 0600), 0);
    const Result result =
        in_shell({"records", "-n", "2", "--format", "csv", "-o", "pipe", "--append"}, "& cat pipe");
    EXPECT_EQ(result.output, shown({"--format", "csv"}));
}

TEST_F(LogFile, a_summary_goes_elsewhere)
{
    write_text("log", "old");
    const std::string there = ": the results go there, too";
    expect_kept(records({"-o", "log", "--summary", "log"}), 2, "--summary log" + there, "old");
    std::filesystem::create_hard_link(path("log"), path("link"));
    expect_kept(records({"-o", "log", "--summary", "link"}), 2, "--summary link" + there, "old");
    expect_failure(records({"-o", "new", "--summary", "./new"}), 2, "--summary ./new" + there);
    EXPECT_FALSE(std::filesystem::exists(path("new")));
    expect_failure(records({"-o", "-", "--summary", "-"}), 2, "--summary -" + there);
    expect_failure(records({"--summary", "-"}), 2, "--summary -" + there);
    expect_failure(stmctl({"ring", "read", "--summary", "-"}), 2, "--summary -" + there);
    expect_failure(stmctl({"watch", "--summary", "-"}), 2, "--summary -" + there);
    EXPECT_EQ(records({"-o", "/dev/null", "--summary", "/dev/null"}).errors, "");
}

// More than a signed 32-bit number can hold, as after a few hours of loggingging.
TEST_F(LogFile, beyond_two_gibibytes_are_continued)
{
    ASSERT_EQ(run({"bash", "-c", "echo {} >log && truncate -s 3G log && echo >>log"}).status, 0);
    const Result result = stmctl({"records", "--format", "jsonl", "-o", "log", "--append"});
    EXPECT_EQ(result.status, 0) << result.errors;
    EXPECT_EQ(result.errors, "");
    const std::string end = run({"tail", "-c", "+3221225473", "log"}).output;
    EXPECT_EQ(end.substr(0, 7), "\n{\"nr\":");
    EXPECT_TRUE(end.ends_with("}\n")) << end;
}

} // namespace
