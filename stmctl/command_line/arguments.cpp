// Declares what follows the name of a command.
#include "stmctl/command_line/arguments.hpp"

#include "stmctl/command_line/nearest.hpp"
#include "stmctl/output/output.hpp"
#include "stmctl/process/failure.hpp"

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include <algorithm>
#include <map>

namespace stmctl
{

namespace
{

std::map<const CLI::Option *, Offer> &offers()
{
    static std::map<const CLI::Option *, Offer> all;
    return all;
}

// Names the words, and the one that was probably meant.
std::string why_not_one_of(const std::vector<std::string> &words, const std::string &word)
{
    if (std::ranges::find(words, word) != words.end()) {
        return "";
    }
    return fmt::format("'{}' is not one of {}{}", word, fmt::join(words, ", "),
                       suggestion(word, words));
}

// The help shows the words after the name of the value.
void make_offer(CLI::Option &option, const char *value_name, const Offer &offer)
{
    offers()[&option] = offer;
    option.type_name(value_name);
    if (offer.only_these) {
        option.type_name(fmt::format("{}{}{{{}}}", value_name, *value_name == 0 ? "" : ":",
                                     fmt::join(offer.words, ",")));
        option.check(
            [words = offer.words](const std::string &word) { return why_not_one_of(words, word); });
    }
}

// As in a script whose variable is not set: it must not pass for an option that was not given.
std::string is_given(const std::string &word)
{
    return word.empty() ? "the value is empty" : "";
}

void choose(Detail wanted)
{
    if (detail() != Detail::usual && detail() != wanted) {
        throw Failure(ExitStatus::usage, "--quiet and --verbose cannot be combined");
    }
    set_detail(wanted);
}

} // namespace

Offer names_of_files()
{
    return {.words = {}, .files = true, .only_these = false};
}

Offer some_of(std::vector<std::string> words)
{
    return {.words = std::move(words), .files = false, .only_these = false};
}

Offer one_of(std::vector<std::string> words)
{
    return {.words = std::move(words), .files = false, .only_these = true};
}

void add_flag(CLI::App &command, const char *names, bool &value, const char *help)
{
    command.add_flag(names, value, help);
}

void add_option(CLI::App &command, const char *names, const char *value_name, std::string &value,
                const char *help, const Offer &offer)
{
    const bool has_default = !value.empty();
    CLI::Option *option = command.add_option(names, value, help);
    option->check(is_given);
    if (has_default) {
        option->capture_default_str();
    }
    make_offer(*option, value_name, offer);
}

void add_operand(CLI::App &command, const char *name, Presence presence, std::string &value,
                 const char *help, const Offer &offer)
{
    CLI::Option *option = command.add_option(name, value, help);
    option->required(presence == Presence::required);
    option->check(is_given);
    make_offer(*option, "", offer);
}

void add_operands(CLI::App &command, const char *name, Presence presence,
                  std::vector<std::string> &values, const char *help)
{
    command.add_option(name, values, help)->type_name("")->required(presence == Presence::required);
}

void add_detail(CLI::App &command)
{
    command.add_flag_callback(
        "-q,--quiet", [] { choose(Detail::quiet); }, "show no progress and no summary");
    command.add_flag_callback(
        "-v,--verbose", [] { choose(Detail::verbose); }, "report what is done in more detail");
}

void add_offer(const CLI::Option &flag, const Offer &offer)
{
    offers()[&flag] = offer;
}

const Offer &offer_for(const CLI::Option &option)
{
    return offers()[&option];
}

} // namespace stmctl
