// How the value of a setting and the number that its query answers are related.
#include "stmctl/settings/wire.hpp"

#include <fmt/format.h>

#include <algorithm>

namespace stmctl
{

namespace
{

constexpr uint64_t lowest(int bits)
{
    return (uint64_t{1} << bits) - 1;
}

int bits_of(const Argument &argument)
{
    return argument.most > lowest(16) ? 32 : 16;
}

} // namespace

std::optional<uint32_t> value_of_bits(const Argument &argument, int64_t number)
{
    const int bits = bits_of(argument);
    const auto most = static_cast<int64_t>(lowest(bits));
    const int64_t least = -(most / 2) - 1;
    if (number < least || number > most) {
        return std::nullopt;
    }
    const auto value = static_cast<uint32_t>(static_cast<uint64_t>(number) & lowest(bits));
    const bool taken = value >= argument.least && value <= argument.most;
    return taken ? std::optional(value) : std::nullopt;
}

int64_t asked_back(const Answer &answer, uint32_t value)
{
    const auto number = static_cast<int64_t>(value & lowest(answer.bits));
    const int64_t half = int64_t{1} << (answer.bits - 1);
    return answer.is_signed && number >= half ? number - 2 * half : number;
}

bool answers_value(const Argument &argument, const Answer &answer, uint32_t value, int64_t number)
{
    const uint64_t common = lowest(std::min(bits_of(argument), answer.bits));
    return ((static_cast<uint64_t>(number) ^ value) & common) == 0;
}

std::string why_asked_back_otherwise(const Answer &answer, uint32_t value)
{
    const int64_t back = asked_back(answer, value);
    if (back == value) {
        return "";
    }
    return fmt::format("{} reads back as {}: the answer is {} {}-bit number", value, back,
                       answer.is_signed ? "a signed" : "an unsigned", answer.bits);
}

} // namespace stmctl
