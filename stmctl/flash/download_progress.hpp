// Shows on standard error how far a download has got: a bar on a terminal, otherwise a line for
// each tenth, and nothing if quiet.
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

    // Reports each step as it is done, if verbose.
    void tell(const Heard &heard) const;

    // Leaves the bar in place, so that something can be printed below it.
    void end();

    double seconds() const;

  private:
    void show_bar(const DownloadSteps &steps) const;
    void show_tenths(const DownloadSteps &steps);

    std::chrono::steady_clock::time_point begin_;
    bool on_terminal_;
    uint32_t shown_tenths_ = 0;
};

// "65.1 KiB/s", or "312 B/s"; empty where it would be meaningless.
std::string rate_words(uint32_t bytes, double seconds);

} // namespace stmctl
