// virtual-board: runs a command with the virtual co-processor behind /dev/spidev1.0.
#include "simulator/launcher/launch.hpp"
#include "simulator/launcher/options.hpp"

#include <cstdio>

int main(int argc, char **argv)
{
    simulator::LaunchOptions options = simulator::parse_options(argc, argv);
    if (!options.error.empty()) {
        fprintf(stderr, "virtual-board: %s\n", options.error.c_str());
        return simulator::OWN_FAILURE;
    }
    if (options.help) {
        fputs(simulator::help_text().c_str(), stdout);
        return 0;
    }
    return simulator::launch(options);
}
