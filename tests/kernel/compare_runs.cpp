// Compares what commands left on this machine and in a virtual one, as run_commands.sh keeps it.
//
//     compare_runs LIST ONE OTHER
#include "tests/kernel/dialogue.hpp"

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>

namespace
{

namespace fs = std::filesystem;
using kernel_test::difference;
using kernel_test::events_of;
using kernel_test::without_times;

std::optional<std::string> content(const fs::path &path)
{
    std::ifstream file(path, std::ios::binary);
    if (!file) {
        return std::nullopt;
    }
    return std::string(std::istreambuf_iterator<char>(file), {});
}

// What is compared of each command, and how.
struct Kind {
    const char *ending;
    bool has_to_be; // of a command that has been run
    std::string (*differ)(const std::string &one, const std::string &other);
};

std::string differ(const std::string &one, const std::string &other)
{
    return one == other ? std::string() : "  " + one + "  ---\n  " + other;
}

std::string differ_but_for_times(const std::string &one, const std::string &other)
{
    return differ(without_times(one), without_times(other));
}

std::string differ_as_dialogues(const std::string &one, const std::string &other)
{
    return difference(events_of(one), events_of(other));
}

constexpr Kind KINDS[] = {
    {".status", true, differ},
    {".out", true, differ_but_for_times},
    {".err", true, differ_but_for_times},
    {".board", false, differ},
    {".dialogue", false, differ_as_dialogues},
};

bool is_same(const std::string &line, const Kind &kind, const fs::path &one, const fs::path &other)
{
    const std::string file = line.substr(0, line.find('\t')) + kind.ending;
    const std::optional<std::string> first = content(one / file);
    const std::optional<std::string> second = content(other / file);
    std::string found;
    if (kind.has_to_be && (!first || !second)) {
        found = "  it has not been run\n";
    } else {
        found = kind.differ(first.value_or(""), second.value_or(""));
    }
    if (!found.empty()) {
        printf("%s: %s\n%s\n", line.substr(line.find('\t') + 1).c_str(), kind.ending,
               found.c_str());
    }
    return found.empty();
}

} // namespace

int main(int argc, char **argv)
{
    if (argc != 4) {
        fputs("usage: compare_runs LIST ONE OTHER\n", stderr);
        return 2;
    }
    std::ifstream list(argv[1]);
    int commands = 0;
    int differences = 0;
    for (std::string line; std::getline(list, line); ++commands) {
        for (const Kind &kind : KINDS) {
            differences += is_same(line, kind, argv[2], argv[3]) ? 0 : 1;
        }
    }
    printf("%d commands, %d differences\n", commands, differences);
    return commands > 0 && differences == 0 ? 0 : 1;
}
