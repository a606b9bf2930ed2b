// The only table of all settings and queries. get, set, list, their checks and the completions are
// generated from it.
#pragma once

#include "link/stm_com_funcs.h"

#include <span>
#include <string>
#include <variant>
#include <vector>

namespace stmctl
{

enum class Direction { get, set };

// A value that a setting takes.
struct Argument {
    const char *name; // null where there is none
    uint32_t least;
    uint32_t most;
    bool hundredths; // multiplied by 100 before sending; the range is that of the number sent
};

// What a query gives.
struct Answer {
    const char *words;
    int bits; // of a number; 0 for a text
    bool is_signed;

    bool is_text() const { return bits == 0; }
};

// The module's operations, by what they take.
using PlainQuery = void (*)(StmPollFn, StmOutputFn);
using ChannelQuery = void (*)(int, StmPollFn, StmOutputFn);
using PlainSetting = int32_t (*)(int, StmPollFn, StmOutputFn);
using WordSetting = int32_t (*)(int, uint16_t, StmPollFn, StmOutputFn);
using LongSetting = int32_t (*)(int, uint32_t, StmPollFn, StmOutputFn);
using ScaledSetting = int32_t (*)(int, float, StmPollFn, StmOutputFn);
using PairSetting = int32_t (*)(int, float, float, StmPollFn, StmOutputFn);
using Call = std::variant<PlainQuery, ChannelQuery, PlainSetting, WordSetting, LongSetting,
                          ScaledSetting, PairSetting>;

inline constexpr int NO_CHANNEL = -1;

struct Quantity {
    const char *name; // shared by a setting and the query that answers it
    uint8_t code;
    int last_channel; // the first is 0; or NO_CHANNEL
    Argument first;
    Argument second;
    Answer answers; // of a query
    Call call;
    const char *function;

    bool has_channel() const { return last_channel != NO_CHANNEL; }
    Direction direction() const { return first.name == nullptr ? Direction::get : Direction::set; }
};

std::span<const Quantity> catalogue();

// By name, or by code as in "0x06". Null if there is none in this direction.
const Quantity *find_quantity(const std::string &name, Direction direction);

std::vector<std::string> names_of(Direction direction);

} // namespace stmctl
