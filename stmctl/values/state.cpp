// state, version, start and reset: the mode that the co-processor runs in.
#include "stmctl/command_line/command.hpp"
#include "stmctl/module/device.hpp"
#include "stmctl/module/operation.hpp"
#include "stmctl/process/failure.hpp"
#include "stmctl/process/output.hpp"

#include <fmt/format.h>

#include <memory>

namespace
{

constexpr uint8_t MODE_QUERY = 0x23;
constexpr uint8_t VERSION_QUERY = 0x91;
constexpr uint8_t BOOT_LOADER = 1;
constexpr uint8_t APPLICATION = 2;
constexpr uint8_t SILENT_LINE = 0x00;
constexpr uint8_t UNDRIVEN_LINE = 0xFF;

uint8_t query(uint8_t command, const std::string &name)
{
    uint8_t answer = 0;
    check(perform([&](StmPollFn, StmOutputFn) { return stm_query_byte(command, &answer); }), name);
    return answer;
}

const char *mode_name(uint8_t mode)
{
    switch (mode) {
    case BOOT_LOADER:
        return "boot loader";
    case APPLICATION:
        return "application";
    default:
        return "unknown";
    }
}

// What an answer is when nobody gives one.
[[noreturn]] void fail_without_answer(const char *name, uint8_t answer)
{
    const char *why = answer == SILENT_LINE     ? "nothing answers"
                      : answer == UNDRIVEN_LINE ? "nobody drives the line"
                                                : "that is no mode";
    throw Failure(ExitStatus::failed,
                  fmt::format("{} unknown: the answer is {}, {}", name, answer, why));
}

ExitStatus show_state()
{
    const uint8_t mode = query(MODE_QUERY, "state");
    if (mode != BOOT_LOADER && mode != APPLICATION) {
        fail_without_answer("state", mode);
    }
    print(fmt::format("{} ({})\n", mode_name(mode), mode));
    return ExitStatus::done;
}

// The co-processor sends the minor number; the major number is always 1.
ExitStatus show_version()
{
    const uint8_t minor = query(VERSION_QUERY, "version");
    if (minor == SILENT_LINE || minor == UNDRIVEN_LINE) {
        fail_without_answer("version", minor);
    }
    print(fmt::format("boot loader 1.{} ({})\n", minor, minor));
    return ExitStatus::done;
}

// The commands have no answer: only the mode tells whether they were understood.
ExitStatus change_mode(int (*command)(), const char *name, uint8_t wanted)
{
    constexpr int LOOKS = 10; // 100 ms each
    check(perform([&](StmPollFn, StmOutputFn) { return command(); }), name);
    uint8_t mode = 0;
    for (int look = 0; look < LOOKS && mode != wanted; ++look) {
        if (stop_requested()) {
            throw Failure(ExitStatus::stopped,
                          fmt::format("{}: sent, but stopped before it was confirmed", name));
        }
        mode = query(MODE_QUERY, fmt::format("{}: sent, but not confirmed", name));
    }
    if (mode != wanted) {
        throw Failure(ExitStatus::failed,
                      fmt::format("{}: sent, but the {} does not run: the mode is {} ({})", name,
                                  mode_name(wanted), mode, mode_name(mode)));
    }
    print(fmt::format("{} ({})\n", mode_name(mode), mode));
    return ExitStatus::done;
}

Action on_device(CLI::App &command, const std::function<ExitStatus()> &work)
{
    auto options = std::make_shared<DeviceOptions>();
    add_device_options(command, *options);
    return [options, work] {
        const Device device(*options);
        return work();
    };
}

} // namespace

Action declare_state(CLI::App &command)
{
    return on_device(command, show_state);
}

Action declare_version(CLI::App &command)
{
    return on_device(command, show_version);
}

Action declare_start(CLI::App &command)
{
    return on_device(command,
                     [] { return change_mode(stm_start_bootloader, "start", BOOT_LOADER); });
}

Action declare_reset(CLI::App &command)
{
    return on_device(command, [] { return change_mode(stm_reset, "reset", APPLICATION); });
}
