// This program's end of the board that it shares with others, and the calls in which it has the board to
// itself. Nothing here is ever destroyed: a program may use its device until its very last instruction.
#pragma once

#include "simulator/board/coprocessor.hpp"
#include "simulator/driver/intrusion.hpp"
#include "simulator/driver/spi_device.hpp"
#include "simulator/store/kept_state.hpp"

#include <chrono>

namespace simulator
{

struct OwnBoard {
    OwnBoard();

    // Since its power came.
    std::chrono::nanoseconds time() const;

    KeptState kept;
    SharedState &shared = kept.shared();
    SharedState::Joined joined;             // decides on the options of all that follows
    std::chrono::nanoseconds power_on{0};   // on this program's clock
    std::chrono::nanoseconds left{0};       // when the last call ended, on this program's clock
    std::chrono::nanoseconds call_begin{0}; // of the call being handled
    bool has_opened = false; // the device; before that, nothing is newer than the files
    Coprocessor coprocessor;
    Intrusion intrusion;
    SpiDevice device;

  private:
    void pass_wire_time(std::chrono::nanoseconds time) const;
};

// The board, with its power on.
OwnBoard &board();

// A call of this program, during which the board is its alone. It finds the board as the last program
// has left it.
class Turn
{
  public:
    explicit Turn(OwnBoard &board);
    Turn(OwnBoard &board, SharedState::Joined joined); // with the lock
    ~Turn();
    Turn(const Turn &) = delete;
    Turn &operator=(const Turn &) = delete;

  private:
    void begin_power();
    void join_power();
    void take_state();
    void find_time(std::chrono::nanoseconds time_of_state);

    OwnBoard &board_;
};

// Whatever was due before this call happens first, in order of time.
void begin_call(OwnBoard &board);

} // namespace simulator
