// A virtual co-processor with a state of its own.
#include "simulator/board/coprocessor.hpp"

#include <utility>

namespace simulator
{

Coprocessor::Coprocessor(BoardBytes bytes, BoardIdentity identity, Behaviour behaviour)
    : board_(bytes, std::move(behaviour)), state_(board_power_on(board_, identity))
{
}

void Coprocessor::advance_to(std::chrono::nanoseconds now)
{
    board_advance(board_, state_, now, report_);
}

void Coprocessor::exchange(std::span<const uint8_t> mosi, std::span<uint8_t> miso)
{
    board_exchange(board_, state_, std::chrono::nanoseconds(state_.now_ns), mosi, miso, report_);
    if (!delays_flash_) {
        settle();
    }
}

void Coprocessor::set_identity(BoardIdentity identity)
{
    state_.mode = identity.mode;
    state_.boot_loader_version = identity.boot_loader_version;
}

void Coprocessor::power_on(BoardIdentity identity)
{
    state_ = board_power_on(board_, identity);
    report_ = {};
}

void Coprocessor::load(CommandValues settings, CommandValues answers)
{
    go_on_with(std::move(settings), std::move(answers));
    state_.application.load();
}

void Coprocessor::go_on_with(CommandValues settings, CommandValues answers)
{
    board_.settings = std::move(settings);
    board_.answers = std::move(answers);
}

} // namespace simulator
