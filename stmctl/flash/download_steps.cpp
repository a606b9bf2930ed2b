// Where a download stands, read from the module's texts.
#include "stmctl/flash/download_steps.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <cstdlib>

namespace stmctl
{

namespace
{

constexpr uint32_t BLOCK_SIZE = 1024;

struct Refusal {
    std::string_view text;
    const char *sentence;
};

constexpr Refusal REFUSALS[] = {
    {"SPI Bus inactive\n", "the bus is inactive, no co-processor drives it"},
    {"Checksum error\n", "checksum error, the co-processor got other bytes than were sent"},
    {"Address error\n", "address error, the co-processor does not take this address or size"},
    {"SPI timeout\n", "time-out, no acknowledge within 16.5 seconds"},
};

// The number behind the start of a text, if it starts so.
std::optional<long> number_behind(std::string_view text, std::string_view start)
{
    if (!text.starts_with(start)) {
        return std::nullopt;
    }
    return strtol(std::string(text.substr(start.size())).c_str(), nullptr, 10);
}

} // namespace

bool DownloadSteps::take(std::string_view text)
{
    for (const Refusal &refusal : REFUSALS) {
        if (text == refusal.text) {
            refusal_ = refusal.sentence;
        }
    }
    if (text.starts_with("Filesize: ")) {
        step_ = Step::header;
    } else if (const auto block = number_behind(text, "Transmitting datablock ")) {
        begin_block(static_cast<uint32_t>(*block));
        return true;
    } else if (const auto total = number_behind(text, "Transmitted data: ")) {
        total_ = *total;
        acknowledged_ = static_cast<uint32_t>(*total);
        return true;
    }
    return false;
}

// Its text comes once it is on the wire: those before it have been acknowledged.
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
    return fmt::format("at block {}, after {} of {} bytes", block_, acknowledged_, size_);
}

std::string DownloadSteps::reason(const std::vector<Report> &failures) const
{
    if (!failures.empty()) {
        return failures.front().sentence();
    }
    if (!refusal_.empty()) {
        return refusal_;
    }
    return fmt::format("the file gave {} of its {} bytes", total_.value_or(0), size_);
}

std::string DownloadSteps::what_failed(const std::vector<Report> &failures) const
{
    DownloadSteps at = *this;
    // A block that could not be sent is the one behind the last that was.
    if (!failures.empty() && failures.front().text == "SPI send data") {
        at.begin_block(step_ == Step::block ? block_ + 1 : 0);
    }
    return fmt::format("{}: {}", at.place(), reason(failures));
}

} // namespace stmctl
