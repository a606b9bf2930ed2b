// Tracks where a download is, from the module's texts.
#pragma once

#include "stmctl/module/voice.hpp"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace stmctl
{

class DownloadSteps
{
  public:
    explicit DownloadSteps(uint32_t size) : size_(size) {}

    // Takes a text from the output callback. Returns whether it acknowledges more bytes.
    bool take(std::string_view text);

    uint32_t size() const { return size_; }
    uint32_t acknowledged() const { return acknowledged_; }

    // Whether all bytes have been acknowledged, as far as the texts show.
    bool is_complete() const { return total_ == static_cast<long>(size_); }

    // "at block 3, after 3072 of 5000 bytes"
    std::string place() const;

    // "at block 3, after 3072 of 5000 bytes: checksum error, ..."
    std::string what_failed(const std::vector<Report> &failures) const;

  private:
    enum class Step { mode, header, block };

    void take_refusal(Event event);
    void begin_block(uint32_t number);
    std::string reason(const std::vector<Report> &failures) const;

    uint32_t size_;
    uint32_t acknowledged_ = 0;
    uint32_t block_ = 0;
    Step step_ = Step::mode;
    std::optional<long> total_;
    std::string refusal_;
};

} // namespace stmctl
