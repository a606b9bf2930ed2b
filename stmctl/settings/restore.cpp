// restore: sends the settings of a file.
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

constexpr size_t MOST_BYTES = 1 << 20; // of a file; one with all settings has a thousand

std::vector<Setting> settings_of(const std::string &path)
{
    const std::string text = read_whole(path, MOST_BYTES);
    const std::string name = input_name(path);
    if (text.size() > MOST_BYTES) {
        throw Failure(
            ExitStatus::failed,
            fmt::format("{}: more than {} bytes, these are no settings", name, MOST_BYTES));
    }
    SettingsFile file = read_settings(name, text);
    for (const std::string &mistake : file.mistakes) {
        say(mistake);
    }
    if (!file.mistakes.empty()) {
        const size_t count = file.mistakes.size();
        throw Failure(ExitStatus::failed, fmt::format("restore: nothing was sent: {} mistake{} in "
                                                      "{}",
                                                      count, count > 1 ? "s" : "", name));
    }
    if (file.settings.empty()) {
        throw Failure(ExitStatus::failed, fmt::format("{}: there is no setting in it", name));
    }
    if (!file.only_asked.empty()) {
        remark(fmt::format("restore: passed over, for it can only be asked for: {}",
                           fmt::join(file.only_asked, ", ")));
    }
    return file.settings;
}

// The settings on their way to a board, and how many have got there.
class Restoration
{
  public:
    Restoration(const Device &device, std::vector<Setting> settings)
        : device_(device), settings_(std::move(settings))
    {
    }

    // Goes on after a setting that was not answered, as long as the application runs.
    void send() { for_each(&Restoration::send_one, sent_); }

    // What a setting's answer means is the firmware's own: whether it has been kept shows when it
    // is asked for.
    void verify() { for_each(&Restoration::verify_one, verified_); }

    bool is_complete() const { return good_; }

    // "44 of 45 settings sent, 43 read back the same"
    std::string summary(bool verifies) const
    {
        std::string words = fmt::format("{} of {} settings sent", sent_, settings_.size());
        return verifies ? words + fmt::format(", {} read back the same", verified_) : words;
    }

  private:
    // Each returns whether it has gone well; a failure of the board's is said and passed over.
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
                          fmt::format("{}: {} was sent, {} is read back", setting.name(),
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
                "what save has written; - reads standard input", names_of_files());
    add_flag(command, "--no-verify", options->blindly, "do not ask for each setting afterwards");
    add_device_options(command, options->device);
    return [options] { return restore(*options); };
}

} // namespace stmctl
