// get and set: the catalogue at work.
#include "stmctl/command_line/arguments.hpp"
#include "stmctl/command_line/command.hpp"
#include "stmctl/command_line/numbers.hpp"
#include "stmctl/module/device.hpp"
#include "stmctl/module/operation.hpp"
#include "stmctl/process/failure.hpp"
#include "stmctl/process/output.hpp"
#include "stmctl/process/printable.hpp"
#include "stmctl/values/catalogue.hpp"

#include <fmt/format.h>

#include <memory>

namespace
{

using Words = std::vector<std::string>;

struct ValueOptions {
    std::string name;
    Words operands;
    DeviceOptions device;
};

// What the operands say, checked against the row: the module itself lets some of them pass that
// are far out of range.
struct Values {
    int channel = 0;
    uint32_t number = 0;
    float first = 0;
    float second = 0;
};

const Quantity &row_for(const std::string &name, Direction direction)
{
    if (const Quantity *row = find_quantity(name, direction)) {
        return *row;
    }
    const bool asks = direction == Direction::get;
    const bool other_way = find_quantity(name, asks ? Direction::set : Direction::get) != nullptr;
    throw Failure(ExitStatus::usage,
                  fmt::format("{} '{}'{}; see stmctl list", asks ? "no query" : "no setting", name,
                              other_way
                                  ? (asks ? ", it can only be set" : ", it can only be asked for")
                                  : ""));
}

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

Outcome call_on_device(const ValueOptions &options, const Quantity &row, const Values &values)
{
    const Device device(options.device);
    Outcome outcome = perform([&](StmPollFn poll, StmOutputFn output) {
        return std::visit(Caller{values, poll, output}, row.call);
    });
    check(outcome, row.name);
    return outcome;
}

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

ExitStatus get(const ValueOptions &options)
{
    const Quantity &row = row_for(options.name, Direction::get);
    const Outcome outcome = call_on_device(options, row, parse_values(row, options.operands));
    for (const std::string &text : outcome.texts) {
        print(printable_line(text));
    }
    return ExitStatus::done;
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

Action declare_values(CLI::App &command, Direction direction, const char *operands,
                      ExitStatus (*work)(const ValueOptions &))
{
    auto options = std::make_shared<ValueOptions>();
    add_operand(command, "NAME", Presence::required, options->name,
                "what, by its name or code in stmctl list", some_of(names_of(direction)));
    add_operands(command, "OPERANDS", Presence::optional, options->operands, operands);
    add_device_options(command, options->device);
    return [options, work] { return work(*options); };
}

} // namespace

Action declare_get(CLI::App &command)
{
    return declare_values(command, Direction::get, "the channel, where there are several", get);
}

Action declare_set(CLI::App &command)
{
    return declare_values(command, Direction::set,
                          "the channel, where there are several, and the value or two", set);
}
