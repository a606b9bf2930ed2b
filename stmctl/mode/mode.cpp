// The mode that the co-processor runs in.
#include "stmctl/mode/mode.hpp"

#include "link/stm_com_funcs.h"
#include "stmctl/module/device.hpp"
#include "stmctl/module/operation.hpp"
#include "stmctl/output/output.hpp"
#include "stmctl/process/failure.hpp"
#include "stmctl/process/stop.hpp"

#include <fmt/format.h>

#include <memory>

namespace stmctl
{

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

uint8_t ask_for_byte(uint8_t query, const std::string &name)
{
    uint8_t answer = 0;
    check(perform([&](StmPollFn, StmOutputFn) { return stm_query_byte(query, &answer); }), name);
    return answer;
}

void fail_without_answer(const char *name, uint8_t answer, const Device &device)
{
    throw Failure(ExitStatus::failed, fmt::format("{} unknown: the answer is {}, {}", name, answer,
                                                  odd_mode_words(answer, device)));
}

ExitStatus change_mode(int (*send)(), const char *name, uint8_t wanted)
{
    constexpr int LOOKS = 10; // 100 ms each
    check(perform([&](StmPollFn, StmOutputFn) { return send(); }), name);
    uint8_t mode = 0;
    for (int look = 0; look < LOOKS && mode != wanted; ++look) {
        if (stop_requested()) {
            throw Failure(ExitStatus::stopped,
                          fmt::format("{}: sent, but stopped before it was confirmed", name));
        }
        mode = ask_for_byte(MODE_QUERY, fmt::format("{}: sent, but not confirmed", name));
    }
    if (mode != wanted) {
        throw Failure(ExitStatus::failed,
                      fmt::format("{}: sent, but the {} does not run: the mode is {} ({})", name,
                                  mode_name(wanted), mode, mode_name(mode)));
    }
    print(fmt::format("{} ({})\n", mode_name(mode), mode));
    return ExitStatus::done;
}

Action declare_on_device(CLI::App &command,
                         const std::function<ExitStatus(const Device &device)> &work)
{
    auto options = std::make_shared<DeviceOptions>();
    add_device_options(command, *options);
    return [options, work] {
        const Device device(*options);
        return work(device);
    };
}

} // namespace stmctl
