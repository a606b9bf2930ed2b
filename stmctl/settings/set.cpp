// set: changes a setting.
#include "stmctl/command_line/numbers.hpp"
#include "stmctl/output/output.hpp"
#include "stmctl/settings/operands.hpp"
#include "stmctl/settings/sent.hpp"
#include "stmctl/settings/settings.hpp"
#include "stmctl/settings/wire.hpp"

#include <fmt/format.h>

#include <memory>

namespace stmctl
{

namespace
{

void tell_cut(const Argument &argument, const std::string &typed, float value)
{
    if (has_more_than_hundredths(typed)) {
        remark(fmt::format("{}: {} is sent in hundredths, as {:.2f}", argument.name, typed,
                           stm_scale100(value) / 100.0));
    }
}

// Warns of values that are not kept as typed; they are still sent.
void tell_inexact(const ValueOptions &options, const Quantity &row, const Values &values)
{
    if (row.first.hundredths) {
        const std::string *typed = &options.operands.back();
        if (row.second.name != nullptr) {
            tell_cut(row.first, *(typed - 1), values.first);
            tell_cut(row.second, *typed, values.second);
        } else {
            tell_cut(row.first, *typed, values.first);
        }
        return;
    }
    const Quantity *query = find_quantity(row.name, Direction::get);
    const std::string why =
        query == nullptr ? "" : why_asked_back_otherwise(query->answers, values.number);
    if (!why.empty()) {
        remark(fmt::format("{}: {}", full_name(row, values.channel), why));
    }
}

ExitStatus set(const ValueOptions &options)
{
    const Quantity &row = row_for(options.name, Direction::set);
    const Values values = parse_values(row, options.operands);
    tell_inexact(options, row, values);
    const Outcome outcome = call_on_device(options.device, row, values);
    print(sent_line(row, values, outcome.result));
    return ExitStatus::done;
}

} // namespace

Action declare_set(CLI::App &command)
{
    auto options = std::make_shared<ValueOptions>();
    add_values(command, Direction::set, Presence::required,
               "the channel, if any, and one or two values", *options);
    return [options] { return set(*options); };
}

} // namespace stmctl
