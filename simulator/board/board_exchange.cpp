// The virtual co-processor as a function.
#include "simulator/board/board_exchange.hpp"

#include "simulator/board/conversation.hpp"

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
    const int rate = board.behaviour.rate;
    while (state.lives < board.restarts.size() && board.restarts[state.lives].span.from <= now) {
        const Fault &fault = board.restarts[state.lives];
        state.readout.advance_to(fault.span.from, rate);
        report.lives.push_back(Conversation(board, state, report.note).restart(fault));
    }
    state.readout.advance_to(now, rate);
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
