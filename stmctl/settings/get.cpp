// get: asks for a value.
#include "stmctl/output/output.hpp"
#include "stmctl/output/printable.hpp"
#include "stmctl/settings/operands.hpp"
#include "stmctl/settings/settings.hpp"

namespace stmctl
{

namespace
{

ExitStatus get(const ValueOptions &options)
{
    const Quantity &row = row_for(options.name, Direction::get);
    const Outcome outcome = call_on_device(options, row, parse_values(row, options.operands));
    for (const std::string &text : outcome.texts) {
        print(printable_line(text));
    }
    return ExitStatus::done;
}

} // namespace

Action declare_get(CLI::App &command)
{
    return declare_values(command, Direction::get, "the channel, where there are several", get);
}

} // namespace stmctl
