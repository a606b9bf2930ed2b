// A virtual co-processor as far as it stays the same while it runs.
#include "simulator/board/board.hpp"

#include <utility>

namespace simulator
{

Board::Board(BoardBytes its_bytes, Behaviour its_behaviour)
    : bytes(its_bytes), behaviour(std::move(its_behaviour)),
      restarts(faults_by_time(behaviour.faults, FaultKind::restart)),
      silences(behaviour.faults, FaultKind::silent_spell)
{
}

Measuring Board::measuring() const
{
    return {static_cast<uint32_t>(behaviour.seed), behaviour.rate, behaviour.header_index,
            behaviour.faults};
}

const std::string *find_answer(const Board &board, uint8_t code, int place)
{
    const auto found = board.answers.find({code, place});
    return found == board.answers.end() ? nullptr : &found->second;
}

std::string_view answer_of(const Board &board, uint8_t code)
{
    if (const std::string *given = find_answer(board, code, NO_PLACE)) {
        return *given;
    }
    return find_command(code)->default_answer;
}

} // namespace simulator
