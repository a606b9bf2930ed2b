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
               "Message too long, while synchronising: the driver takes too little at once.\n"
               "    cat /sys/module/spidev/parameters/bufsiz    must be 4096 at least\n"
               "It is set where the driver is loaded: spidev.bufsiz=4096 on the kernel's\n"
               "command line, or options spidev bufsiz=4096 in a file of /etc/modprobe.d.\n"
               "\n"
               "In use: one stmctl at a time talks to the co-processor. --wait waits for the\n"
               "other one to be done. Other programs do not know this lock: end them first.\n"
               "What two programs say gets mixed, and answers change without a failure.\n"
               "\n"
               "Another device cannot be chosen: the module opens /dev/spidev1.0 and no other.\n"
               "Where the board is wired to another bus, a link of that name leads there:\n"
               "    sudo ln -s spidev0.0 /dev/spidev1.0\n"
               "It lasts until the system restarts; in a udev rule, SYMLINK+=\"spidev1.0\" lasts.\n"
               "\n"
               "SPI mode: the co-processor expects mode 0, and the driver keeps the mode that a\n"
               "program has set until it is set anew. Nothing can be understood in another one:\n"
               "end that program, and set it back to 0 or restart the system.\n"
               "\n"
               "What of all that is wrong: stmctl doctor\n"
               "Without a board: virtual-board stmctl state\n"},
    {"status", "The exit status says what came of a command:\n"
               "    0  done; also an endless run that its user has ended, and a reader of the\n"
               "       output that went away; losses are told, see stmctl --help losses\n"
               "    1  failed; standard error says why, in one sentence\n"
               "    2  the command line makes no sense, nothing was begun\n"
               "    3  ended by the user before the work was done\n"
               "    4  the device, or the ring's segment, is not there or cannot be opened\n"
               "doctor ends in 4 where the device cannot be opened, in 1 where something else\n"
               "is bad, and in 0 where nothing is, even if something is unknown.\n"},
    {"losses", "Records are lost where rel_t has a gap, rejected where their checksum is\n"
               "wrong, overflowing where more than 190 wait behind them in the co-processor.\n"
               "A silence is a time in which nothing came: --silence TIME, or, unless\n"
               "that is given, two time-outs in a row (a second) in a stream of more than\n"
               "four records a second, else 10 seconds, with --keep-going and for ring write\n"
               "2.\n"
               "\n"
               "Without --keep-going a silence ends the run in status 1, with its cause.\n"
               "With it the co-processor is asked again, after a second, two, four and so\n"
               "on, at most a minute: asking may restart its sampling. A device that goes\n"
               "away is waited for, and so is an application that does not run: the mode is\n"
               "never switched. While another program has the device open, nothing is sent,\n"
               "for that would break its dialogue.\n"
               "\n"
               "All of it is counted and said at the end, with --summary FILE also as JSON.\n"
               "With --quiet the end of a run that is done says nothing: --fail-on-loss and\n"
               "--summary tell of losses then.\n"
               "The exit status with losses:\n"
               "    0  whatever was lost, overflowed or silent on the way, and with\n"
               "       --keep-going what was rejected; with --fail-on-loss: the log is whole\n"
               "    1  the run ended in a silence; a record was rejected in a limited run\n"
               "       without --keep-going; fewer came than were asked for; with\n"
               "       --fail-on-loss: something was lost, rejected or overflowing, rel_t went\n"
               "       back, or there was a silence\n"
               "    3  a limited run was ended by its user\n"
               "A ring read whose writer has ended as it should does not end in a silence.\n"
               "Behind --from-oldest, what an earlier writer has left in the ring is no loss:\n"
               "it is left out.\n"},
    {"stop", "A command that runs is ended by the line \"s\" on standard input or by Ctrl-C.\n"
             "What was begun is brought to a clean end, and what was read until then is\n"
             "shown whole. A second Ctrl-C ends stmctl at once.\n"
             "\n"
             "Of input that is no terminal only the read-outs take more than a line \"s\" that\n"
             "comes first: records, follow, adc, raw, watch and ring. In a script that reads\n"
             "a list from its own standard input, begin them with </dev/null.\n"},
};

constexpr char NO_OTHER_DEVICE[] =
    "the device cannot be chosen: the module opens /dev/spidev1.0 and no other; a link of that "
    "name leads to another one, see stmctl --help access";

constexpr MissingOption MISSING_OPTIONS[] = {
    {"--device", NO_OTHER_DEVICE},
    {"-d", NO_OTHER_DEVICE},
    {"-D", NO_OTHER_DEVICE},
};

} // namespace

std::span<const MissingOption> missing_options()
{
    return MISSING_OPTIONS;
}

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
           "  stmctl --help losses       what is counted, and what a silence is\n"
           "  stmctl --help stop         how to end what runs\n";
}

std::span<const HelpTopic> help_topics()
{
    return TOPICS;
}

} // namespace stmctl
