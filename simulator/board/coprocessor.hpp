// A virtual co-processor with a state of its own.
#pragma once

#include "simulator/board/board.hpp"
#include "simulator/board/board_exchange.hpp"
#include "simulator/board/board_state.hpp"
#include "simulator/board/counts.hpp"

#include <chrono>
#include <cstdint>
#include <span>
#include <string>

namespace simulator
{

class Coprocessor
{
  public:
    Coprocessor(BoardBytes bytes, BoardIdentity identity, Behaviour behaviour);

    // The time of the exchanges to come, from any origin. What is due by then happens.
    void advance_to(std::chrono::nanoseconds now);

    // Clocks the bytes of one exchange in, and as many out. mosi and miso have the same size.
    void exchange(std::span<const uint8_t> mosi, std::span<uint8_t> miso);

    // From now on, what an exchange does to the flash is done by settle, or by the next exchange.
    void delay_flash() { delays_flash_ = true; }
    bool changes_flash() const { return state_.flash_change.kind != FlashChange::Kind::none; }
    void settle() { board_settle(board_, state_); }

    // How the co-processor understood the last exchange, in a few words.
    const std::string &note() const { return report_.note; }

    Mode mode() const { return state_.mode; }
    void set_identity(BoardIdentity identity);

    // The power comes anew.
    void power_on(BoardIdentity identity);

    // Its settings; those that it has from now on, with the answers that it is given; and the same for
    // a board that goes on with what it has received.
    CommandValues settings() const { return state_.application.settings(board_); }
    uint32_t received_settings() const { return state_.application.received(); }
    void load(CommandValues settings, CommandValues answers);
    void go_on_with(CommandValues settings, CommandValues answers);

    // What became of the records that it measured. A life ends with a restart.
    Tally tally() const
    {
        return {report_.lives, state_.past, state_.readout.counts(), state_.lives};
    }

    // The state with which another one like it goes on in the same way.
    const BoardState &state() const { return state_; }
    void set_state(const BoardState &state) { state_ = state; }

  private:
    Board board_;
    BoardReport report_;
    BoardState state_;
    bool delays_flash_ = false;
};

} // namespace simulator
