// restore: sends the settings in a file.
#include "stmctl/command_line/arguments.hpp"
#include "stmctl/output/output.hpp"
#include "stmctl/process/input.hpp"
#include "stmctl/settings/readings.hpp"
#include "stmctl/settings/sent.hpp"
#include "stmctl/settings/settings.hpp"
#include "stmctl/settings/settings_file.hpp"
#include "stmctl/settings/wire.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <memory>

namespace stmctl
{

namespace
{

struct RestoreOptions {
    std::string file;
    bool blindly = false;
    DeviceOptions device;
};

constexpr size_t MOST_BYTES = 1 << 20; // of a file; all settings together take about a thousand

std::vector<Setting> settings_of(const std::string &path)
{
    const std::string text = read_whole(path, MOST_BYTES);
    const std::string name = input_name(path);
    if (text.size() > MOST_BYTES) {
        throw Failure(
            ExitStatus::failed,
            fmt::format("{}: more than {} bytes, which cannot be settings", name, MOST_BYTES));
    }
    SettingsFile file = read_settings(name, text);
    for (const std::string &mistake : file.mistakes) {
        say(mistake);
    }
    if (!file.mistakes.empty()) {
        const size_t count = file.mistakes.size();
        throw Failure(ExitStatus::failed, fmt::format("restore: nothing was sent: {} error{} in "
                                                      "{}",
                                                      count, count > 1 ? "s" : "", name));
    }
    if (file.settings.empty()) {
        throw Failure(ExitStatus::failed, fmt::format("{}: it holds no settings", name));
    }
    if (!file.only_asked.empty()) {
        remark(fmt::format("restore: skipped (can only be read): {}",
                           fmt::join(file.only_asked, ", ")));
    }
    return file.settings;
}

// The settings on their way to a board, and how many have arrived.
class Restoration
{
  public:
    Restoration(const Device &device, std::vector<Setting> settings)
        : device_(device), settings_(std::move(settings))
    {
    }

    // Continues after a setting that was not answered, as long as the application is running.
    void send() { for_each(&Restoration::send_one, sent_); }

    // The meaning of a setting's answer is up to the firmware: only reading the setting back shows
    // whether it was kept.
    void verify() { for_each(&Restoration::verify_one, verified_); }

    bool is_complete() const { return good_; }

    // "44 of 45 settings sent, 43 read back the same"
    std::string summary(bool verifies) const
    {
        std::string words = fmt::format("{} of {} settings sent", sent_, settings_.size());
        return verifies ? words + fmt::format(", {} read back the same", verified_) : words;
    }

  private:
    // Each step returns whether it succeeded; a failure of the board is reported and skipped.
    template <typename Step>
    void for_each(Step step, size_t &count)
    {
        for (const Setting &setting : settings_) {
            expect_no_stop("restore");
            try {
                count += (this->*step)(setting) ? 1 : 0;
            } catch (const Failure &failure) {
                if (!may_go_on(device_, failure)) {
                    throw;
                }
                good_ = false;
                say(failure.what());
            }
        }
    }

    bool send_one(const Setting &setting)
    {
        const Outcome outcome = call(device_, setting.name(), *setting.row, setting.values);
        print(sent_line(*setting.row, setting.values, outcome.result));
        return true;
    }

    bool verify_one(const Setting &setting)
    {
        const Quantity *query = find_quantity(setting.row->name, Direction::get);
        if (query == nullptr) {
            return false;
        }
        const Reading reading = ask(device_, *query, setting.values.channel);
        if (!answers_value(setting.row->first, query->answers, setting.values.number,
                           reading.number())) {
            throw Failure(ExitStatus::failed,
                          fmt::format("{}: {} was sent, {} read back", setting.name(),
                                      setting.values.number, reading.text));
        }
        return true;
    }

    const Device &device_;
    std::vector<Setting> settings_;
    size_t sent_ = 0;
    size_t verified_ = 0;
    bool good_ = true;
};

ExitStatus restore(const RestoreOptions &options)
{
    std::vector<Setting> settings = settings_of(options.file);
    const Device device(options.device);
    Restoration restoration(device, std::move(settings));
    try {
        restoration.send();
        if (!options.blindly) {
            restoration.verify();
        }
    } catch (const Failure &failure) {
        say(failure.what());
        throw Failure(failure.status(),
                      fmt::format("restore: ended early, {}", restoration.summary(false)));
    }
    remark(fmt::format("restore: {}", restoration.summary(!options.blindly)));
    return restoration.is_complete() ? ExitStatus::done : ExitStatus::failed;
}

} // namespace

Action declare_restore(CLI::App &command)
{
    auto options = std::make_shared<RestoreOptions>();
    add_operand(command, "FILE", Presence::required, options->file,
                "written by save; - reads standard input", names_of_files());
    add_flag(command, "--no-verify", options->blindly, "do not read the settings back");
    add_device_options(command, options->device);
    return [options] { return restore(*options); };
}

} // namespace stmctl
