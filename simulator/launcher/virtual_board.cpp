// virtual-board: runs a command with a virtual co-processor behind /dev/spidev1.0.
#include "simulator/launcher/help.hpp"
#include "simulator/launcher/launch.hpp"
#include "simulator/launcher/options.hpp"
#include "simulator/launcher/tell.hpp"

#include <cstdio>
#include <cstring>
#include <exception>

namespace
{

int print(const std::string &text)
{
    const bool written = fputs(text.c_str(), stdout) >= 0;
    return written && fflush(stdout) == 0 ? 0 : simulator::OWN_FAILURE;
}

int run(int argc, char **argv)
{
    if (argc > 1 && strcmp(argv[1], simulator::TELL_COMMAND) == 0) {
        const std::string error = simulator::tell_by_hand({argv + 2, argv + argc});
        return error.empty() ? 0 : simulator::complain(error);
    }
    simulator::LaunchOptions options = simulator::parse_options(argc, argv);
    if (!options.error.empty()) {
        return simulator::complain(options.error);
    }
    if (options.help) {
        return print(simulator::help_text());
    }
    if (options.commands) {
        return print(simulator::describe_commands());
    }
    if (!options.completion.empty()) {
        return print(options.completion);
    }
    return simulator::launch(options);
}

} // namespace

int main(int argc, char **argv)
{
    try {
        return run(argc, argv);
    } catch (const std::exception &error) {
        return simulator::complain(error.what());
    }
}
