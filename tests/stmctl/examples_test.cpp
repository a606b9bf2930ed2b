// Every example of every help of stmctl, as the help itself lists them, in its order on one board:
// each ends with status 0, and shows or writes something.
#include "tests/stmctl/stmctl_bench.hpp"

#include <sched.h>

#include <algorithm>
#include <regex>
#include <set>
#include <sstream>

namespace
{

namespace fs = std::filesystem;

class Examples : public StmctlBench
{
  protected:
    void SetUp() override
    {
        if (unshare(CLONE_NEWIPC) != 0) {
            GTEST_SKIP() << "shared memory of its own is not allowed here";
        }
        fs::create_directories(path("bin"));
        write_program("stmctl", "exec " +
                                    quoted(virtual_board({"--board", "board", "--count-time"})) +
                                    program() + " \"$@\"\n");
        write_file("image.bin", noise(5000, 9));
        write_file("booter.bin", noise(5000, 7));
        run({"gzip", "-k", "image.bin"});
        stmctl({"set", "sampleskip", "3"}); // a fresh board has a value that cannot be set
    }

    void write_program(const std::string &name, const std::string &text) const
    {
        const std::string script = "#!/bin/bash\n" + text;
        write_file("bin/" + name, {script.begin(), script.end()});
        fs::permissions(path("bin/" + name), fs::perms::owner_all);
    }

    std::string help_of(const Words &words)
    {
        Words all = directly({}, {program()});
        all.insert(all.end(), words.begin(), words.end());
        all.emplace_back("--help");
        return run(all).output;
    }

    // The lines below a title, up to an empty one, without their two blanks and without what
    // follows two more.
    static Words lines_below(const std::string &title, const std::string &help)
    {
        std::istringstream lines(help);
        Words found;
        bool below = false;
        for (std::string line; std::getline(lines, line);) {
            below = below && !line.empty();
            if (below) {
                found.push_back(line.substr(2, line.find("  ", 2) - 2));
            }
            below = below || line == title;
        }
        return found;
    }

    // Those of a command and of its subcommands.
    void collect(const Words &command)
    {
        const std::string help = help_of(command);
        for (const std::string &example : lines_below("Examples:", help)) {
            examples_.push_back(example);
        }
        for (const std::string &name : lines_below("Subcommands:", help)) {
            Words nested = command;
            nested.push_back(name);
            collect(nested);
        }
    }

    // What has no end gets one, a long time a short one, and what goes to a folder of the system
    // goes to one of the bench.
    std::string made_harmless(std::string example)
    {
        static const std::regex endless(
            "^stmctl (follow|watch|ring write)\\b(?!.*(--duration| -n ))");
        static const std::regex reader("^stmctl ring read\\b(?!.*(--duration| -n ))");
        static const std::regex long_times("--duration [0-9]{2,}");
        static const std::regex redirected(" >(/[^ ]*/)");
        if (std::regex_search(example, endless)) {
            example.insert(std::min(example.find(" |"), example.size()), " --duration 2");
        }
        example += std::regex_search(example, reader) ? " --from-oldest -n 5" : "";
        std::smatch folder;
        if (std::regex_search(example, folder, redirected)) {
            fs::create_directories(path("root" + folder[1].str()));
        }
        example = std::regex_replace(example, long_times, "--duration 2");
        return std::regex_replace(example, redirected, " >root$1");
    }

    // Files of the bench with their sizes; those of the board and of the runs are left out.
    std::set<std::string> files() const
    {
        std::set<std::string> found;
        for (const auto &entry : fs::recursive_directory_iterator(path("."))) {
            const std::string name = entry.path().lexically_relative(path("."));
            if (entry.is_regular_file() && !name.starts_with("board") && !name.starts_with('.') &&
                entry.file_size() > 0) {
                found.insert(name + " " +
                             std::to_string(entry.last_write_time().time_since_epoch().count()));
            }
        }
        return found;
    }

    Result run_line(const std::string &line)
    {
        return run({"bash", "-o", "pipefail", "-c",
                    "PATH=" + path("bin") + ":$PATH; { " + line + "; } </dev/null"});
    }

    void expect_it_works(const std::string &example)
    {
        if (example.starts_with("stmctl ring ")) {
            run_line("stmctl ring status || stmctl ring write --duration 1");
        }
        const auto before = files();
        const Result result = run_line(made_harmless(example));
        EXPECT_EQ(result.status, 0) << example << '\n' << result.output << result.errors;
        const bool has_effect = files() != before || example.starts_with("source ");
        EXPECT_TRUE(!result.output.empty() || !result.errors.empty() || has_effect) << example;
        EXPECT_EQ(result.errors.find("rror"), std::string::npos) << example << result.errors;
    }

    Words examples_;
};

TEST_F(Examples, of_every_help_work)
{
    collect({});
    EXPECT_GT(examples_.size(), 50U);
    EXPECT_NE(std::ranges::find(examples_, "stmctl ring read --from-oldest -n 100 --format jsonl"),
              examples_.end());
    const bool draws = run({"bash", "-c", "command -v gnuplot"}).status == 0;
    for (const std::string &example : examples_) {
        if (draws || example.find("stmctl plot") == std::string::npos) {
            expect_it_works(example);
            run_line("stmctl reset"); // after a flash the boot loader runs
        }
    }
}

} // namespace
