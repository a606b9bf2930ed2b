// The commands that the documents for users show, in a document's order, on one board that is kept:
// each does what a reader expects. Endless ones are interrupted after their first record. What fenced blocks show is checked by docs/transcripts.
#include "tests/stmctl/stmctl_bench.hpp"

#include <sys/wait.h>

#include <algorithm>
#include <csignal>
#include <fstream>
#include <sstream>

namespace
{

namespace fs = std::filesystem;

// How lines that are no commands for a board begin: those that build, install, or change the
// machine, that need what a cross build makes, and those that say how a command line is made up.
constexpr const char *PASSED_OVER[] = {
    "script/",
    "cmake ",
    "sudo ",
    "PATH=",
    "groupadd ",
    "cp ",
    "usermod ",
    "virtual-board [OPTIONS]",
    "virtual-board --emulator",
    "virtual-board tell",
    "    --preload",
};

struct Shown {
    const char *document;
    unsigned commands; // at least, lest a change of the document's form leave them unread
};

constexpr Shown SHOWN[] = {
    {"README.md", 12},
    {"docs/stmctl.md", 14},
    {"docs/virtual-board.md", 14},
};

// Those that do not end with status 0, because that is what they are meant to show.
constexpr struct {
    const char *command;
    int status;
} ENDINGS[] = {
    {"virtual-board --count-time --fault late@0x06=3000 stmctl get adc-word-54 1", 1},
    {"virtual-board --fault length@0x21=4097 stmctl get text-21", 1},
    {"virtual-board --count-time --fault intrusion@t=2s=start.txt stmctl follow --duration 5 "
     "--keep-going",
     1},
};

class DocumentCommands : public StmctlBench, public testing::WithParamInterface<Shown>
{
  protected:
    void SetUp() override
    {
        for (const char *image : {"image.bin", "STM32_Firmware.bin", "STM32_Booter.bin"}) {
            write_file(image, noise(5000, 9));
        }
        fs::create_directories(path("bin"));
        fs::create_directories(path("build/release/lib"));
        fs::create_symlink(README_ARCHIVE, path("build/release/lib/libstm_com_funcs.a"));
        for (const char *folder : {"link", "examples"}) {
            fs::create_directory_symlink(std::string(README_ROOT) + "/" + folder, path(folder));
        }
        write_program("virtual-board", "exec " TOOL_VIRTUAL_BOARD " \"$@\"\n");
        write_program("stmctl", on_kept_board(TOOL_STMCTL));
        write_program("update", on_kept_board(TOOL_UPDATE));
        read_document();
    }

    // On a board of the line's own if it names one, else on the one that is kept for all of them.
    static std::string on_kept_board(const std::string &program)
    {
        return "[ -z \"$VIRTUAL_BOARD_DIRECTORY\" ] || exec " + program + " \"$@\"\n" +
               "exec virtual-board --board my-board " + program + " \"$@\"\n";
    }

    void write_program(const std::string &name, const std::string &text) const
    {
        const std::string script = "#!/bin/bash\n" + text;
        write_file("bin/" + name, {script.begin(), script.end()});
        fs::permissions(path("bin/" + name), fs::perms::owner_all);
    }

    // Lines that are indented by four are commands, two blanks begin their explanation, and a line
    // that sets a variable belongs to the next. The one block of C is the program of the lines
    // after it.
    void read_document()
    {
        std::ifstream document(std::string(README_ROOT) + "/" + GetParam().document);
        std::string block; // the fence around the line, or nothing
        std::string program;
        std::string variable;
        for (std::string line; std::getline(document, line);) {
            if (line.starts_with("```")) {
                block = block.empty() ? line : "";
            } else if (!block.empty()) {
                program += block == "```c" ? line + '\n' : "";
            } else if (line.starts_with("    ") && !passed_over(line.substr(4))) {
                const std::string command = line.substr(4, line.find("  ", 4) - 4);
                const bool sets_variable = command.find('=') < command.find(' ');
                if (!sets_variable) {
                    commands_.push_back(variable + command);
                }
                variable = sets_variable ? command + "; " : "";
            }
        }
        write_file("state.c", {program.begin(), program.end()});
    }

    static bool passed_over(const std::string &line)
    {
        return line.front() == ' ' || line.find("  0.0") != std::string::npos ||
               line.find("stmctl: ") == 0 || line.find(" > ") != std::string::npos ||
               std::ranges::any_of(PASSED_OVER,
                                   [&line](const char *words) { return line.starts_with(words); });
    }

    static int expected_status(const std::string &command)
    {
        const auto *row = std::ranges::find_if(
            ENDINGS, [&command](const auto &ending) { return command == ending.command; });
        return row == std::end(ENDINGS) ? 0 : row->status;
    }

    static bool has_no_end(const std::string &command)
    {
        return (command.starts_with("stmctl follow") &&
                command.find(" -n ") == std::string::npos) ||
               command == "stmctl watch";
    }

    // Whether it has shown a record: in the file that it writes, or on its output.
    bool has_shown(const std::string &command) const
    {
        const size_t file = command.find(" -o ");
        const std::string name = file == std::string::npos ? "" : command.substr(file + 4);
        const std::string shown =
            read_text(name.empty() ? ".output" : name.substr(0, name.find(' ')));
        return std::ranges::count(shown, '\n') > (name.empty() ? 0 : 1);
    }

    Result run_command(std::string command)
    {
        const size_t optional = command.find(" [FILE]");
        if (optional != std::string::npos) {
            command.erase(optional);
        }
        const std::string in_path = "PATH=" + path("bin") + ":$PATH; ";
        const bool endless = has_no_end(command);
        const pid_t pid =
            start({"bash", "-o", "pipefail", "-c", in_path + (endless ? "exec " : "") + command});
        if (endless) {
            wait_until("a record of " + command, [&] { return has_shown(command); });
            kill(pid, SIGINT);
        }
        return finish(pid);
    }

    Words commands_;
};

TEST_P(DocumentCommands, work_in_their_order_on_one_board)
{
    EXPECT_GE(commands_.size(), GetParam().commands);
    for (const std::string &command : commands_) {
        const Result result = run_command(command);
        EXPECT_EQ(result.status, expected_status(command)) << command << '\n'
                                                           << result.output << result.errors;
    }
}

std::string name_of(const testing::TestParamInfo<Shown> &info)
{
    std::string name = info.param.document;
    std::ranges::replace_if(
        name, [](unsigned char letter) { return std::isalnum(letter) == 0; }, '_');
    return name;
}

INSTANTIATE_TEST_SUITE_P(of, DocumentCommands, testing::ValuesIn(SHOWN), name_of);

} // namespace
