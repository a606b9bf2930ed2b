// The mode in which the co-processor runs, and how to change it.
#include "stmctl/module/mode_change.hpp"

#include "link/stm_com_funcs.h"
#include "stmctl/module/diagnosis.hpp"
#include "stmctl/module/operation.hpp"
#include "stmctl/output/output.hpp"
#include "stmctl/process/failure.hpp"
#include "stmctl/process/stop.hpp"

#include <fmt/format.h>

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
                      fmt::format("{}: sent, but the {} is not running: the mode is {} ({})", name,
                                  mode_name(wanted), mode, mode_name(mode)));
    }
    print(fmt::format("{} ({})\n", mode_name(mode), mode));
    return ExitStatus::done;
}

} // namespace stmctl
