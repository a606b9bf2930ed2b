// Options of a run in environment variables.
#include "simulator/run/run_options.hpp"

#include "simulator/words/number.hpp"
#include "simulator/words/text.hpp"

#include <algorithm>
#include <cstdlib>
#include <sstream>

namespace simulator
{

namespace
{

constexpr char DIRECTORY[] = "VIRTUAL_BOARD_DIRECTORY";
constexpr char TRANSCRIPT[] = "VIRTUAL_BOARD_TRANSCRIPT";
constexpr char FAULTS[] = "VIRTUAL_BOARD_FAULTS";
constexpr char THROUGH[] = "VIRTUAL_BOARD_THROUGH";

constexpr char BLANKS[] = " \t\n\v\f\r"; // between faults

struct NumberRow {
    int Behaviour::*number;
    const char *variable;
    int least;
    int most;
};

constexpr NumberRow NUMBER_ROWS[] = {
    {&Behaviour::busy_polls, "VIRTUAL_BOARD_BUSY", 0, 1'000'000'000},
    {&Behaviour::seed, "VIRTUAL_BOARD_SEED", 0, 1'000'000'000},
    {&Behaviour::adc_values, "VIRTUAL_BOARD_SAMPLES", 0, 0xFF},
    {&Behaviour::rate, "VIRTUAL_BOARD_RATE", 1, 1'000'000},
    {&Behaviour::header_index, "VIRTUAL_BOARD_HEADER_INDEX", 0, ANY_HEADER_INDEX},
    {&Behaviour::buffer_size, "VIRTUAL_BOARD_BUFSIZ", 1, 1'048'576},
};

const NumberRow &row_of(int Behaviour::*number)
{
    return *std::ranges::find(NUMBER_ROWS, number, &NumberRow::number);
}

std::string get(const char *name)
{
    const char *value = getenv(name);
    return value != nullptr ? value : "";
}

void put(const char *name, const std::string &value)
{
    setenv(name, value.c_str(), 1);
}

} // namespace

std::string range_of(int Behaviour::*number)
{
    const NumberRow &row = row_of(number);
    return row.number == &Behaviour::header_index
               ? text("%d to %d, or any", row.least, ANY_HEADER_INDEX - 1)
               : text("%d to %d", row.least, row.most);
}

bool set_number(RunOptions &options, int Behaviour::*number, const std::string &words)
{
    const NumberRow *row = &row_of(number);
    const std::optional<int64_t> value = parse_number(words, row->least, row->most);
    options.behaviour.*number = static_cast<int>(value.value_or(0));
    return value.has_value();
}

bool add_fault(RunOptions &options, const std::string &words, std::string &reason)
{
    const std::optional<Fault> fault = parse_fault(words, reason);
    if (!fault) {
        return false;
    }
    if (words.find_first_of(BLANKS) != std::string::npos) {
        reason = "fault '" + words + "': it contains a blank, which cannot be passed on";
        return false;
    }
    options.behaviour.faults.push_back(*fault);
    options.fault_words += options.fault_words.empty() ? words : ' ' + words;
    return true;
}

// The numbers in the order of their rows, then the faults.
std::string shared_words(const RunOptions &options)
{
    std::string words;
    for (const NumberRow &row : NUMBER_ROWS) {
        words += std::to_string(options.behaviour.*row.number) + ' ';
    }
    return words + options.fault_words;
}

bool take_shared_words(RunOptions &options, const std::string &words)
{
    std::istringstream stream(words);
    std::string word;
    for (const NumberRow &row : NUMBER_ROWS) {
        if (!(stream >> word) || !set_number(options, row.number, word)) {
            return false;
        }
    }
    options.behaviour.faults.clear();
    options.fault_words.clear();
    std::string reason;
    while (stream >> word) {
        if (!add_fault(options, word, reason)) {
            return false;
        }
    }
    return true;
}

bool has_usual_board(const RunOptions &options)
{
    return shared_words(options) == shared_words({});
}

void put_into_environment(const RunOptions &options)
{
    put(DIRECTORY, options.directory);
    put(TRANSCRIPT, options.transcript);
    for (const NumberRow &row : NUMBER_ROWS) {
        put(row.variable, std::to_string(options.behaviour.*row.number));
    }
    put(FAULTS, options.fault_words);
    put(COUNT_TIME_VARIABLE, options.counts_time ? "1" : "");
    put(THROUGH, options.through ? "1" : "");
}

bool take_from_environment(RunOptions &options)
{
    options.directory = get(DIRECTORY);
    options.transcript = get(TRANSCRIPT);
    options.counts_time = !get(COUNT_TIME_VARIABLE).empty();
    options.through = !get(THROUGH).empty();
    for (const NumberRow &row : NUMBER_ROWS) {
        if (!set_number(options, row.number, get(row.variable))) {
            return false;
        }
    }
    std::istringstream faults(get(FAULTS));
    std::string reason;
    for (std::string words; faults >> words;) {
        if (!add_fault(options, words, reason)) {
            return false;
        }
    }
    return options.through || !options.directory.empty();
}

} // namespace simulator
