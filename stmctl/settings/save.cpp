// save: writes the settings that can be both read and set to a file for restore.
#include "stmctl/command_line/arguments.hpp"
#include "stmctl/output/output.hpp"
#include "stmctl/output/whole_file.hpp"
#include "stmctl/settings/readings.hpp"
#include "stmctl/settings/settings.hpp"
#include "stmctl/settings/wire.hpp"

#include <fmt/format.h>

#include <ctime>
#include <memory>

namespace stmctl
{

namespace
{

struct SaveOptions {
    std::string file;
    DeviceOptions device;
};

std::string head()
{
    const time_t now = time(nullptr);
    struct tm parts = {};
    char date[sizeof("2000-01-01 00:00:00")] = "";
    strftime(date, sizeof(date), "%F %T", gmtime_r(&now, &parts));
    return fmt::format("# The co-processor's settings, saved by stmctl {} at {} UTC.\n"
                       "# Each line is NAME [CHANNEL] VALUE; stmctl restore sends them.\n",
                       STMCTL_VERSION, date);
}

// Null if what the query answers cannot be set, at least for this channel.
const Quantity *setting_of(const Quantity &query, int channel)
{
    const Quantity *row = find_quantity(query.name, Direction::set);
    const bool has_channel =
        row != nullptr && (!row->has_channel() || channel <= row->last_channel);
    return has_channel ? row : nullptr;
}

std::string line_for(const Reading &reading, const Quantity &setting)
{
    const Argument &argument = setting.first;
    if (const auto value = value_of_bits(argument, reading.number())) {
        return fmt::format("{} {}\n", reading.name(), *value);
    }
    const std::string why =
        fmt::format("{} takes {} to {}", argument.name, argument.least, argument.most);
    remark(fmt::format("save: {} is {}, which cannot be set: {}; it is saved as a comment",
                       reading.name(), reading.text, why));
    return fmt::format("# {} {}    cannot be set: {}\n", reading.name(), reading.text, why);
}

// What a reader of the file must know about a setting.
std::string note_for(const Quantity &query, const Quantity &setting)
{
    if (why_asked_back_otherwise(query.answers, setting.first.most).empty() ||
        query.answers.is_signed) {
        return "";
    }
    return fmt::format("# Only the lowest {} bits of {} can be read.\n", query.answers.bits,
                       setting.name);
}

ExitStatus save(const SaveOptions &options)
{
    const bool to_file = options.file != "-";
    if (to_file) {
        expect_writable(options.file);
    }
    std::string text = head();
    const Device device(options.device);
    for_each_query([&](const Quantity &row, int channel) {
        const Quantity *setting = setting_of(row, channel);
        if (setting != nullptr) {
            expect_no_stop("save");
            text += channel <= 0 ? note_for(row, *setting) : "";
            text += line_for(ask(device, row, channel), *setting);
        }
    });
    if (to_file) {
        write_whole(options.file, text);
    } else {
        print(text);
    }
    return ExitStatus::done;
}

} // namespace

Action declare_save(CLI::App &command)
{
    auto options = std::make_shared<SaveOptions>();
    add_operand(command, "FILE", Presence::required, options->file,
                "the file to write; - writes to standard output", names_of_files());
    add_device_options(command, options->device);
    return [options] { return save(*options); };
}

} // namespace stmctl
