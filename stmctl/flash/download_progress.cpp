// Shows how far a download is.
#include "stmctl/flash/download_progress.hpp"

#include "stmctl/output/counted.hpp"
#include "stmctl/output/output.hpp"
#include "stmctl/output/terminal.hpp"

#include <fmt/format.h>

#include <unistd.h>

#include <algorithm>

namespace stmctl
{

DownloadProgress::DownloadProgress()
    : begin_(std::chrono::steady_clock::now()), on_terminal_(is_terminal(STDOUT_FILENO))
{
}

double DownloadProgress::seconds() const
{
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - begin_).count();
}

void DownloadProgress::show(const DownloadSteps &steps)
{
    if (on_terminal_) {
        show_bar(steps);
    } else {
        show_tenths(steps);
    }
}

void DownloadProgress::show_bar(const DownloadSteps &steps) const
{
    const double done = steps.acknowledged();
    const double all = steps.size();
    const double left = done > 0 ? seconds() * (all - done) / done : 0;
    std::string behind =
        fmt::format("  {} of {}", steps.acknowledged(), counted(steps.size(), "byte", "bytes"));
    if (done > 0) {
        behind += fmt::format("  {}  {} left", rate_words(steps.acknowledged(), seconds()),
                              clock_words(left));
    }
    constexpr int LEAST = 20;
    constexpr int MOST = 50;
    const int columns = terminal_width() - 1 - static_cast<int>(behind.size());
    show_live_line(progress_bar(done / all, std::clamp(columns, LEAST, MOST)) + behind);
}

void DownloadProgress::show_tenths(const DownloadSteps &steps)
{
    const uint64_t tenths = uint64_t{steps.acknowledged()} * 10 / steps.size();
    if (tenths > shown_tenths_) {
        shown_tenths_ = static_cast<uint32_t>(tenths);
        print(fmt::format("{:3} %  {} of {}\n", tenths * 10, steps.acknowledged(),
                          counted(steps.size(), "byte", "bytes")));
        flush_output();
    }
}

void DownloadProgress::end()
{
    leave_live_line();
}

std::string rate_words(uint32_t bytes, double seconds)
{
    constexpr double KIB = 1024.0;
    if (seconds <= 0 || bytes < seconds) {
        return "";
    }
    const double rate = bytes / seconds;
    return rate < KIB ? fmt::format("{:.0f} B/s", rate) : fmt::format("{:.1f} KiB/s", rate / KIB);
}

} // namespace stmctl
