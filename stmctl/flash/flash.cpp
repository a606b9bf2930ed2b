// flash: writes an image to the co-processor's flash, and reports whether all of it arrived.
#include "stmctl/flash/flash.hpp"

#include "stmctl/command_line/arguments.hpp"
#include "stmctl/command_line/numbers.hpp"
#include "stmctl/flash/download_progress.hpp"
#include "stmctl/flash/image_file.hpp"
#include "stmctl/module/device.hpp"
#include "stmctl/module/diagnosis.hpp"
#include "stmctl/module/mode_change.hpp"
#include "stmctl/module/operation.hpp"
#include "stmctl/module/recovery.hpp"
#include "stmctl/output/counted.hpp"
#include "stmctl/output/output.hpp"
#include "stmctl/output/terminal.hpp"
#include "stmctl/process/failure.hpp"
#include "stmctl/process/input.hpp"
#include "stmctl/process/stop.hpp"

#include <fmt/format.h>

#include <unistd.h>

#include <cstdio>
#include <memory>

namespace stmctl
{

namespace
{

struct Region {
    const char *name;
    const char *words;
    uint32_t address;
    uint32_t size;
    const char *next; // what to do once it is written
};

constexpr uint32_t FLASH_SIZE = 512 * 1024;
constexpr uint32_t BOOTER_SIZE = STM_FLASH_FIRMWARE_ADDR - STM_FLASH_BOOTER_ADDR;
constexpr Region REGIONS[] = {
    {"firmware", "firmware", STM_FLASH_FIRMWARE_ADDR, FLASH_SIZE - BOOTER_SIZE,
     "; stmctl reset starts it"},
    {"booter", "boot loader", STM_FLASH_BOOTER_ADDR, BOOTER_SIZE, ""},
};
constexpr std::chrono::milliseconds PAUSE_BEFORE_RETRY(1000);

struct FlashOptions {
    std::string region;
    std::string file;
    std::string limit;
    std::string retries = "0";
    bool yes = false;
    bool start = false;
    DeviceOptions device;
};

const Region &region_named(const std::string &name)
{
    return name == REGIONS[0].name ? REGIONS[0] : REGIONS[1];
}

// Checks that do not need the image, which may take long to arrive.
void check_words(const FlashOptions &options, const Region &region)
{
    if (region.address != STM_FLASH_BOOTER_ADDR) {
        return;
    }
    if (options.start) {
        throw Failure(ExitStatus::usage, "flash booter: --start is for flash firmware only");
    }
    if (options.file == "-" && !options.yes) {
        throw Failure(ExitStatus::usage, "flash booter: cannot ask for confirmation while the "
                                         "image comes from standard input; use --yes to continue");
    }
}

// A boot loader that does not work leaves no way to load another.
void ask_before_boot_loader(const FlashOptions &options, const ImageFile &image)
{
    if (options.yes) {
        return;
    }
    if (!is_terminal(STDIN_FILENO)) {
        throw Failure(
            ExitStatus::usage,
            "flash booter: cannot ask for confirmation without a terminal; use --yes to continue");
    }
    print(fmt::format("Replace the boot loader with {} ({})? A wrong one leaves no way to load "
                      "another.\nType yes to continue: ",
                      options.file, counted(image.size(), "byte", "bytes")));
    flush_output();
    char answer[16] = {};
    const bool typed = wait_for_input() && fgets(answer, sizeof(answer), stdin) != nullptr;
    if (!typed) {
        print("\n");
    }
    if (!typed || std::string_view(answer) != "yes\n") {
        throw Failure(ExitStatus::stopped,
                      "flash booter: nothing was written: the answer was not yes");
    }
}

// The running download, for the poll callback, which is a plain function.
DownloadSteps *running = nullptr;

// The stop line is kept from the module, which takes it for an acknowledgement here. The only way
// out of a download is to end the process; the co-processor then waits for a new one.
Wish leave_when_stopped()
{
    if (stop_requested()) {
        leave_live_line();
        say(fmt::format("flash incomplete {}: stopped by the user; load the image again",
                        running->place()));
        finish_output(ExitStatus::stopped);
        _exit(static_cast<int>(ExitStatus::stopped));
    }
    return Wish::go_on;
}

struct Download {
    std::string failed; // where and why; empty if the image is in the flash
    std::vector<Report> failures;
    bool timed_out = false;
    double seconds = 0;
};

Download download(ImageFile &image, const Region &region)
{
    DownloadSteps steps(image.size());
    DownloadProgress progress;
    running = &steps;
    const Outcome outcome = perform(
        [&](StmPollFn poll, StmOutputFn output) {
            stm_download_image(image.rewound(), region.address, poll, output);
            return 0;
        },
        [&](const char *text, int) {
            progress.tell(hear(text));
            if (steps.take(text)) {
                progress.show(steps);
            }
        },
        leave_when_stopped);
    progress.end();
    const bool good = steps.is_complete() && outcome.failures.empty();
    return {good ? "" : steps.what_failed(outcome.failures), outcome.failures, outcome.timed_out,
            progress.seconds()};
}

// Why no acknowledgement came. That the boot loader is running is no reason.
std::string cause_of_timeout(const Device &device)
{
    if (device.other_users().processes.empty()) {
        synchronise(); // it may be waiting for the rest of a frame
    }
    const Diagnosis diagnosis = diagnose(device);
    switch (diagnosis.condition) {
    case Condition::boot_loader:
        return "";
    case Condition::application:
        return "; the application is running: the co-processor has restarted";
    default:
        return "; " + diagnosis.words;
    }
}

// Before another attempt the co-processor must drop the frame that it may be waiting for.
void prepare_retry(Recovery &recovery, uint32_t attempt, uint32_t attempts, const Download &last)
{
    say(fmt::format("attempt {} of {} failed {}; trying again", attempt, attempts, last.failed));
    if (!wait_unless_stopped(PAUSE_BEFORE_RETRY) || !recovery.await_link(last.failures)) {
        throw Failure(ExitStatus::stopped,
                      fmt::format("flash incomplete {}; stopped by the user", last.failed));
    }
}

void tell_success(const ImageFile &image, const Region &region, const Download &done,
                  const char *next)
{
    const std::string rate = rate_words(image.size(), done.seconds);
    print(fmt::format("{} of {} written to 0x{:08X} in {:.2f} s{}{}{}\n",
                      counted(image.size(), "byte", "bytes"), region.words, region.address,
                      done.seconds, rate.empty() ? "" : ", ", rate, next));
    flush_output();
    if (output_failed() && status_of_failed_output() != ExitStatus::done) {
        say("flash: all bytes have been written");
    }
}

ExitStatus end_well(const FlashOptions &options, const ImageFile &image, const Region &region,
                    const Download &done)
{
    tell_success(image, region, done, options.start ? "; starting it" : region.next);
    return options.start ? change_mode(stm_reset, "flash --start", APPLICATION) : ExitStatus::done;
}

ExitStatus flash(const FlashOptions &options)
{
    const Region &region = region_named(options.region);
    const uint32_t limit =
        options.limit.empty() ? region.size : parse_number(options.limit, "--limit", 1, UINT32_MAX);
    const uint32_t attempts = 1 + parse_number(options.retries, "--retries", 0, 1000);
    check_words(options, region);
    ImageFile image(options.file, limit);
    if (region.address == STM_FLASH_BOOTER_ADDR) {
        ask_before_boot_loader(options, image);
    }
    Device device(options.device);
    Recovery recovery(device, wait_unless_stopped, say);
    for (uint32_t attempt = 1;; ++attempt) {
        const Download last = download(image, region);
        if (last.failed.empty()) {
            return end_well(options, image, region, last);
        }
        if (attempt == attempts) {
            throw Failure(ExitStatus::failed,
                          fmt::format("flash incomplete {}{}", last.failed,
                                      last.timed_out ? cause_of_timeout(device) : ""));
        }
        prepare_retry(recovery, attempt, attempts, last);
    }
}

} // namespace

Action declare_flash(CLI::App &command)
{
    auto options = std::make_shared<FlashOptions>();
    add_operand(command, "REGION", Presence::required, options->region, "what the image contains",
                one_of({REGIONS[0].name, REGIONS[1].name}));
    add_operand(command, "FILE", Presence::required, options->file,
                "the image; - reads standard input", names_of_files());
    add_flag(command, "-y,--yes", options->yes, "write a boot loader without asking");
    add_flag(command, "--start", options->start, "start the firmware once it is written");
    add_option(command, "--limit", "BYTES", options->limit,
               "largest size in bytes (507904; booter 16384)");
    add_option(command, "--retries", "N", options->retries,
               "number of further attempts after a failure");
    add_device_options(command, options->device);
    add_detail(command);
    return [options] { return flash(*options); };
}

} // namespace stmctl
