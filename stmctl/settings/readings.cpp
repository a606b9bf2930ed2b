// Queries and their answers.
#include "stmctl/settings/readings.hpp"

#include "stmctl/module/diagnosis.hpp"
#include "stmctl/output/json.hpp"
#include "stmctl/process/stop.hpp"

#include <fmt/format.h>

#include <cstdlib>

namespace stmctl
{

int64_t Reading::number() const
{
    return strtoll(text.c_str(), nullptr, 10);
}

std::string Reading::json() const
{
    JsonObject object;
    object.add("name", row.name);
    if (row.has_channel()) {
        object.add("channel", int64_t{channel});
    }
    if (row.answers.is_text()) {
        object.add("value", text);
    } else {
        object.add("value", number());
    }
    return object.json();
}

Reading ask(const Device &device, const Quantity &row, int channel)
{
    Values values;
    values.channel = channel;
    std::string text;
    for (const std::string &part : call(device, full_name(row, channel), row, values).texts) {
        text += part;
    }
    if (text.ends_with('\n')) {
        text.pop_back();
    }
    return {row, channel, text};
}

void for_each_query(const std::function<void(const Quantity &row, int channel)> &work)
{
    for (const Quantity &row : catalogue()) {
        if (row.direction() == Direction::get) {
            const int last = row.has_channel() ? row.last_channel : 0;
            for (int channel = 0; channel <= last; ++channel) {
                work(row, channel);
            }
        }
    }
}

bool may_go_on(const Device &device, const Failure &failure)
{
    return failure.status() == ExitStatus::failed &&
           diagnose(device).condition == Condition::application;
}

void expect_no_stop(const char *command)
{
    if (stop_requested()) {
        throw Failure(ExitStatus::stopped, fmt::format("{}: stopped by the user", command));
    }
}

} // namespace stmctl
