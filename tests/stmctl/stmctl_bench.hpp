// A workbench with stmctl on it.
#pragma once

#include "tests/tool/workbench.hpp"

#include <string>

class StmctlBench : public Workbench
{
  protected:
    static std::string program() { return TOOL_STMCTL; }

    Words on_board_with(const Words &options, const Words &arguments)
    {
        Words command = {program()};
        command.insert(command.end(), arguments.begin(), arguments.end());
        return on_board(options, command);
    }

    // With counted time; options are those of virtual-board.
    Result stmctl(const Words &arguments, const Words &options = {})
    {
        return run(on_board_with(options, arguments));
    }

    Result with_fault(const std::string &fault, const Words &arguments)
    {
        return stmctl(arguments, {"--fault", fault});
    }

    // Through a shell, with what follows the command: redirections or a pipe.
    Result in_shell(const Words &arguments, const std::string &behind, const Words &options = {})
    {
        return run({"bash", "-c", quoted(on_board_with(options, arguments)) + " " + behind});
    }

    // A script for bash that waits for events:
    //     await WORDS FILE    until the words are in the file
    //     polls N             until the transcript has N lines more than now
    // Each gives up eventually, and says so, so that no test hangs.
    Result in_script(const std::string &text)
    {
        return run({"bash", "-c",
                    "await_command() {\n"
                    "  local i\n"
                    "  for ((i = 0; i < 6000; ++i)); do \"$@\" && return; sleep 0.05; done\n"
                    "  echo \"in vain: $*\"\n"
                    "}\n"
                    "await() { await_command grep -qs -e \"$1\" \"$2\"; }\n"
                    "lines() { cat .transcript 2>/dev/null | wc -l; }\n"
                    "has_lines() { [ \"$(lines)\" -ge \"$1\" ]; }\n"
                    "polls() { await_command has_lines $(($(lines) + $1)); }\n" +
                        text});
    }

    // A command on a board in real time, as one word of such a script.
    std::string really(const Words &options, const Words &arguments)
    {
        Words command = {program()};
        command.insert(command.end(), arguments.begin(), arguments.end());
        return quoted(on_board_in_real_time(options, command));
    }

    static std::string quoted(const Words &words)
    {
        std::string line;
        for (const std::string &word : words) {
            line += "'" + word + "' ";
        }
        return line;
    }

    // The output of a command that succeeds.
    std::string says(const Words &arguments, const Words &options = {})
    {
        const Result result = stmctl(arguments, options);
        EXPECT_EQ(result.status, 0);
        EXPECT_EQ(result.errors, "");
        return result.output;
    }

    // A command that fails, and its only message.
    static void expect_failure(const Result &result, int status, const std::string &sentence)
    {
        EXPECT_EQ(result.status, status) << sentence;
        EXPECT_EQ(result.output, "");
        EXPECT_EQ(result.errors, "stmctl: " + sentence + "\n");
    }
};
