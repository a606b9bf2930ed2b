// The wait for the co-processor, and the stop line.
#include "link/waiting.hpp"

#include "link/link.hpp"

#include <unistd.h>

#include <cstring>

namespace stm
{

namespace
{

bool find_ready(int32_t bytes, int32_t &ready_at)
{
    const auto *found = static_cast<const uint8_t *>(
        memchr(stm_link.rx_buffer, STM_ACK, static_cast<size_t>(bytes)));
    if (found == nullptr) {
        return false;
    }
    ready_at = static_cast<int32_t>(found - stm_link.rx_buffer);
    return true;
}

} // namespace

// Kept: the operator is asked before the answer is checked, and takes precedence; the answer to the
// last poll can no longer succeed.
Wait wait_until_ready(const Polling &polling, StmPollFn poll, int32_t &ready_at)
{
    for (int polls = 1;; ++polls) {
        if (link_poll_data(polling.bytes) < 0) {
            return Wait::failed;
        }
        if (stop_requested(poll)) {
            return Wait::stopped;
        }
        if (polling.pause_us != 0) {
            usleep(polling.pause_us);
        }
        if (polls == polling.limit) {
            return Wait::timed_out;
        }
        if (find_ready(polling.bytes, ready_at)) {
            return Wait::ready;
        }
    }
}

bool stop_requested(StmPollFn poll)
{
    char line[STM_LINE_SIZE] = {};
    return poll(line) != 0 && strcmp(line, STM_STOP_LINE) == 0;
}

} // namespace stm
