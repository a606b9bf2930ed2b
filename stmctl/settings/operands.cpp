// What get and set take.
#include "stmctl/settings/operands.hpp"

#include "stmctl/command_line/nearest.hpp"
#include "stmctl/command_line/numbers.hpp"
#include "stmctl/process/failure.hpp"

#include <fmt/format.h>

namespace stmctl
{

namespace
{

using Words = std::vector<std::string>;

Words operand_names(const Quantity &row)
{
    Words names;
    if (row.has_channel()) {
        names.emplace_back("CHANNEL");
    }
    for (const Argument &argument : {row.first, row.second}) {
        if (argument.name != nullptr) {
            names.emplace_back(argument.name);
        }
    }
    return names;
}

// One overload for each kind of operation.
struct Caller {
    const Values &values;
    StmPollFn poll;
    StmOutputFn output;

    int32_t operator()(PlainQuery call) const { return call(poll, output), 0; }
    int32_t operator()(ChannelQuery call) const { return call(values.channel, poll, output), 0; }
    int32_t operator()(PlainSetting call) const
    {
        return call(static_cast<int>(values.number), poll, output);
    }
    int32_t operator()(WordSetting call) const
    {
        return call(values.channel, static_cast<uint16_t>(values.number), poll, output);
    }
    int32_t operator()(LongSetting call) const
    {
        return call(values.channel, values.number, poll, output);
    }
    int32_t operator()(ScaledSetting call) const
    {
        return call(values.channel, values.first, poll, output);
    }
    int32_t operator()(PairSetting call) const
    {
        return call(values.channel, values.first, values.second, poll, output);
    }
};

} // namespace

const Quantity &row_for(const std::string &name, Direction direction)
{
    if (const Quantity *row = find_quantity(name, direction)) {
        return *row;
    }
    const bool asks = direction == Direction::get;
    const bool other_way = find_quantity(name, asks ? Direction::set : Direction::get) != nullptr;
    const std::string hint = !other_way ? suggestion(name, names_of(direction))
                                        : (asks ? ": it can only be set" : ": it can only be read");
    const char *what = asks ? "unknown query" : "unknown setting";
    throw Failure(ExitStatus::usage,
                  with_reference(fmt::format("{} '{}'{}", what, name, hint), "stmctl list"));
}

Values parse_values(const Quantity &row, const Words &operands)
{
    const Words names = operand_names(row);
    if (operands.size() != names.size()) {
        throw Failure(
            ExitStatus::usage,
            fmt::format("{} takes {}", row.name,
                        names.empty() ? "no operand" : fmt::format("{}", fmt::join(names, " "))));
    }
    Values values;
    size_t at = 0;
    if (row.has_channel()) {
        values.channel = static_cast<int>(
            parse_number(operands[at++], "channel", 0, static_cast<uint32_t>(row.last_channel)));
    }
    if (row.first.name != nullptr && !row.first.hundredths) {
        values.number = parse_number(operands[at], row.first.name, row.first.least, row.first.most);
    } else if (row.first.name != nullptr) {
        values.first = parse_hundredths(operands[at], row.first.name);
    }
    if (row.second.name != nullptr) {
        values.second = parse_hundredths(operands[at + 1], row.second.name);
    }
    return values;
}

std::string full_name(const Quantity &row, int channel)
{
    return row.has_channel() ? fmt::format("{} {}", row.name, channel) : row.name;
}

Outcome call(const Device &device, const std::string &name, const Quantity &row,
             const Values &values)
{
    Outcome outcome = perform([&](StmPollFn poll, StmOutputFn output) {
        return std::visit(Caller{values, poll, output}, row.call);
    });
    device.check(outcome, name);
    return outcome;
}

Outcome call_on_device(const DeviceOptions &options, const Quantity &row, const Values &values)
{
    return call(Device(options), row.name, row, values);
}

void add_values(CLI::App &command, Direction direction, Presence name, const char *operands,
                ValueOptions &options)
{
    add_operand(command, "NAME", name, options.name, "name or code, as in stmctl list",
                some_of(names_of(direction)));
    add_operands(command, "OPERANDS", Presence::optional, options.operands, operands);
    add_device_options(command, options.device);
}

} // namespace stmctl
