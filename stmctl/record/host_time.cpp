// The host's time.
#include "stmctl/record/host_time.hpp"

#include <fmt/format.h>

#include <chrono>

namespace stmctl
{

std::string host_time()
{
    constexpr int64_t SECOND = 1'000'000; // in microseconds
    const auto now = std::chrono::system_clock::now().time_since_epoch();
    const int64_t us = std::chrono::duration_cast<std::chrono::microseconds>(now).count();
    return fmt::format("{}.{:06}", us / SECOND, us % SECOND);
}

} // namespace stmctl
