// The stages of one parameter command at the co-processor's end of the wire:
//
//     idle --command--> announced --poll--> answer --00 00--> reply --filler--> idle
//
// Some have only a reply.
// The command's frame and everything that fits no stage are left to the co-processor.
#pragma once

#include "simulator/board/response.hpp"

#include <cstdint>
#include <span>
#include <string>

namespace simulator
{

class Transaction
{
  public:
    void begin(const Response &response);
    void cancel() { stage_ = Stage::idle; }
    bool is_over() const { return stage_ == Stage::idle; }

    // Whether a poll for data belongs to it, and the answer to such a poll.
    bool is_polled() const { return stage_ == Stage::announced; }
    uint8_t take_poll();

    // Whether an exchange fetches its answer or its reply. What the exchange then receives; a reply
    // may be in the buffer. Returns the words for it.
    bool expects(std::span<const uint8_t> mosi) const;
    std::string give(const Board &board, std::span<const uint8_t> buffer, std::span<uint8_t> miso);

  private:
    enum class Stage : uint8_t { idle, announced, answer, reply };

    std::string give_answer(std::span<uint8_t> miso);

    Response response_;
    Stage stage_ = Stage::idle;
    [[maybe_unused]] uint8_t unused_[3] = {};
};

} // namespace simulator
