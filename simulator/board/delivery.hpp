// A block on its way to a host that polls with twenty bytes. What does not fit into the poll that
// finds it comes in the exchanges that follow:
//
//     .. .. 55 LL LL data... --filler--> rest of the data
//     .. .. .. .. .. ..   55 --00 00--> LL LL --filler--> data
//     .. .. .. .. ..   55 LL --00--> LL --filler--> data
#pragma once

#include "simulator/measuring/record_source.hpp"

#include <cstdint>
#include <span>
#include <string>

namespace simulator
{

inline constexpr size_t STREAM_POLL_SIZE = 20;

class Delivery
{
  public:
    // Starts in the answer to a poll, at an index. The block's bytes are at the beginning of the
    // buffer until it is over. Returns the words for it, as give does.
    std::string begin(const Block &block, size_t index, std::span<const uint8_t> buffer,
                      std::span<uint8_t> miso);
    void cancel() { sent_ = end_; }
    bool is_over() const { return sent_ >= end_; }

    // Whether an exchange fetches what comes next, and what it receives.
    bool expects(std::span<const uint8_t> mosi) const;
    std::string give(std::span<const uint8_t> buffer, std::span<uint8_t> miso);

  private:
    bool is_in_header() const;
    size_t missing() const;
    void advance(std::span<const uint8_t> buffer, std::span<uint8_t> miso);

    Block block_;
    uint16_t end_ = 0;  // of what is sent, header included
    uint16_t sent_ = 0; // header included; beyond the end if the poll has shown more
};

} // namespace simulator
