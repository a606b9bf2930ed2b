// Faults as text.
#include "simulator/faults/faults.hpp"

#include "simulator/wire/mode.hpp"
#include "simulator/words/number.hpp"
#include "simulator/words/text.hpp"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <iterator>

namespace simulator
{

namespace
{

enum class Place { none, step, anywhere, any_command, one_command, counted, time };
enum class Value { none, status, polls, length, waits, bit, bytes, error, mode, span, file };

struct FaultRow {
    FaultKind kind;
    Place place;
    Value value;
    int default_value; // 0: the value must be given
    std::string_view name;
    const char *form;
    const char *help;
};

constexpr int FLIPPED_BIT = 64; // unless another one is given
constexpr std::string_view TIME_PLACE = "t";

constexpr FaultRow FAULT_ROWS[] = {
    {FaultKind::bus_inactive, Place::anywhere, Value::none, 0, "bus-inactive",
     "bus-inactive[@WHERE]", "nothing drives the line (0xFF), from WHERE on"},
    {FaultKind::silence, Place::anywhere, Value::none, 0, "silence", "silence[@WHERE]",
     "the co-processor is dead (0x00), from WHERE on"},
    {FaultKind::checksum_error, Place::step, Value::none, 0, "checksum-error",
     "checksum-error@STEP", "STEP is answered with a checksum error"},
    {FaultKind::address_error, Place::step, Value::none, 0, "address-error", "address-error@STEP",
     "STEP is answered with an address error"},
    {FaultKind::status, Place::step, Value::status, 0, "status", "status@STEP=BYTE",
     "STEP is accepted, but answered with this status byte"},
    {FaultKind::late, Place::anywhere, Value::polls, 0, "late", "late[@WHERE]=POLLS",
     "WHERE (or everything) is answered POLLS polls later"},
    {FaultKind::length, Place::any_command, Value::length, 0, "length", "length[@CODE]=N",
     "CODE (or any) is answered with N: result or length"},
    {FaultKind::deaf, Place::one_command, Value::waits, 0, "deaf", "deaf@CODE=WAITS",
     "the first WAITS waits (301 polls) for CODE fail"},
    {FaultKind::flip, Place::counted, Value::bit, FLIPPED_BIT, "flip", "flip@RECORD[=BIT]",
     "BIT of RECORD is flipped (64); 8 is bit 0 of byte 1"},
    {FaultKind::unnumbered, Place::counted, Value::none, 0, "unnumbered", "unnumbered@RECORD",
     "RECORD has the number 0"},
    {FaultKind::stuck, Place::counted, Value::none, 0, "stuck", "stuck@RECORD",
     "RECORD is a repetition of the one before it"},
    {FaultKind::short_block, Place::counted, Value::bytes, 0, "short", "short@BLOCK=BYTES",
     "the last BYTES bytes of BLOCK are missing"},
    {FaultKind::block_length, Place::counted, Value::length, 0, "block-length",
     "block-length@BLOCK=N", "BLOCK is announced as N bytes, whatever its length"},
    {FaultKind::padded, Place::counted, Value::none, 0, "padded", "padded@BLOCK",
     "BLOCK is padded to 4096 bytes with 0x55"},
    {FaultKind::exchange, Place::counted, Value::error, EIO, "exchange", "exchange@N[=ERRNO]",
     "the Nth exchange of the program fails (EIO)"},
    {FaultKind::no_device, Place::none, Value::error, ENOENT, "no-device", "no-device[=ERRNO]",
     "the device cannot be opened (ENOENT)"},
    {FaultKind::speed_refused, Place::none, Value::error, EINVAL, "speed-refused",
     "speed-refused[=ERRNO]", "the device refuses the clock (EINVAL)"},
    {FaultKind::restart, Place::time, Value::mode, 0, "restart", "restart@t=TIME=MODE",
     "the co-processor restarts as boot-loader or\n"
     "                          application; pending answers are lost, and RECORD\n"
     "                          and BLOCK count from 1 again"},
    {FaultKind::silent_spell, Place::time, Value::span, 0, "silence", "silence@t=FROM..TO",
     "the co-processor is silent (0x00) but keeps measuring"},
    {FaultKind::absence, Place::time, Value::span, 0, "gone", "gone@t=FROM..TO",
     "there is no device (ENOENT); what was open stays dead\n"
     "                          (ESHUTDOWN)"},
    {FaultKind::intrusion, Place::time, Value::file, 0, "intrusion", "intrusion@t=TIME=FILE",
     "the transcript of another program is played"},
};

constexpr int MOST = 1'000'000'000;
constexpr int LAST_BIT = 56 * 8 - 1; // of the longest record
constexpr int MOST_BYTES = 4096;     // of a block

std::optional<int> parse_int(std::string_view words, int least, int most)
{
    const std::optional<int64_t> number = parse_number(words, least, most);
    return number ? std::optional(static_cast<int>(*number)) : std::nullopt;
}

std::optional<int> parse_command(std::string_view words)
{
    const std::optional<int> code = parse_int(words, 0, 0xFF);
    return code && words.starts_with("0x")
               ? std::optional(command_place(static_cast<uint8_t>(*code)))
               : std::nullopt;
}

std::optional<int> parse_step(std::string_view words)
{
    if (words == "mode") {
        return STEP_MODE;
    }
    if (words == "header") {
        return STEP_HEADER;
    }
    const std::optional<int> block = parse_int(words, 0, MOST);
    return block && !words.starts_with("0x") ? std::optional(STEP_FIRST_BLOCK + *block)
                                             : std::nullopt;
}

// The parts of a fault's text that are optional.
using Words = std::optional<std::string_view>;

std::optional<int> parse_place(const FaultRow &row, const Words &words)
{
    if (!words) {
        const bool optional = row.place == Place::none || row.place == Place::anywhere ||
                              row.place == Place::any_command;
        return optional ? std::optional(ALWAYS) : std::nullopt;
    }
    switch (row.place) {
    case Place::none:
        return std::nullopt;
    case Place::step:
        return parse_step(*words);
    case Place::any_command:
    case Place::one_command:
        return parse_command(*words);
    case Place::anywhere: {
        const std::optional<int> command = parse_command(*words);
        return command ? command : parse_step(*words);
    }
    case Place::counted:
        return parse_int(*words, 1, MOST);
    case Place::time:
        return *words == TIME_PLACE ? std::optional(ALWAYS) : std::nullopt;
    }
    return std::nullopt;
}

std::optional<int> parse_error_name(std::string_view words)
{
    constexpr int LAST_ERRNO = 133;
    for (int error = 1; error <= LAST_ERRNO; ++error) {
        const char *name = strerrorname_np(error);
        if (name != nullptr && words == name) {
            return error;
        }
    }
    return parse_int(words, 1, LAST_ERRNO);
}

std::optional<int> parse_mode(std::string_view words)
{
    if (words == "boot-loader") {
        return static_cast<int>(Mode::boot_loader);
    }
    return words == "application" ? std::optional(static_cast<int>(Mode::application))
                                  : std::nullopt;
}

std::optional<int> parse_value(const FaultRow &row, const Words &words)
{
    if (!words) {
        const bool optional = row.default_value != 0 || row.value == Value::none;
        return optional ? std::optional(row.default_value) : std::nullopt;
    }
    switch (row.value) {
    case Value::none:
        return std::nullopt;
    case Value::status:
        return parse_int(*words, 0, 0xFF);
    case Value::polls:
    case Value::waits:
        return parse_int(*words, 1, MOST);
    case Value::length:
        return parse_int(*words, 0, 0xFFFF);
    case Value::bit:
        return parse_int(*words, 0, LAST_BIT);
    case Value::bytes:
        return parse_int(*words, 1, MOST_BYTES);
    case Value::error:
        return parse_error_name(*words);
    case Value::mode:
        return parse_mode(*words);
    case Value::span:
    case Value::file:
        return 0; // they stand for themselves
    }
    return std::nullopt;
}

// Cuts off and returns the words after a separator; none if there is no separator.
Words cut_behind(std::string_view &words, char separator)
{
    const size_t at = words.find(separator);
    if (at == std::string_view::npos) {
        return std::nullopt;
    }
    const std::string_view behind = words.substr(at + 1);
    words = words.substr(0, at);
    return behind;
}

// Cuts the time of a fault that has one off the words after its first equals sign.
std::optional<TimeSpan> take_span(const FaultRow &row, Words &words)
{
    if (row.place != Place::time) {
        return TimeSpan();
    }
    if (!words || row.value == Value::span) {
        return words ? parse_time_span(*words) : std::nullopt;
    }
    std::string_view time = *words;
    words = cut_behind(time, '=');
    const auto from = parse_time(time);
    if (!from || !words || words->empty()) {
        return std::nullopt;
    }
    return TimeSpan{*from, *from};
}

// Of two rows with the same name, the one with a time or the one without.
const FaultRow *find_row(std::string_view name, bool at_time)
{
    const FaultRow *found = nullptr;
    for (const FaultRow &row : FAULT_ROWS) {
        const bool fits = found == nullptr || (row.place == Place::time) == at_time;
        found = row.name == name && fits ? &row : found;
    }
    return found;
}

} // namespace

const Fault *find_fault(const Faults &faults, FaultKind kind, int place)
{
    const auto found = std::ranges::find_if(
        faults, [&](const Fault &fault) { return fault.kind == kind && fault.place == place; });
    return found == faults.end() ? nullptr : &*found;
}

Faults faults_by_time(const Faults &faults, FaultKind kind)
{
    Faults found;
    std::ranges::copy_if(faults, std::back_inserter(found),
                         [kind](const Fault &fault) { return fault.kind == kind; });
    std::ranges::stable_sort(found, {}, [](const Fault &fault) { return fault.span.from; });
    return found;
}

std::optional<Fault> parse_fault(std::string_view words, std::string &reason)
{
    const std::string whole(words);
    Words value_words = cut_behind(words, '=');
    const Words place_words = cut_behind(words, '@');
    const FaultRow *row = find_row(words, place_words == TIME_PLACE);
    if (row == nullptr) {
        reason = text("unknown fault '%s'", whole.c_str());
        return std::nullopt;
    }
    const std::optional<int> place = parse_place(*row, place_words);
    const std::optional<TimeSpan> span = take_span(*row, value_words);
    const std::optional<int> value = parse_value(*row, value_words);
    if (!place || !span || !value) {
        reason = text("fault '%s' does not have the form %s", whole.c_str(), row->form);
        return std::nullopt;
    }
    const bool has_file = row->value == Value::file;
    return Fault{row->kind, *place, *value, *span, std::string(has_file ? *value_words : "")};
}

std::vector<std::string> beginnings_of_faults()
{
    std::vector<std::string> beginnings;
    for (const FaultRow &row : FAULT_ROWS) {
        const bool optional = std::string_view(row.form).find('[') != std::string_view::npos ||
                              row.place == Place::none;
        const std::string_view place = row.place == Place::time ? "@t=" : "@";
        const bool needs_place = !optional || row.place == Place::counted;
        beginnings.push_back(std::string(row.name) + std::string(needs_place ? place : ""));
    }
    return beginnings;
}

std::string describe_faults()
{
    std::string description;
    for (const FaultRow &row : FAULT_ROWS) {
        description += text("  %-22s  %s\n", row.form, row.help);
    }
    return description;
}

} // namespace simulator
