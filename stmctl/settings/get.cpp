// get: reads a value, or all of them.
#include "stmctl/output/json.hpp"
#include "stmctl/output/output.hpp"
#include "stmctl/output/printable.hpp"
#include "stmctl/settings/readings.hpp"
#include "stmctl/settings/settings.hpp"

#include <fmt/format.h>

#include <memory>

namespace stmctl
{

namespace
{

struct GetOptions : ValueOptions {
    bool all = false;
    bool json = false;
};

ExitStatus get_one(const GetOptions &options)
{
    const Quantity &row = row_for(options.name, Direction::get);
    const Values values = parse_values(row, options.operands);
    const Outcome outcome = call_on_device(options.device, row, values);
    for (std::string text : outcome.texts) {
        if (!options.json) {
            print(printable_line(text));
            continue;
        }
        if (text.ends_with('\n')) {
            text.pop_back();
        }
        print(Reading{row, values.channel, text}.json() + '\n');
    }
    return ExitStatus::done;
}

// A query that is not answered is reported and left out, as long as the application is running.
// Lines are printed one by one; an array is printed whole or not at all.
ExitStatus get_all(const GetOptions &options)
{
    const Device device(options.device);
    ExitStatus status = ExitStatus::done;
    JsonArray array;
    for_each_query([&](const Quantity &row, int channel) {
        expect_no_stop("get");
        try {
            const Reading reading = ask(device, row, channel);
            if (options.json) {
                array.add_json(reading.json());
            } else {
                print(fmt::format("{} = {}\n", reading.name(), printable(reading.text)));
            }
        } catch (const Failure &failure) {
            if (!may_go_on(device, failure)) {
                throw;
            }
            say(failure.what());
            status = ExitStatus::failed;
        }
    });
    if (options.json) {
        print(array.json() + '\n');
    }
    return status;
}

ExitStatus get(const GetOptions &options)
{
    if (options.all && !options.name.empty()) {
        throw Failure(ExitStatus::usage, "--all reads everything and takes no NAME; see "
                                         "stmctl get --help");
    }
    if (!options.all && options.name.empty()) {
        throw Failure(ExitStatus::usage, "NAME is required; see stmctl get --help");
    }
    return options.all ? get_all(options) : get_one(options);
}

} // namespace

Action declare_get(CLI::App &command)
{
    auto options = std::make_shared<GetOptions>();
    add_values(command, Direction::get, Presence::optional, "the channel, if any", *options);
    add_flag(command, "--all", options->all, "everything that can be read, one line each");
    add_flag(command, "--json", options->json, "as JSON: an object, or with --all an array");
    return [options] { return get(*options); };
}

} // namespace stmctl
