// Help that does not belong to a single command.
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
               "    sudo usermod -aG spi $USER      adds you to it; log in again\n"
               "If the device's group is root, a udev rule assigns it to the group spi:\n"
               "    sudo groupadd -f spi\n"
               "    echo 'SUBSYSTEM==\"spidev\", GROUP=\"spi\", MODE=\"0660\"' |\n"
               "        sudo tee /etc/udev/rules.d/50-spidev.rules\n"
               "    sudo udevadm control --reload && sudo udevadm trigger\n"
               "\n"
               "No such file or directory: the kernel has no such SPI device.\n"
               "    ls /sys/bus/spi/devices         must show spi1.0\n"
               "The board's device tree must enable bus 1 and bind chip select 0 to spidev.\n"
               "\n"
               "Message too long, while synchronising: the driver takes too few bytes at once.\n"
               "    cat /sys/module/spidev/parameters/bufsiz    must be at least 4096\n"
               "Set it where the driver is loaded: spidev.bufsiz=4096 on the kernel's command\n"
               "line, or options spidev bufsiz=4096 in a file in /etc/modprobe.d.\n"
               "\n"
               "In use: only one stmctl at a time talks to the co-processor. --wait waits for\n"
               "the other one to finish. Other programs do not know this lock: end them first.\n"
               "When two programs talk at once, their dialogues mix, and answers change without\n"
               "an error.\n"
               "\n"
               "Another device cannot be selected: the module only opens /dev/spidev1.0.\n"
               "If the board is wired to another bus, make a link with that name:\n"
               "    sudo ln -s spidev0.0 /dev/spidev1.0\n"
               "It lasts until the system restarts; SYMLINK+=\"spidev1.0\" in a udev rule is\n"
               "permanent.\n"
               "\n"
               "SPI mode: the co-processor expects mode 0, and the driver keeps the mode that a\n"
               "program has set until another one is set. In any other mode nothing can be\n"
               "understood: end that program, and set the mode back to 0 or restart the system.\n"
               "\n"
               "To find out which of these applies: stmctl doctor\n"
               "Without a board: virtual-board stmctl state\n"},
    {"status", "The exit status says how a command ended:\n"
               "    0  done; also if the user ended an endless run, or the reader of the output\n"
               "       went away; for losses see stmctl --help losses\n"
               "    1  failed; standard error gives the reason in one sentence\n"
               "    2  the command line is wrong; nothing was started\n"
               "    3  ended by the user before the work was done\n"
               "    4  the device, or the ring's segment, does not exist or cannot be opened\n"
               "doctor exits with 4 if the device cannot be opened, with 1 if anything else is\n"
               "bad, and with 0 if nothing is, even if something is unknown.\n"},
    {"losses", "A record is lost where rel_t has a gap, rejected if its checksum is wrong, and\n"
               "overflowing if more than 190 records wait behind it in the co-processor.\n"
               "A silence is a time in which nothing comes: at least --silence TIME or, if that\n"
               "is not given, two time-outs in a row (one second) in a stream of more than four\n"
               "records a second, otherwise 10 seconds, or 2 seconds with --keep-going and for\n"
               "ring write.\n"
               "\n"
               "Without --keep-going a silence ends the run with status 1, and its cause is\n"
               "reported. With --keep-going the co-processor is asked again after one second,\n"
               "two, four and so on up to a minute, because asking may restart its sampling. If\n"
               "the device goes away, or the application is not running, stmctl waits for it;\n"
               "the mode is never switched. While another program has the device open, nothing\n"
               "is sent, because that would break its dialogue.\n"
               "\n"
               "Everything is counted and reported at the end; --summary FILE also writes it as\n"
               "JSON. With --quiet a successful run reports nothing at its end: losses are then\n"
               "only seen in --summary, or with --fail-on-loss.\n"
               "The exit status with losses:\n"
               "    0  whatever was lost, overflowing or silent, and with --keep-going also\n"
               "       whatever was rejected; with --fail-on-loss: the log is complete\n"
               "    1  the run ended in a silence; a record was rejected in a limited run\n"
               "       without --keep-going; fewer records came than were requested; with\n"
               "       --fail-on-loss: something was lost, rejected or overflowing, rel_t went\n"
               "       back, or there was a silence\n"
               "    3  the user ended a limited run\n"
               "A ring read whose writer has ended normally does not end in a silence.\n"
               "With --from-oldest, records that an earlier writer left in the ring are skipped\n"
               "and do not count as lost.\n"},
    {"stop", "The line \"s\" on standard input, or Ctrl-C, ends a running command. What was\n"
             "started is brought to a clean end, and what was read until then is shown in\n"
             "full. A second Ctrl-C ends stmctl at once.\n"
             "\n"
             "If standard input is not a terminal, only the read-outs (records, follow, adc,\n"
             "raw, watch and ring) read all of it; other commands take nothing but a line \"s\"\n"
             "that comes first. In a script that reads a list from its own standard input,\n"
             "start the read-outs with </dev/null.\n"},
};

constexpr char NO_OTHER_DEVICE[] =
    "the device cannot be selected: the module always opens /dev/spidev1.0; to use another one, "
    "make a link with that name, see stmctl --help access";

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
    return "Numbers are decimal, or hexadecimal with 0x. The line \"s\" or Ctrl-C ends a\n"
           "running command.\n"
           "\n"
           "Examples:\n"
           "  stmctl state\n"
           "  stmctl flash firmware image.bin\n"
           "  stmctl set sampletime 100\n"
           "  stmctl flash --help        help for one command\n"
           "  stmctl --help access       when the device cannot be opened\n"
           "  stmctl --help status       what the exit statuses mean\n"
           "  stmctl --help losses       what is counted, and what a silence is\n"
           "  stmctl --help stop         how to stop a running command\n";
}

std::span<const HelpTopic> help_topics()
{
    return TOPICS;
}

} // namespace stmctl
