// stmctl: the everyday tool for the co-processor.
//
//     words - table of commands - checks - device, locked - operations of the module - sentences
#include "stmctl/command_line/command_line.hpp"
#include "stmctl/process/output.hpp"
#include "stmctl/process/stop.hpp"

int main(int argc, char **argv)
{
    prepare_output();
    watch_for_stop();
    const ExitStatus status = run_command_line(argc, argv);
    return static_cast<int>(finish_output(status));
}
