// The virtual co-processor as a function.
#include "simulator/board/board_exchange.hpp"

#include "simulator/board/conversation.hpp"

#include <utility>

namespace simulator
{

BoardState board_power_on(const Board &board, BoardIdentity identity)
{
    BoardState state;
    state.mode = identity.mode;
    state.boot_loader_version = identity.boot_loader_version;
    state.deafness = Deafness(board.behaviour.faults);
    std::string unheard;
    Conversation(board, state, unheard).died_at(ALWAYS);
    return state;
}

void board_advance(const Board &board, BoardState &state, std::chrono::nanoseconds now,
                   BoardReport &report)
{
    const auto restart = [&](std::chrono::nanoseconds time, Mode mode) {
        state.readout.advance_to(time, board.behaviour.rate);
        report.lives.push_back(Conversation(board, state, report.note).restart(time, mode));
    };
    while (state.timed_restarts < board.restarts.size() &&
           board.restarts[state.timed_restarts].span.from <= now) {
        const Fault &fault = board.restarts[state.timed_restarts++];
        restart(fault.span.from, static_cast<Mode>(fault.value));
    }
    if (state.told_restart != NO_RESTART) {
        restart(now, told_mode(std::exchange(state.told_restart, NO_RESTART)));
    }
    state.readout.advance_to(now, board.behaviour.rate);
    state.now_ns = now.count();
}

void board_exchange(const Board &board, BoardState &state, std::chrono::nanoseconds now,
                    std::span<const uint8_t> mosi, std::span<uint8_t> miso, BoardReport &report)
{
    board_settle(board, state);
    board_advance(board, state, now, report);
    Conversation(board, state, report.note).exchange(mosi, miso);
}

void board_settle(const Board &board, BoardState &state)
{
    if (state.flash_change.kind != FlashChange::Kind::none) {
        make(state.flash_change, board.bytes.flash);
        state.flash_change.kind = FlashChange::Kind::none;
    }
}

} // namespace simulator
