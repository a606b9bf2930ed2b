// This program's end of the board that it shares with others.
#include "simulator/preload/turn.hpp"

#include "simulator/preload/program.hpp"
#include "simulator/preload/this_run.hpp"

#include <algorithm>
#include <cstring>

namespace simulator
{

namespace
{

KeptState open_folder()
{
    KeptState kept;
    check(kept.open(run_options().directory));
    return kept;
}

// A program that was told nothing about the board uses it as the others do.
void share_options(const Power &power)
{
    const std::string others = power.options;
    if (others == shared_words(run_options())) {
        return;
    }
    RunOptions shared = run_options();
    if (!has_usual_board(shared) || !take_shared_words(shared, others)) {
        check(run_options().directory +
              ": another program uses this board with other options; give the same, or none");
    }
    take_options(shared);
}

void set_options(Power &power)
{
    const std::string words = shared_words(run_options());
    if (words.size() >= sizeof(power.options)) {
        check("the options of the board are longer than programs can share");
    }
    memcpy(power.options, words.c_str(), words.size() + 1);
}

// Takes the board's lock. With the first call of a program it becomes one of those that use the board.
SharedState::Joined join_programs(SharedState &shared)
{
    const SharedState::Joined joined = shared.take();
    if (joined == SharedState::Joined::too_many) {
        check(run_options().directory + ": too many programs use this board");
    }
    if (joined == SharedState::Joined::now) {
        share_options(shared.power());
    }
    return joined;
}

Intrusion load_intrusion()
{
    Intrusion intrusion;
    check(intrusion.load(run_options().behaviour.faults));
    return intrusion;
}

} // namespace

OwnBoard::OwnBoard()
    : kept(open_folder()), joined(join_programs(shared)),
      coprocessor(kept.bytes(), {}, run_options().behaviour), intrusion(load_intrusion()),
      device(
          coprocessor, run_options().behaviour,
          [this](std::chrono::nanoseconds time) { pass_wire_time(time); },
          [this](const Exchange &exchange) { note_exchange(exchange, time()); })
{
    coprocessor.delay_flash();
}

std::chrono::nanoseconds OwnBoard::time() const
{
    return now() - power_on;
}

// An exchange ends when the wire's time has passed since the start of the call. The delay of
// one exchange is not subtracted from the next: a real wire cannot catch up either.
void OwnBoard::pass_wire_time(std::chrono::nanoseconds time) const
{
    if (counts_time()) {
        program_clock.advance(time);
    } else {
        sleep_until(call_begin + time);
    }
}

OwnBoard &board()
{
    static auto *const instance = [] {
        auto *fresh = new OwnBoard;
        const Turn first(*fresh, fresh->joined);
        return fresh;
    }();
    return *instance;
}

Turn::Turn(OwnBoard &board) : Turn(board, join_programs(board.shared)) {}

Turn::Turn(OwnBoard &board, SharedState::Joined joined) : board_(board)
{
    if (joined == SharedState::Joined::first) {
        begin_power();
    } else if (joined == SharedState::Joined::now) {
        join_power();
    } else {
        take_state();
    }
}

// A program that was killed may have left something that is in no file yet.
void Turn::begin_power()
{
    if (board_.shared.has_state()) {
        check(board_.kept.go_on(board_.coprocessor));
        take_state();
        board_.coprocessor.settle();
        check(board_.kept.save(board_.coprocessor, board_.device));
    }
    board_.power_on = now();
    board_.shared.power().on_ns = board_.power_on.count();
    board_.shared.power().is_spent = counts_time() ? 0 : 1;
    set_options(board_.shared.power());
    board_.shared.saved() = {};
    board_.coprocessor.power_on({});
    board_.device.set_state({});
    board_.intrusion.set_played(0);
    check(board_.kept.begin());
    check(board_.kept.load(board_.coprocessor, board_.device));
}

void Turn::join_power()
{
    check(board_.kept.go_on(board_.coprocessor));
    check(board_.kept.go_on_counting());
    board_.left = now();
    take_state();
}

void Turn::take_state()
{
    if (board_.shared.is_news()) {
        if (!board_.shared.has_state()) {
            check(run_options().directory + "/state: damaged while the board is in use");
        }
        const RunningState &state = board_.shared.state();
        board_.coprocessor.set_state(state.board);
        board_.device.set_state(state.driver);
        board_.intrusion.set_played(static_cast<size_t>(state.intruded));
        find_time(std::chrono::nanoseconds(state.time_ns));
    }
}

// Programs that spend their time have one clock. One that counts it moves the board's time on by what
// has passed for it since its last call; the board's time never goes back.
void Turn::find_time(std::chrono::nanoseconds time_of_state)
{
    board_.power_on = board_.left - time_of_state;
    if (!counts_time()) {
        const std::chrono::nanoseconds on(board_.shared.power().on_ns);
        board_.power_on =
            board_.shared.power().is_spent ? std::min(on, now() - time_of_state) : board_.power_on;
    }
}

Turn::~Turn()
{
    const bool changes_flash = board_.coprocessor.changes_flash();
    board_.left = now();
    board_.shared.commit({board_.time().count(), board_.intrusion.played(),
                          board_.coprocessor.state(), board_.device.state()});
    if (changes_flash) {
        board_.coprocessor.settle();
        board_.shared.note_flash();
    }
    check(board_.kept.save(board_.coprocessor, board_.device));
    board_.shared.leave();
}

void begin_call(OwnBoard &board)
{
    board.call_begin = now();
    const std::chrono::nanoseconds time = board.time();
    board.intrusion.play_until(time, board.coprocessor);
    board.coprocessor.advance_to(time);
    board.device.advance_to(time);
}

} // namespace simulator
