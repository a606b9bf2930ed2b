// Finds the word that a mistyped one was probably meant to be.
#include "stmctl/command_line/nearest.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <vector>

namespace stmctl
{

namespace
{

constexpr size_t MOST_MISTAKES = 2; // and fewer than half of the letters
constexpr size_t LONGEST_TYPED = 64;

// The line of distances after the last two, for one more letter of the typed word.
std::vector<size_t> next_line(std::string_view typed, size_t row, std::string_view meant,
                              const std::vector<size_t> &before, const std::vector<size_t> &last)
{
    std::vector<size_t> line(meant.size() + 1, row);
    for (size_t column = 1; column <= meant.size(); ++column) {
        const bool same = typed[row - 1] == meant[column - 1];
        line[column] =
            std::min({last[column] + 1, line[column - 1] + 1, last[column - 1] + (same ? 0 : 1)});
        const bool swapped = row > 1 && column > 1 && typed[row - 1] == meant[column - 2] &&
                             typed[row - 2] == meant[column - 1];
        if (swapped) {
            line[column] = std::min(line[column], before[column - 2] + 1);
        }
    }
    return line;
}

} // namespace

size_t typing_distance(std::string_view typed, std::string_view meant)
{
    std::vector<size_t> before;
    std::vector<size_t> last(meant.size() + 1);
    for (size_t column = 0; column < last.size(); ++column) {
        last[column] = column;
    }
    for (size_t row = 1; row <= typed.size(); ++row) {
        std::vector<size_t> line = next_line(typed, row, meant, before, last);
        before = std::move(last);
        last = std::move(line);
    }
    return last.back();
}

std::string suggestion(std::string_view typed, std::span<const std::string> names,
                       std::string_view front)
{
    const std::string *nearest = nullptr;
    size_t least = MOST_MISTAKES + 1;
    for (const std::string &name : names) {
        const size_t distance = typed.size() > LONGEST_TYPED ? least : typing_distance(typed, name);
        if (distance < least && 2 * distance < typed.size()) {
            least = distance;
            nearest = &name;
        }
    }
    return nearest == nullptr ? "" : fmt::format("; did you mean {}{}?", front, *nearest);
}

std::string with_reference(std::string_view sentence, std::string_view place)
{
    return fmt::format("{}{} {}", sentence, sentence.ends_with('?') ? " See" : "; see", place);
}

} // namespace stmctl
