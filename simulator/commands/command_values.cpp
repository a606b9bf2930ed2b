// Values by command, as lines of text.
#include "simulator/commands/command_values.hpp"

#include "simulator/words/number.hpp"
#include "simulator/words/text.hpp"

#include <algorithm>
#include <sstream>

namespace simulator
{

namespace
{

constexpr std::string_view BLANKS = " \t\r";

std::string_view trimmed(std::string_view words)
{
    const size_t first = words.find_first_not_of(BLANKS);
    if (first == std::string_view::npos) {
        return {};
    }
    return words.substr(first, words.find_last_not_of(BLANKS) - first + 1);
}

// What a line must contain.
struct Wanted {
    int places = 0; // 0: the line has none
    int numbers = 0;
    int width = 0; // of each number, in bytes; 0: a text
};

std::optional<Wanted> wanted_of(const Command &command, ValuesOf kind)
{
    const bool is_setting = command.kind == CommandKind::setting;
    if (kind == ValuesOf::settings) {
        return is_setting ? std::optional(Wanted{command.channels, command.values, command.width})
                          : std::nullopt;
    }
    switch (command.kind) {
    case CommandKind::number:
        return Wanted{command.channels, 1, command.width};
    case CommandKind::text:
        return Wanted{};
    case CommandKind::read_byte:
        return Wanted{ADDRESSES, 0, 0};
    case CommandKind::setting:
    case CommandKind::plain:
    case CommandKind::write_byte:
        return Wanted{0, 1, 2};
    case CommandKind::read_range:
    case CommandKind::adc_values:
    case CommandKind::raw_bytes:
    case CommandKind::records:
        break;
    }
    return std::nullopt;
}

// Numbers may be written signed or unsigned, as long as their bits fit.
bool numbers_fit(std::string_view value, const Wanted &wanted)
{
    const int64_t bits = int64_t{8} * wanted.width;
    std::istringstream words{std::string(value)};
    int count = 0;
    for (std::string word; words >> word; ++count) {
        if (!parse_number(word, -(int64_t{1} << (bits - 1)), (int64_t{1} << bits) - 1)) {
            return false;
        }
    }
    return count == wanted.numbers;
}

// Cuts the place off a key's words. False if it does not suit the command.
bool take_place(std::string_view &words, int places, int &place)
{
    const size_t slash = words.find('/');
    if (slash == std::string_view::npos) {
        return places == 0;
    }
    const std::optional<int64_t> number = parse_number(words.substr(slash + 1), 0, places - 1);
    words = words.substr(0, slash);
    place = static_cast<int>(number.value_or(NO_PLACE));
    return number.has_value();
}

std::optional<Wanted> find_wanted(std::string_view code_words, ValuesOf kind, CommandKey &key)
{
    const std::optional<int64_t> code = parse_number(code_words, 0, 0xFF);
    const Command *command = code ? find_command(static_cast<uint8_t>(*code)) : nullptr;
    if (command == nullptr) {
        return std::nullopt;
    }
    key.code = command->code;
    return wanted_of(*command, kind);
}

std::string wrong_place(const Wanted &wanted)
{
    if (wanted.places == 0) {
        return "this command has no channels";
    }
    return text("the code must be followed by %s from 0 to %d, as in 0x%02X/1",
                wanted.places == ADDRESSES ? "/ and an address" : "/ and a channel",
                wanted.places - 1, wanted.places == ADDRESSES ? 'b' : 0x06);
}

std::string wrong_numbers(const Wanted &wanted)
{
    return text("the value must be %d number%s of %d bits", wanted.numbers,
                wanted.numbers > 1 ? "s" : "", wanted.width * 8);
}

size_t count_of_addresses(const CommandValues &values)
{
    return static_cast<size_t>(std::ranges::count_if(values, [](const auto &value) {
        return find_command(value.first.code)->kind == CommandKind::read_byte;
    }));
}

std::string add_words(CommandValues &values, ValuesOf kind, std::string_view line)
{
    const size_t equals = line.find('=');
    if (equals == std::string_view::npos || line.find('\n') != std::string_view::npos) {
        return "it does not have the form CODE[/CHANNEL]=VALUE";
    }
    std::string_view key_words = trimmed(line.substr(0, equals));
    const std::string_view value = trimmed(line.substr(equals + 1));
    CommandKey key{0, NO_PLACE};
    const std::optional<Wanted> wanted =
        find_wanted(key_words.substr(0, key_words.find('/')), kind, key);
    if (!wanted) {
        return kind == ValuesOf::settings ? "no setting has this code"
                                          : "no command with answers has this code";
    }
    if (!take_place(key_words, wanted->places, key.place)) {
        return wrong_place(*wanted);
    }
    if (wanted->width > 0 && !numbers_fit(value, *wanted)) {
        return wrong_numbers(*wanted);
    }
    values[key] = value;
    return count_of_addresses(values) > MOST_ADDRESS_ANSWERS
               ? text("at most %zu addresses can have answers", MOST_ADDRESS_ANSWERS)
               : std::string();
}

} // namespace

std::string add_value(CommandValues &values, ValuesOf kind, std::string_view line)
{
    const std::string error = add_words(values, kind, line);
    return error.empty() ? error : text("'%s': ", std::string(line).c_str()) + error;
}

std::string read_values(CommandValues &values, ValuesOf kind, const std::string &lines)
{
    values.clear();
    std::istringstream stream(lines);
    for (std::string line; std::getline(stream, line);) {
        const std::string_view words = trimmed(line);
        if (words.empty() || words.front() == '#') {
            continue;
        }
        std::string error = add_value(values, kind, words);
        if (!error.empty()) {
            return error;
        }
    }
    return {};
}

std::string write_values(const CommandValues &values)
{
    std::string lines;
    for (const auto &[key, value] : values) {
        lines += text("0x%02X", key.code);
        if (key.place != NO_PLACE) {
            lines += text(key.code == 'b' ? "/0x%04X" : "/%d", key.place);
        }
        lines += text(" = %s\n", value.c_str());
    }
    return lines;
}

std::vector<int64_t> numbers_of(const std::string &value)
{
    std::vector<int64_t> numbers;
    std::istringstream words(value);
    for (std::string word; words >> word;) {
        numbers.push_back(parse_number(word, INT32_MIN, UINT32_MAX).value_or(0));
    }
    return numbers;
}

} // namespace simulator
