// update: loads firmware or a boot loader into the co-processor, and switches or shows its mode.
//
//     arguments - SIGINT handler - open the link - one operation - close the link - exit
//
// Kept: the exit status is 0 after any operation that was started, whatever its outcome.
#include "app/update_options.hpp"
#include "link/stm_com_funcs.h"

#include <csignal>
#include <cstdio>
#include <cstdlib>

namespace
{

int console_poll(char *line)
{
    line[0] = '\0';
    return 0;
}

int console_output(const char *text, int)
{
    return printf("%s", text);
}

void sigint_handler(int)
{
    // The point is to end at once: the exit releases what the interrupted call held.
    // NOLINTBEGIN(bugprone-signal-handler,cert-sig30-c)
    puts("\nClean up...");
    puts("Program is shut down now");
    exit(1);
    // NOLINTEND(bugprone-signal-handler,cert-sig30-c)
}

void install_sigint_handler()
{
    struct sigaction action = {};
    action.sa_handler = sigint_handler;
    sigemptyset(&action.sa_mask);
    if (sigaction(SIGINT, &action, nullptr) == -1) {
        perror("sigaction");
        exit(1);
    }
}

// Kept: each download has its own wording.
void report_missing_image(const UpdateOptions &options)
{
    const bool firmware = options.action == ACTION_FIRMWARE;
    if (firmware && options.has_file_name) {
        printf("Can not open source file '%s'\n", options.file_name);
    } else if (firmware) {
        puts("Can not open source file 'STM32_Firmware.bin'");
    } else if (options.has_file_name) {
        printf("Cannot open sourcefile '%s'\n", options.file_name);
    } else {
        puts("Cannot open sourcefile 'STM32_Booter.bin'");
    }
}

// Kept: a missing image is reported only now, after the link has been opened and synchronised.
void load_image(const UpdateOptions &options, const char *default_name, uint32_t address)
{
    FILE *image = fopen(options.has_file_name ? options.file_name : default_name, "rb");
    if (image == nullptr) {
        report_missing_image(options);
        exit(1);
    }
    stm_download_image(image, address, console_poll, console_output);
    // Kept: the stream stays open; the process ends after this operation.
}

void run_action(const UpdateOptions &options)
{
    switch (options.action) {
    case ACTION_FIRMWARE:
        load_image(options, "./STM32_Firmware.bin", STM_FLASH_FIRMWARE_ADDR);
        break;
    case ACTION_BOOTER:
        load_image(options, "./STM32_Booter.bin", STM_FLASH_BOOTER_ADDR);
        break;
    case ACTION_VERSION:
        stm_print_booter_version(console_poll, console_output);
        break;
    case ACTION_STATE:
        stm_print_state(console_poll, console_output);
        break;
    case ACTION_START:
        stm_start_bootloader();
        break;
    case ACTION_RESET:
        stm_reset();
        break;
    case ACTION_INVALID:
        break; // parse_options never returns it
    }
}

} // namespace

int main(int argc, char **argv)
{
    const UpdateOptions options = parse_options(argc, argv);
    install_sigint_handler();
    stm_open();
    run_action(options);
    stm_close();
    return 0;
}
