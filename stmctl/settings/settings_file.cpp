// Settings as lines of text.
#include "stmctl/settings/settings_file.hpp"

#include "stmctl/process/failure.hpp"
#include "stmctl/settings/wire.hpp"

#include <fmt/format.h>

#include <charconv>
#include <map>
#include <sstream>

namespace stmctl
{

namespace
{

using Words = std::vector<std::string>;

Words words_of(std::string line)
{
    line = line.substr(0, line.find('#'));
    const size_t equals = line.find('=');
    if (equals != std::string::npos) {
        line[equals] = ' ';
    }
    std::istringstream stream(line);
    Words words;
    for (std::string word; stream >> word;) {
        words.push_back(word);
    }
    return words;
}

// Replaces a negative number by the one with the same bits; leaves anything else as it is.
std::string without_sign(const Argument &argument, const std::string &word)
{
    int64_t number = 0;
    const auto [stop, error] = std::from_chars(word.data(), word.data() + word.size(), number);
    if (error != std::errc() || stop != word.data() + word.size() || number >= 0) {
        return word;
    }
    const auto value = value_of_bits(argument, number);
    return value ? fmt::format("{}", *value) : word;
}

// The name of what can be read but not set: a query without a setting, or a channel that the
// setting does not have. Empty if the words are something else.
std::string only_asked(const Words &words)
{
    const Quantity *query = find_quantity(words[0], Direction::get);
    const Quantity *setting = find_quantity(words[0], Direction::set);
    if (query == nullptr || setting == nullptr) {
        return query != nullptr ? query->name : "";
    }
    for (int channel = setting->last_channel + 1; channel <= query->last_channel; ++channel) {
        if (words.size() > 1 && words[1] == fmt::format("{}", channel)) {
            return full_name(*query, channel);
        }
    }
    return "";
}

Setting read_setting(const Words &words)
{
    const Quantity &row = row_for(words[0], Direction::set);
    Words operands(words.begin() + 1, words.end());
    if (!operands.empty() && !row.first.hundredths) {
        operands.back() = without_sign(row.first, operands.back());
    }
    return {&row, parse_values(row, operands)};
}

class Reader
{
  public:
    explicit Reader(std::string name) : name_(std::move(name)) {}

    void take(const std::string &line)
    {
        ++number_;
        const Words words = words_of(line);
        if (words.empty()) {
            return;
        }
        if (const std::string name = only_asked(words); !name.empty()) {
            file_.only_asked.push_back(name);
            return;
        }
        try {
            add(read_setting(words));
        } catch (const Failure &failure) {
            file_.mistakes.push_back(fmt::format("{}:{}: {}", name_, number_, failure.what()));
        }
    }

    SettingsFile taken() { return std::move(file_); }

  private:
    void add(const Setting &setting)
    {
        const auto [first, is_new] = lines_.try_emplace(setting.name(), number_);
        if (!is_new) {
            throw Failure(ExitStatus::failed, fmt::format("{} is already set in line {}",
                                                          setting.name(), first->second));
        }
        file_.settings.push_back(setting);
    }

    std::string name_;
    int number_ = 0;
    std::map<std::string, int> lines_; // of a setting
    SettingsFile file_;
};

} // namespace

SettingsFile read_settings(const std::string &name, const std::string &text)
{
    Reader reader(name);
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
        reader.take(line);
    }
    return reader.taken();
}

} // namespace stmctl
