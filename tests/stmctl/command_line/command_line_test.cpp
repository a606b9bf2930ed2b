// Goal: how a command ended is its exit status, and why it failed is reported, whatever it throws.
#include "stmctl/command_line/command_line.hpp"

#include "stmctl/process/failure.hpp"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

using namespace stmctl;

namespace
{

template <typename Thrown>
Action declare_throwing(CLI::App &)
{
    return []() -> ExitStatus { throw Thrown(); };
}

Action declare_stopped(CLI::App &)
{
    return [] { return ExitStatus::stopped; };
}

struct NotThere : Failure {
    NotThere() : Failure(ExitStatus::not_there, "it is not there") {}
};

struct Unforeseen : std::runtime_error {
    Unforeseen() : std::runtime_error("nobody has foreseen this") {}
};

constexpr Command COMMANDS[] = {
    {"stopped", "is stopped", "", declare_stopped},
    {"fails", "fails", "", declare_throwing<NotThere>},
    {"breaks", "breaks", "", declare_throwing<Unforeseen>},
};

void expect_end(std::string command, ExitStatus status, const std::string &errors)
{
    const Program program = {"program", "does nothing", "1.0", COMMANDS, {}, ""};
    std::string name = "program";
    char *words[] = {name.data(), command.data(), nullptr};
    testing::internal::CaptureStderr();
    EXPECT_EQ(run_command_line(program, 2, words), status) << command;
    EXPECT_EQ(testing::internal::GetCapturedStderr(), errors) << command;
}

TEST(CommandLine, ends_with_the_status_of_its_command)
{
    expect_end("stopped", ExitStatus::stopped, "");
    expect_end("fails", ExitStatus::not_there, "stmctl: it is not there\n");
}

TEST(CommandLine, reports_what_nobody_has_foreseen_as_a_failure)
{
    expect_end("breaks", ExitStatus::failed, "stmctl: nobody has foreseen this\n");
}

} // namespace
