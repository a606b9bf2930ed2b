// set: changes a setting.
#include "stmctl/output/output.hpp"
#include "stmctl/settings/operands.hpp"
#include "stmctl/settings/settings.hpp"

#include <fmt/format.h>

namespace stmctl
{

namespace
{

std::string channel_words(const Quantity &row, const Values &values)
{
    return row.has_channel() ? fmt::format(" {}", values.channel) : "";
}

// What has gone out: of a number in hundredths, not all digits may have.
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

ExitStatus set(const ValueOptions &options)
{
    const Quantity &row = row_for(options.name, Direction::set);
    const Values values = parse_values(row, options.operands);
    const Outcome outcome = call_on_device(options, row, values);
    print(fmt::format("{}{} = {} (answer {})\n", row.name, channel_words(row, values),
                      sent_words(row, values), outcome.result));
    return ExitStatus::done;
}

} // namespace

Action declare_set(CLI::App &command)
{
    return declare_values(command, Direction::set,
                          "the channel, where there are several, and the value or two", set);
}

} // namespace stmctl
