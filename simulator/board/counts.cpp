// What became of the records of a board.
#include "simulator/board/counts.hpp"

#include "simulator/words/text.hpp"

#include <cinttypes>

namespace simulator
{

namespace
{

template <uint64_t Counts::*number>
uint64_t sum(const Tally &tally)
{
    return tally.past.*number + tally.present.*number;
}

uint64_t restarts(const Tally &tally)
{
    return tally.lives;
}

uint64_t last_number(const Tally &tally)
{
    return tally.present.measured;
}

} // namespace

const CountRow COUNT_TABLE[COUNT_ROWS] = {
    {"measured", sum<&Counts::measured>},
    {"delivered", sum<&Counts::delivered>},
    {"begun", sum<&Counts::begun>},
    {"overrun", sum<&Counts::overrun>},
    {"discarded", sum<&Counts::discarded>},
    {"buffered", sum<&Counts::buffered>},
    {"blocks", sum<&Counts::blocks>},
    {"restarts", restarts},
    {"rel_t", last_number},
};

Counts &Counts::operator+=(const Counts &other)
{
    measured += other.measured;
    delivered += other.delivered;
    begun += other.begun;
    overrun += other.overrun;
    discarded += other.discarded;
    buffered += other.buffered;
    blocks += other.blocks;
    return *this;
}

std::string describe_counts(const Tally &tally)
{
    std::string lines;
    for (const CountRow &row : COUNT_TABLE) {
        lines += text("%-*s%*" PRIu64 "\n", COUNT_NAME_WIDTH, row.name, COUNT_WIDTH, row.of(tally));
    }
    return lines;
}

std::string name_life_columns()
{
    return "life seconds measured delivered begun overrun discarded blocks\n";
}

std::string describe_life(int number, const Life &life)
{
    const int64_t microseconds = life.end.count() / 1000;
    const Counts &counts = life.counts;
    return text("%d %" PRId64 ".%06" PRId64 " %" PRIu64 " %" PRIu64 " %" PRIu64 " %" PRIu64
                " %" PRIu64 " %" PRIu64 "\n",
                number, microseconds / 1'000'000, microseconds % 1'000'000, counts.measured,
                counts.delivered, counts.begun, counts.overrun, counts.discarded, counts.blocks);
}

} // namespace simulator
