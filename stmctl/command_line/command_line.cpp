// Builds a command line from a table of commands.
#include "stmctl/command_line/command_line.hpp"

#include "stmctl/command_line/arguments.hpp"
#include "stmctl/command_line/nearest.hpp"
#include "stmctl/output/output.hpp"
#include "stmctl/process/failure.hpp"

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include <algorithm>
#include <iterator>
#include <map>
#include <span>
#include <string>
#include <vector>

namespace stmctl
{

namespace
{

using Words = std::vector<std::string>;

struct CommandLine {
    explicit CommandLine(const Program &program) : app(program.summary, program.name) {}

    CLI::App app;
    std::map<const CLI::App *, Action> actions;
};

// Null if there is no such command.
const Command *find_command(std::span<const Command> rows, const std::string &name)
{
    const auto found =
        std::ranges::find_if(rows, [&](const Command &row) { return name == row.name; });
    return found == rows.end() ? nullptr : &*found;
}

template <typename Row>
Words names_of(std::span<const Row> rows)
{
    Words names;
    for (const Row &row : rows) {
        names.emplace_back(row.name);
    }
    return names;
}

// How much is declared: declaring everything takes longer than most commands run.
struct Extent {
    std::span<const std::string> words; // that call a command
    bool all;                           // also what these words do not need

    bool calls(const Command &row) const { return !words.empty() && words[0] == row.name; }
    Extent behind() const { return {words.subspan(std::min<size_t>(words.size(), 1)), all}; }
};

void declare_commands(CommandLine &line, CLI::App &parent, std::span<const Command> rows,
                      const Extent &extent);

void declare_command(CommandLine &line, CLI::App &parent, const Command &row, const Extent &extent)
{
    CLI::App *command = parent.add_subcommand(row.name, row.summary);
    if (!extent.all && !extent.calls(row)) {
        return; // help names it
    }
    command->set_help_flag("-h,--help", "show this help");
    command->footer(fmt::format("Examples:\n{}", row.examples));
    if (row.nested != nullptr) {
        declare_commands(line, *command, row.nested(), extent.behind());
    } else {
        line.actions[command] = row.declare(*command);
    }
}

void declare_commands(CommandLine &line, CLI::App &parent, std::span<const Command> rows,
                      const Extent &extent)
{
    parent.require_subcommand(1);
    const Command *called = extent.words.empty() ? nullptr : find_command(rows, extent.words[0]);
    for (const Command &row : rows) {
        if (extent.all || called == nullptr || &row == called) {
            declare_command(line, parent, row, extent);
        }
    }
}

std::string version_of(const Program &program)
{
    return fmt::format("{} {}", program.name, program.version);
}

bool asks_for_help(const std::string &word)
{
    return word == "--help" || word == "-h" || word == "help";
}

bool asks_for_version(const std::string &word)
{
    return word == "--version" || word == "-V";
}

void declare(CommandLine &line, const Program &program, std::span<const std::string> words)
{
    words = words.subspan(!words.empty() && asks_for_help(words[0]) ? 1 : 0);
    const Command *called = words.empty() ? nullptr : find_command(program.commands, words[0]);
    const Extent extent = {words, called != nullptr && called->needs_all};
    const CLI::Option *help =
        line.app.set_help_flag("-h,--help", "show this help, or that of a command or topic");
    if (extent.all) {
        add_offer(*help, some_of(names_of(program.topics)));
    }
    line.app.set_version_flag("-V,--version", version_of(program),
                              fmt::format("show {}'s version", program.name));
    line.app.footer(program.footer);
    declare_commands(line, line.app, program.commands, extent);
}

// The names come without the dashes.
std::string like_option(const std::string &word, const Words &names)
{
    constexpr std::string_view DASHES = "--";
    return word.starts_with(DASHES)
               ? suggestion(word.substr(DASHES.size(), word.find('=') - DASHES.size()), names,
                            DASHES)
               : "";
}

[[noreturn]] void refuse(const std::string &sentence, const std::string &path)
{
    throw Failure(ExitStatus::usage, with_reference(sentence, path + " --help"));
}

// CLI11 only says that a command is required. The path consists of the commands so far.
void expect_command(std::span<const Command> rows, std::span<const std::string> words,
                    const std::string &path)
{
    if (words.empty()) {
        refuse("no command given", path);
    }
    const bool is_nested = path.find(' ') != std::string::npos;
    if (words[0] == "--help" || words[0] == "-h" || (!is_nested && asks_for_version(words[0]))) {
        return;
    }
    if (words[0].starts_with('-')) {
        const Words known = is_nested ? Words{"help"} : Words{"help", "version"};
        refuse(fmt::format("unknown option '{}' before the command{}", words[0],
                           like_option(words[0], known)),
               path);
    }
    const Command *row = find_command(rows, words[0]);
    if (row == nullptr) {
        refuse(
            fmt::format("unknown command '{}'{}", words[0], suggestion(words[0], names_of(rows))),
            path);
    }
    if (row->nested != nullptr) {
        expect_command(row->nested(), words.subspan(1), fmt::format("{} {}", path, row->name));
    }
}

// "--help access" shows a topic, "--help flash" what "flash --help" does.
// Returns whether a topic was shown.
bool take_help_topic(const Program &program, Words &words)
{
    if (words.empty() || !asks_for_help(words[0])) {
        return false;
    }
    words[0] = "--help";
    if (words.size() != 2) {
        return false;
    }
    const auto topic = std::ranges::find_if(
        program.topics, [&](const HelpTopic &one) { return words[1] == one.name; });
    if (topic != program.topics.end()) {
        print(topic->text);
        return true;
    }
    if (find_command(program.commands, words[1]) == nullptr) {
        Words names = names_of(program.commands);
        std::ranges::copy(names_of(program.topics), std::back_inserter(names));
        refuse(fmt::format("there is no help for '{}'{}", words[1], suggestion(words[1], names)),
               program.name);
    }
    return false;
}

// The command that was parsed; path gets its name, after those of its parents.
const CLI::App *parsed_command(const CLI::App &app, std::string &path)
{
    const CLI::App *at = &app;
    for (path = app.get_name(); !at->get_subcommands().empty();) {
        at = at->get_subcommands().front();
        path += ' ' + at->get_name();
    }
    return at;
}

// A suggestion for the first unexpected word that resembles one of the command's options.
std::string suggested_option(const CLI::App &command, const Words &extras)
{
    Words names;
    for (const CLI::Option *option : command.get_options()) {
        std::ranges::copy(option->get_lnames(), std::back_inserter(names));
    }
    for (const std::string &extra : extras) {
        std::string found = like_option(extra, names);
        if (!found.empty()) {
            return found;
        }
    }
    return "";
}

// For words that cannot be parsed.
void explain_missing_option(const Program &program, const Words &words)
{
    for (const std::string &word : words) {
        const std::string name = word.substr(0, word.find('='));
        const auto row = std::ranges::find_if(
            program.missing_options, [&](const MissingOption &one) { return name == one.name; });
        if (row != program.missing_options.end()) {
            throw Failure(ExitStatus::usage, row->sentence);
        }
    }
}

// CLI11's own sentence, except where it counts values: an option takes one, a flag none.
std::string sentence_of(const CLI::ParseError &error)
{
    constexpr std::string_view NOT_CONVERTED = "Could not convert: ";
    const std::string text = error.what();
    const std::string name = text.substr(0, text.find(':'));
    if (text.starts_with(NOT_CONVERTED)) {
        const std::string flag = text.substr(NOT_CONVERTED.size());
        return flag.substr(0, flag.find(' ')) + " takes no value";
    }
    if (text.find(": At Most 1 ") != std::string::npos) {
        return name + " can be given only once";
    }
    return text.ends_with(" missing") ? name + " needs a value" : text;
}

// Returns whether there is something to run: help and version have been printed by then.
bool parse(const Program &program, CommandLine &line, const Words &words)
{
    try {
        Words reversed(words.rbegin(), words.rend()); // as CLI11 wants them
        line.app.parse(reversed);
        return true;
    } catch (const CLI::CallForVersion &request) {
        print(fmt::format("{}\n", request.what()));
    } catch (const CLI::Success &) {
        print(line.app.help());
    } catch (const CLI::ExtrasError &) {
        explain_missing_option(program, words);
        std::string path;
        const CLI::App *command = parsed_command(line.app, path);
        const Words extras = line.app.remaining(true);
        refuse(fmt::format("unexpected argument{}: {}{}", extras.size() == 1 ? "" : "s",
                           fmt::join(extras, " "), suggested_option(*command, extras)),
               path);
    } catch (const CLI::ParseError &error) {
        explain_missing_option(program, words);
        std::string path;
        parsed_command(line.app, path);
        refuse(sentence_of(error), path);
    }
    return false;
}

ExitStatus run(const Program &program, Words words)
{
    if (words.size() == 1 && asks_for_version(words[0])) { // at once, because scripts ask for it
        print(version_of(program) + '\n');
        return ExitStatus::done;
    }
    if (take_help_topic(program, words)) {
        return ExitStatus::done;
    }
    if (!words.empty() && find_command(program.commands, words[0]) == nullptr) {
        explain_missing_option(program, {words[0]});
    }
    expect_command(program.commands, words, program.name);
    CommandLine line(program);
    declare(line, program, words);
    if (!parse(program, line, words)) {
        return ExitStatus::done;
    }
    std::string path;
    return line.actions.at(parsed_command(line.app, path))();
}

} // namespace

ExitStatus run_command_line(const Program &program, int argc, char **argv)
{
    try {
        return run(program, Words(argv + std::min(argc, 1), argv + argc));
    } catch (const Failure &failure) {
        say(failure.what());
        return failure.status();
    } catch (const std::exception &error) {
        say(error.what());
        return ExitStatus::failed;
    }
}

} // namespace stmctl
