// Shows how far a download has got.
#include "stmctl/flash/download_progress.hpp"

#include "stmctl/output/counted.hpp"
#include "stmctl/output/live_fields.hpp"
#include "stmctl/output/output.hpp"
#include "stmctl/output/terminal.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <climits>
#include <vector>

namespace stmctl
{

namespace
{

std::string share_words(const DownloadSteps &steps)
{
    return fmt::format("{} of {}", steps.acknowledged(), counted(steps.size(), "byte", "bytes"));
}

} // namespace

DownloadProgress::DownloadProgress()
    : begin_(std::chrono::steady_clock::now()), on_terminal_(is_on_terminal(Screen::errors))
{
}

double DownloadProgress::seconds() const
{
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - begin_).count();
}

void DownloadProgress::show(const DownloadSteps &steps)
{
    if (detail() == Detail::quiet) {
        return;
    }
    if (on_terminal_) {
        show_bar(steps);
    } else {
        show_tenths(steps);
    }
}

void DownloadProgress::show_bar(const DownloadSteps &steps) const
{
    constexpr int LEAST = 20;
    constexpr int MOST = 50;
    const double done = steps.acknowledged();
    const double all = steps.size();
    std::vector<LiveField> fields;
    fields.reserve(4);
    fields.push_back({1, progress_bar(done / all, LEAST)});
    fields.push_back({4, share_words(steps)});
    if (done > 0) {
        fields.push_back({3, rate_words(steps.acknowledged(), seconds())});
        fields.push_back({2, clock_words(seconds() * (all - done) / done) + " left"});
    }
    const int columns = width_of(Screen::errors);
    const auto behind = fitted_line(fields, INT_MAX).size() - fields[0].words.size();
    const int left = columns - static_cast<int>(behind);
    fields[0].words = progress_bar(done / all, std::clamp(left, LEAST, MOST));
    show_live_line(Screen::errors, fitted_line(fields, columns));
}

void DownloadProgress::show_tenths(const DownloadSteps &steps)
{
    const uint64_t tenths = uint64_t{steps.acknowledged()} * 10 / steps.size();
    if (tenths > shown_tenths_) {
        shown_tenths_ = static_cast<uint32_t>(tenths);
        pass_on(fmt::format("{:3} %  {}\n", tenths * 10, share_words(steps)));
    }
}

void DownloadProgress::tell(const Heard &heard) const
{
    if (detail() != Detail::verbose) {
        return;
    }
    const std::string time = fmt::format("flash: after {:.3f} s", seconds());
    switch (heard.event) {
    case Event::image_begun:
        say(time + " the boot loader accepted the command");
        break;
    case Event::block_sent:
        say(fmt::format("{} block {} sent, all before it acknowledged", time, heard.number));
        break;
    case Event::image_ended:
        say(fmt::format("{} all {} bytes acknowledged", time, heard.number));
        break;
    default:
        break;
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
