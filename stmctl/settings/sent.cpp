// How a setting was sent.
#include "stmctl/settings/sent.hpp"

#include <fmt/format.h>

namespace stmctl
{

namespace
{

std::string sent_words(const Quantity &row, const Values &values)
{
    if (!row.first.hundredths) {
        return fmt::format("{}", values.number);
    }
    std::string words = fmt::format("{:.2f}", stm_scale100(values.first) / 100.0);
    if (row.second.name != nullptr) {
        words += fmt::format(" {:.2f}", stm_scale100(values.second) / 100.0);
    }
    return words;
}

} // namespace

std::string sent_line(const Quantity &row, const Values &values, int32_t answer)
{
    return fmt::format("{} = {} (answer {})\n", full_name(row, values.channel),
                       sent_words(row, values), answer);
}

} // namespace stmctl
