// list: the catalogue, a line each.
#include "stmctl/output/output.hpp"
#include "stmctl/settings/catalogue.hpp"
#include "stmctl/settings/settings.hpp"

#include <fmt/format.h>

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

ExitStatus list()
{
    print(line("", "NAME", "CODE", "CHANNEL", "ANSWERS, OR TAKES", "FUNCTION"));
    for (const Quantity &row : catalogue()) {
        const bool asks = row.direction() == Direction::get;
        print(line(asks ? "get" : "set", row.name, fmt::format("0x{:02X}", row.code),
                   row.has_channel() ? fmt::format("0 to {}", row.last_channel) : "",
                   asks ? row.answers : what_it_takes(row), row.function));
    }
    return ExitStatus::done;
}

} // namespace

Action declare_list(CLI::App &)
{
    return list;
}

} // namespace stmctl
