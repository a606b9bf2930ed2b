// Settings in environment variables.
#include "simulator/settings.hpp"

#include <charconv>
#include <cstdlib>
#include <sstream>

namespace simulator
{

namespace
{

constexpr char DIRECTORY[] = "VIRTUAL_BOARD_DIRECTORY";
constexpr char TRANSCRIPT[] = "VIRTUAL_BOARD_TRANSCRIPT";
constexpr char BUSY[] = "VIRTUAL_BOARD_BUSY";
constexpr char FAULTS[] = "VIRTUAL_BOARD_FAULTS";
constexpr char THROUGH[] = "VIRTUAL_BOARD_THROUGH";

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

bool set_busy(Settings &settings, const std::string &number)
{
    int &polls = settings.behaviour.busy_polls;
    const char *end = number.data() + number.size();
    const auto result = std::from_chars(number.data(), end, polls);
    return result.ec == std::errc() && result.ptr == end && polls >= 0 && polls <= 1'000'000'000;
}

bool add_fault(Settings &settings, const std::string &words, std::string &reason)
{
    const std::optional<Fault> fault = parse_fault(words, reason);
    if (!fault) {
        return false;
    }
    settings.behaviour.faults.push_back(*fault);
    settings.fault_words += settings.fault_words.empty() ? words : ' ' + words;
    return true;
}

void put_into_environment(const Settings &settings)
{
    put(DIRECTORY, settings.directory);
    put(TRANSCRIPT, settings.transcript);
    put(BUSY, std::to_string(settings.behaviour.busy_polls));
    put(FAULTS, settings.fault_words);
    put(COUNT_TIME_VARIABLE, settings.counts_time ? "1" : "");
    put(THROUGH, settings.through ? "1" : "");
}

bool take_from_environment(Settings &settings)
{
    settings.directory = get(DIRECTORY);
    settings.transcript = get(TRANSCRIPT);
    settings.counts_time = !get(COUNT_TIME_VARIABLE).empty();
    settings.through = !get(THROUGH).empty();
    if (!set_busy(settings, get(BUSY))) {
        return false;
    }
    std::istringstream faults(get(FAULTS));
    std::string reason;
    for (std::string words; faults >> words;) {
        if (!add_fault(settings, words, reason)) {
            return false;
        }
    }
    return settings.through || !settings.directory.empty();
}

} // namespace simulator
