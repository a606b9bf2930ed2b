// virtual-board: runs a command with a virtual co-processor behind /dev/spidev1.0.
#include "simulator/launcher/launch.hpp"
#include "simulator/launcher/options.hpp"

#include <cstdio>
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
