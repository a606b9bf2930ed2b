// The stages of one parameter command at the co-processor's end of the wire:
//
//     idle --command--> announced --poll--> answer --00 00--> reply --filler--> idle
//
// Some have only a reply.
// The command's frame and everything that fits no stage are left to the co-processor.
#pragma once

#include "simulator/board/application.hpp"

#include <cstdint>
#include <span>
#include <string>

namespace simulator
{

class Transaction
{
  public:
    void begin(Response response);
    void cancel() { stage_ = Stage::idle; }
    bool is_over() const { return stage_ == Stage::idle; }

    // Whether a poll for data belongs to it, and the answer to such a poll.
    bool is_polled() const { return stage_ == Stage::announced; }
    uint8_t take_poll();

    // Whether an exchange fetches its answer or its reply, and what that exchange receives.
    bool expects(std::span<const uint8_t> mosi) const;
    void give(std::span<uint8_t> miso);

    const std::string &note() const { return note_; }

  private:
    enum class Stage { idle, announced, answer, reply };

    void give_answer(std::span<uint8_t> miso);
    size_t reply_size() const;

    Stage stage_ = Stage::idle;
    Response response_;
    std::string note_;
};

} // namespace simulator
