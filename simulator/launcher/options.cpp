// The option table of virtual-board.
#include "simulator/launcher/options.hpp"

#include "simulator/launcher/completion.hpp"
#include "simulator/store/board_directory.hpp"
#include "simulator/words/text.hpp"

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <sstream>
#include <string_view>
#include <vector>

namespace simulator
{

namespace
{

struct OptionRow {
    std::string_view name;
    const char *argument; // null for an option without one
    const char *help;
    bool (*apply)(LaunchOptions &options, const std::string &argument); // false: bad argument
    bool shapes_board = true; // a virtual one; meaningless for a real one
};

std::string absolute(const std::string &path)
{
    return std::filesystem::absolute(path).lexically_normal().string();
}

bool set_board(LaunchOptions &options, const std::string &path)
{
    if (path.empty()) {
        return false;
    }
    options.run.directory = absolute(path);
    return true;
}

bool set_mode(LaunchOptions &options, const std::string &name)
{
    Mode mode = Mode::unknown;
    const bool known = parse_mode(name, mode);
    options.mode = mode;
    return known;
}

bool set_version(LaunchOptions &options, const std::string &number)
{
    uint8_t version = 0;
    const bool good = parse_version(number, version);
    options.version = version;
    return good;
}

bool set_answer(LaunchOptions &options, const std::string &words)
{
    options.error = add_value(options.answers, ValuesOf::answers, words);
    return options.error.empty();
}

bool take_number(LaunchOptions &options, int Behaviour::*number, const std::string &words)
{
    options.range = range_of(number);
    return set_number(options.run, number, words);
}

bool set_busy_polls(LaunchOptions &options, const std::string &number)
{
    return take_number(options, &Behaviour::busy_polls, number);
}

bool set_seed(LaunchOptions &options, const std::string &number)
{
    return take_number(options, &Behaviour::seed, number);
}

bool set_samples(LaunchOptions &options, const std::string &number)
{
    return take_number(options, &Behaviour::adc_values, number);
}

bool set_rate(LaunchOptions &options, const std::string &number)
{
    return take_number(options, &Behaviour::rate, number);
}

bool set_header_index(LaunchOptions &options, const std::string &words)
{
    int &index = options.run.behaviour.header_index;
    if (words == "any") {
        index = ANY_HEADER_INDEX;
        return true;
    }
    return take_number(options, &Behaviour::header_index, words) && index != ANY_HEADER_INDEX;
}

bool set_buffer_size(LaunchOptions &options, const std::string &number)
{
    return take_number(options, &Behaviour::buffer_size, number);
}

// The command may change the folder before the file is read.
std::string with_absolute_file(const std::string &words)
{
    std::string ignored;
    const std::optional<Fault> fault = parse_fault(words, ignored);
    if (!fault || fault->file.empty()) {
        return words;
    }
    return words.substr(0, words.size() - fault->file.size()) + absolute(fault->file);
}

bool set_fault(LaunchOptions &options, const std::string &words)
{
    return add_fault(options.run, with_absolute_file(words), options.error);
}

bool set_transcript(LaunchOptions &options, const std::string &path)
{
    if (path.empty()) {
        return false;
    }
    options.run.transcript = path == "-" ? path : absolute(path);
    return true;
}

bool set_count_time(LaunchOptions &options, const std::string &)
{
    options.run.counts_time = true;
    return true;
}

bool set_through(LaunchOptions &options, const std::string &)
{
    options.run.through = true;
    return true;
}

bool set_emulator(LaunchOptions &options, const std::string &command)
{
    std::istringstream words(command);
    for (std::string word; words >> word;) {
        options.emulator.push_back(word);
    }
    return !options.emulator.empty();
}

bool set_preload(LaunchOptions &options, const std::string &path)
{
    std::error_code error;
    if (!std::filesystem::exists(path, error)) {
        return false;
    }
    options.preload = absolute(path);
    return true;
}

bool set_commands(LaunchOptions &options, const std::string &)
{
    options.commands = true;
    return true;
}

bool set_completion(LaunchOptions &options, const std::string &shell);

bool set_help(LaunchOptions &options, const std::string &)
{
    options.help = true;
    return true;
}

constexpr OptionRow OPTION_ROWS[] = {
    {"--board", "DIR", "keep flash and state in DIR; created if necessary", set_board},
    {"--mode", "MODE", "initial mode: application, 'boot loader' or unknown", set_mode},
    {"--version", "N", "minor version of the boot loader, 0 to 255 (new: 5)", set_version},
    {"--answer", "CODE[/CHANNEL]=VALUE", "set this answer from now on; can be repeated",
     set_answer},
    {"--commands", nullptr, "list the commands and their default answers", set_commands, false},
    {"--busy", "N", "each frame keeps the board busy for N polls (0)", set_busy_polls},
    {"--seed", "N", "seed of the measured values: each gives others (1)", set_seed},
    {"--samples", "N", "valid values in a converter frame, 0 to 255 (200)", set_samples},
    {"--rate", "N",
     "records per second of a stream, 1 to 1000000 (1000);\n"
     "                        counted records and converter values come as fast as\n"
     "                        the wire permits",
     set_rate},
    {"--header-index", "I",
     "index of a block's header in a stream's poll of 20\n"
     "                        bytes, 0 to 19, or any: a different one each time (0)",
     set_header_index},
    {"--bufsiz", "N",
     "longest message that the driver accepts, in bytes,\n"
     "                        1 to 1048576 (4096)",
     set_buffer_size},
    {"--fault", "FAULT", "make something go wrong; can be repeated", set_fault},
    {"--transcript", "FILE", "write a line per exchange to FILE; - is standard error",
     set_transcript, false},
    {"--count-time", nullptr,
     "count the command's waits instead of spending them:\n"
     "                        usleep, nanosleep, clock_nanosleep, poll, select;\n"
     "                        clock_gettime shows the count",
     set_count_time},
    {"--through", nullptr, "use the real device and only write the transcript", set_through, false},
    {"--emulator", "CMD",
     "run the command, of a different architecture, with\n"
     "                        CMD, which must support qemu's option -E",
     set_emulator, false},
    {"--preload", "FILE", "library to load into the command, of its architecture", set_preload,
     false},
    {"--completion", "SHELL", "print the completions for bash or zsh", set_completion, false},
    {"--help", nullptr, "show this help", set_help, false},
    {"-h", nullptr, "the same", set_help, false},
};

bool set_completion(LaunchOptions &options, const std::string &shell)
{
    std::vector<OptionWords> rows;
    for (const OptionRow &row : OPTION_ROWS) {
        rows.push_back({std::string(row.name), row.argument != nullptr ? row.argument : ""});
    }
    options.completion = completion_script(shell, rows);
    return !options.completion.empty();
}

// Takes one option, with its argument from the same word or from the next. Returns the number of
// words used, 0 after an error.
int take_option(LaunchOptions &options, int count, char **words)
{
    std::string name = words[0];
    const size_t equals = name.find('=');
    const bool has_argument = equals != std::string::npos;
    std::string argument = has_argument ? name.substr(equals + 1) : "";
    name = name.substr(0, equals);
    const auto *row = std::ranges::find(OPTION_ROWS, name, &OptionRow::name);
    if (row == std::end(OPTION_ROWS)) {
        options.error = text("unknown option '%s'", name.c_str());
        return 0;
    }
    const bool wants_argument = row->argument != nullptr;
    const bool takes_next = wants_argument && !has_argument;
    if (has_argument && !wants_argument) {
        options.error = text("%s takes no argument", name.c_str());
        return 0;
    }
    if (takes_next && count < 2) {
        options.error = text("%s needs its %s", name.c_str(), row->argument);
        return 0;
    }
    if (takes_next) {
        argument = words[1];
    }
    options.range.clear();
    if (!row->apply(options, argument)) {
        if (options.error.empty()) {
            options.error =
                text("%s cannot be '%s'%s", name.c_str(), argument.c_str(),
                     (options.range.empty() ? "" : "; it must be " + options.range).c_str());
        }
        return 0;
    }
    options.shapes_board = options.shapes_board || row->shapes_board;
    return takes_next ? 2 : 1;
}

void check_together(LaunchOptions &options)
{
    if (options.help || options.commands || !options.completion.empty()) {
        return;
    }
    if (options.command.empty()) {
        options.error = "no command to run; see --help";
    } else if (options.run.through && options.shapes_board) {
        options.error = "--through uses the real device: it works only with --transcript";
    } else if (!options.emulator.empty() && options.preload.empty()) {
        options.error = "--emulator needs --preload, a library of the command's architecture";
    }
}

} // namespace

LaunchOptions parse_options(int argc, char **argv)
{
    LaunchOptions options;
    int at = 1;
    while (at < argc && argv[at][0] == '-') {
        if (strcmp(argv[at], "--") == 0) {
            ++at;
            break;
        }
        const int taken = take_option(options, argc - at, argv + at);
        if (taken == 0) {
            return options;
        }
        at += taken;
    }
    options.command.assign(argv + at, argv + argc);
    check_together(options);
    return options;
}

std::string describe_options()
{
    std::string lines;
    for (const OptionRow &row : OPTION_ROWS) {
        const std::string name = std::string(row.name) + ' ' + (row.argument ? row.argument : "");
        lines += text("  %-20s  %s\n", name.c_str(), row.help);
    }
    return lines;
}

} // namespace simulator
