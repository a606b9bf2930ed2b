// list: shows the catalogue, one line per entry.
#include "stmctl/command_line/arguments.hpp"
#include "stmctl/output/json.hpp"
#include "stmctl/output/output.hpp"
#include "stmctl/settings/catalogue.hpp"
#include "stmctl/settings/settings.hpp"

#include <fmt/format.h>

#include <memory>

namespace stmctl
{

namespace
{

std::string argument_words(const Argument &argument)
{
    if (argument.hundredths) {
        return fmt::format("{} 0 to 655.35", argument.name);
    }
    return fmt::format("{} {} to {}", argument.name, argument.least, argument.most);
}

std::string what_it_takes(const Quantity &row)
{
    if (row.second.name == nullptr) {
        return argument_words(row.first);
    }
    return argument_words(row.first) + ", " + argument_words(row.second);
}

std::string line(std::string_view direction, std::string_view name, std::string_view code,
                 std::string_view channel, std::string_view what, std::string_view function)
{
    return fmt::format("{:<3}  {:<15}  {:<4}  {:<7}  {:<38}  {}\n", direction, name, code, channel,
                       what, function);
}

std::string argument_json(const Argument &argument)
{
    JsonObject object;
    object.add("name", argument.name);
    if (argument.hundredths) {
        object.add("least", argument.least / 100.0, 2);
        object.add("most", argument.most / 100.0, 2);
    } else {
        object.add("least", int64_t{argument.least});
        object.add("most", int64_t{argument.most});
    }
    return object.json();
}

std::string row_json(const Quantity &row)
{
    const bool asks = row.direction() == Direction::get;
    JsonObject object;
    object.add("direction", asks ? "get" : "set");
    object.add("name", row.name);
    object.add("code", fmt::format("0x{:02X}", row.code));
    if (row.has_channel()) {
        object.add("last_channel", int64_t{row.last_channel});
    } else {
        object.add_null("last_channel");
    }
    if (asks) {
        object.add("answers", row.answers.words);
    } else {
        JsonArray arguments;
        arguments.add_json(argument_json(row.first));
        if (row.second.name != nullptr) {
            arguments.add_json(argument_json(row.second));
        }
        object.add_json("takes", arguments.json());
    }
    object.add("function", row.function);
    return object.json();
}

ExitStatus list_json()
{
    JsonArray array;
    for (const Quantity &row : catalogue()) {
        array.add_json(row_json(row));
    }
    print(array.json() + '\n');
    return ExitStatus::done;
}

ExitStatus list()
{
    print(line("", "NAME", "CODE", "CHANNEL", "ANSWERS, OR TAKES", "FUNCTION"));
    for (const Quantity &row : catalogue()) {
        const bool asks = row.direction() == Direction::get;
        print(line(asks ? "get" : "set", row.name, fmt::format("0x{:02X}", row.code),
                   row.has_channel() ? fmt::format("0 to {}", row.last_channel) : "",
                   asks ? row.answers.words : what_it_takes(row), row.function));
    }
    return ExitStatus::done;
}

} // namespace

Action declare_list(CLI::App &command)
{
    auto json = std::make_shared<bool>(false);
    add_flag(command, "--json", *json, "as JSON: an array of objects");
    return [json] { return *json ? list_json() : list(); };
}

} // namespace stmctl
