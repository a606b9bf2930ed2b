// Shows how far a download is, on standard error: a bar on a terminal, a line for each tenth
// otherwise, and nothing if quiet.
#pragma once

#include "stmctl/flash/download_steps.hpp"

#include <chrono>

namespace stmctl
{

class DownloadProgress
{
  public:
    DownloadProgress();

    void show(const DownloadSteps &steps);

    // Says which step is done, if much is to be said.
    void tell(const Heard &heard) const;

    // Leaves the bar standing, so that something can be said below it.
    void end();

    double seconds() const;

  private:
    void show_bar(const DownloadSteps &steps) const;
    void show_tenths(const DownloadSteps &steps);

    std::chrono::steady_clock::time_point begin_;
    bool on_terminal_;
    uint32_t shown_tenths_ = 0;
};

// "65.1 KiB/s", or "312 B/s"; empty where that says nothing.
std::string rate_words(uint32_t bytes, double seconds);

} // namespace stmctl
