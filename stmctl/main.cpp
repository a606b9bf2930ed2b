// stmctl: the everyday tool for the co-processor.
//
//     words - table of commands - checks - device, locked - operations of the module - sentences
#include "stmctl/command_line/command_line.hpp"
#include "stmctl/commands.hpp"
#include "stmctl/help_topics.hpp"
#include "stmctl/output/output.hpp"
#include "stmctl/process/stop.hpp"

using namespace stmctl;

int main(int argc, char **argv)
{
    prepare_output();
    watch_for_stop(leave_live_line);
    const Program program = {
        .name = "stmctl",
        .summary = "The everyday tool for the measuring board's co-processor.",
        .version = STMCTL_VERSION,
        .commands = commands(),
        .topics = help_topics(),
        .footer = general_footer(),
        .missing_options = missing_options(),
    };
    const ExitStatus status = run_command_line(program, argc, argv);
    return static_cast<int>(finish_output(status));
}
