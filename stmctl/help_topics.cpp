// Help that belongs to no single command.
#include "stmctl/help_topics.hpp"

namespace stmctl
{

namespace
{

constexpr HelpTopic TOPICS[] = {
    {"access", "stmctl talks to the co-processor through /dev/spidev1.0.\n"
               "\n"
               "Permission denied: the device belongs to root, or to a group, usually spi.\n"
               "    ls -l /dev/spidev1.0            shows the group\n"
               "    sudo usermod -aG spi $USER      joins it; log in again\n"
               "If the device's group is root, a udev rule gives it to the group spi:\n"
               "    sudo groupadd -f spi\n"
               "    echo 'SUBSYSTEM==\"spidev\", GROUP=\"spi\", MODE=\"0660\"' |\n"
               "        sudo tee /etc/udev/rules.d/50-spidev.rules\n"
               "    sudo udevadm control --reload && sudo udevadm trigger\n"
               "\n"
               "No such file or directory: the kernel has no SPI device there.\n"
               "    ls /sys/bus/spi/devices         must show spi1.0\n"
               "The board's device tree must enable bus 1 and bind chip select 0 to spidev.\n"
               "\n"
               "In use: one stmctl at a time talks to the co-processor. --wait waits for the\n"
               "other one to be done. Other programs do not know this lock: end them first.\n"
               "\n"
               "Without a board: virtual-board stmctl state\n"},
    {"status", "The exit status says what came of a command:\n"
               "    0  done; also an endless run that its user has ended, and a reader of the\n"
               "       output that went away\n"
               "    1  failed; standard error says why, in one sentence\n"
               "    2  the command line makes no sense, nothing was begun\n"
               "    3  ended by the user before the work was done\n"
               "    4  the device, or the ring's segment, is not there or cannot be opened\n"},
    {"stop", "A command that runs is ended by the line \"s\" on standard input or by Ctrl-C.\n"
             "What was begun is brought to a clean end, and what was read until then is\n"
             "shown whole. A second Ctrl-C ends stmctl at once.\n"
             "\n"
             "Of input that is no terminal only the read-outs take more than a line \"s\" that\n"
             "comes first: records, follow, adc, raw, watch and ring. In a script that reads\n"
             "a list from its own standard input, begin them with </dev/null.\n"},
};

} // namespace

const char *general_footer()
{
    return "Numbers are decimal, or hexadecimal behind 0x. The line \"s\" or Ctrl-C ends what "
           "runs.\n"
           "\n"
           "Examples:\n"
           "  stmctl state\n"
           "  stmctl flash firmware image.bin\n"
           "  stmctl set sampletime 100\n"
           "  stmctl flash --help        more about a command\n"
           "  stmctl --help access       when the device cannot be opened\n"
           "  stmctl --help status       what the exit statuses mean\n"
           "  stmctl --help stop         how to end what runs\n";
}

std::span<const HelpTopic> help_topics()
{
    return TOPICS;
}

} // namespace stmctl
