// Tracks where a download is, from the module's texts.
#include "stmctl/flash/download_steps.hpp"

#include "stmctl/output/counted.hpp"

#include <fmt/format.h>

#include <algorithm>

namespace stmctl
{

namespace
{

constexpr uint32_t BLOCK_SIZE = 1024;

struct Refusal {
    Event event;
    const char *sentence;
};

constexpr Refusal REFUSALS[] = {
    {Event::bus_inactive, "the bus is inactive (no co-processor drives it)"},
    {Event::checksum_error,
     "checksum error (the co-processor received other bytes than were sent)"},
    {Event::address_error, "address error (the co-processor does not accept this address or size)"},
    {Event::timed_out, "time-out (no acknowledgement within 16.5 seconds)"},
};

} // namespace

bool DownloadSteps::take(std::string_view text)
{
    const Heard heard = hear(text);
    switch (heard.event) {
    case Event::image_begun:
        step_ = Step::header;
        return false;
    case Event::block_sent:
        begin_block(static_cast<uint32_t>(heard.number));
        return true;
    case Event::image_ended:
        total_ = heard.number;
        acknowledged_ = static_cast<uint32_t>(heard.number);
        return true;
    default:
        take_refusal(heard.event);
        return false;
    }
}

void DownloadSteps::take_refusal(Event event)
{
    const auto *found = std::ranges::find(REFUSALS, event, &Refusal::event);
    if (found != std::end(REFUSALS)) {
        refusal_ = found->sentence;
    }
}

// Its text comes once it has been sent: the blocks before it have been acknowledged.
void DownloadSteps::begin_block(uint32_t number)
{
    step_ = Step::block;
    block_ = number;
    acknowledged_ = std::min(number * BLOCK_SIZE, size_);
}

std::string DownloadSteps::place() const
{
    switch (step_) {
    case Step::mode:
        return "at the mode command";
    case Step::header:
        return "at the header";
    case Step::block:
        break;
    }
    return fmt::format("at block {}, after {} of {}", block_, acknowledged_,
                       counted(size_, "byte", "bytes"));
}

std::string DownloadSteps::reason(const std::vector<Report> &failures) const
{
    if (!failures.empty()) {
        return failures.front().sentence();
    }
    if (!refusal_.empty()) {
        return refusal_;
    }
    return fmt::format("only {} of the file's {} were sent", total_.value_or(0),
                       counted(size_, "byte", "bytes"));
}

std::string DownloadSteps::what_failed(const std::vector<Report> &failures) const
{
    DownloadSteps at = *this;
    // A block that could not be sent is the one after the last that was.
    if (!failures.empty() && failures.front().is_block_not_sent()) {
        at.begin_block(step_ == Step::block ? block_ + 1 : 0);
    }
    return fmt::format("{}: {}", at.place(), reason(failures));
}

} // namespace stmctl
