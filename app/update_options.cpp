// The option table of update, its usage text and its refusals.
#include "app/update_options.hpp"

#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace
{

struct OptionName {
    const char *text;
    UpdateAction action;
};

constexpr OptionName OPTION_NAMES[] = {
    {"-booter", ACTION_BOOTER}, {"-firmware", ACTION_FIRMWARE}, {"-ver", ACTION_VERSION},
    {"-state", ACTION_STATE},   {"-start", ACTION_START},       {"-reset", ACTION_RESET},
};

// Kept: the default files that this text names are not the ones that are opened.
constexpr char USAGE[] =
    "Usage: update <parameter> [<filename>]\n"
    "\t<parameter>:\n"
    "\t -firmware: load new firmware (default: tarvo.bin)\n"
    "\t -booter:   load new booter (default: booter.bin)\n"
    "\t -start:    start the bootloader mode\n"
    "\t -reset:    finish the bootloader mode and start the application\n"
    "\t -ver:      print the bootloader version \n"
    "\t -state:    show the mode the stm32 is running\n"
    "\t            0: unknown\n"
    "\t            1: bootloader mode\n"
    "\t            2: application mode\n"
    "\t<filename>: a customer specific filename instead of the default filename";

[[noreturn]] void print_usage()
{
    puts(USAGE);
    exit(1);
}

UpdateAction find_action(const char *text)
{
    for (const OptionName &option : OPTION_NAMES) {
        if (strcmp(text, option.text) == 0) {
            return option.action;
        }
    }
    return ACTION_INVALID;
}

bool loads_image(UpdateAction action)
{
    return action == ACTION_FIRMWARE || action == ACTION_BOOTER;
}

void take_file_name(UpdateOptions &options, const char *name)
{
    const size_t length = strlen(name);
    if (length >= FILE_NAME_SIZE) {
        fprintf(stderr, "update: the file name has %zu characters, at most %d are possible\n",
                length, FILE_NAME_SIZE - 1);
        exit(1);
    }
    memcpy(options.file_name, name, length + 1);
    options.has_file_name = true;
}

} // namespace

UpdateOptions parse_options(int argc, char **argv)
{
    if (argc <= 1) {
        puts("No parameter!");
        print_usage();
    }
    UpdateOptions options = {};
    options.action = find_action(argv[1]);
    if (options.action == ACTION_INVALID) {
        puts("Wrong parameter");
        print_usage();
    }
    // Kept: a name is used only if it is the only argument after the option; with more, none is.
    // Options that load nothing ignore it, however long it is.
    if (argc == 3 && loads_image(options.action)) {
        take_file_name(options, argv[2]);
    }
    return options;
}
