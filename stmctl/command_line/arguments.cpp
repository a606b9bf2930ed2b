// Declares what stands behind the name of a command.
#include "stmctl/command_line/arguments.hpp"

#include "stmctl/command_line/nearest.hpp"
#include "stmctl/output/output.hpp"
#include "stmctl/process/failure.hpp"

#include <CLI/CLI.hpp>

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

// As CLI11 has it, with the word that may have been meant.
CLI::Validator member_of(const std::vector<std::string> &words)
{
    const CLI::Validator member = CLI::IsMember(words);
    CLI::Validator named = member;
    named.operation([member, words](std::string &word) {
        const std::string error = member(word);
        return error.empty() ? error : error + suggestion(word, words);
    });
    return named;
}

void make_offer(CLI::Option &option, const Offer &offer)
{
    offers()[&option] = offer;
    if (offer.only_these) {
        option.check(member_of(offer.words));
    }
}

// As a script has it whose variable is not set: it must not pass for an option not given.
std::string is_given(const std::string &word)
{
    return word.empty() ? "nothing is given" : "";
}

void choose(Detail wanted)
{
    if (detail() != Detail::usual && detail() != wanted) {
        throw Failure(ExitStatus::usage, "--quiet and --verbose exclude each other");
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
    CLI::Option *option = command.add_option(names, value, help)->type_name(value_name);
    option->check(is_given);
    if (has_default) {
        option->capture_default_str();
    }
    make_offer(*option, offer);
}

void add_operand(CLI::App &command, const char *name, Presence presence, std::string &value,
                 const char *help, const Offer &offer)
{
    CLI::Option *option = command.add_option(name, value, help)->type_name("");
    option->required(presence == Presence::required);
    option->check(is_given);
    make_offer(*option, offer);
}

void add_operands(CLI::App &command, const char *name, Presence presence,
                  std::vector<std::string> &values, const char *help)
{
    command.add_option(name, values, help)->type_name("")->required(presence == Presence::required);
}

void add_detail(CLI::App &command)
{
    command.add_flag_callback(
        "-q,--quiet", [] { choose(Detail::quiet); }, "no progress and no summary");
    command.add_flag_callback(
        "-v,--verbose", [] { choose(Detail::verbose); }, "say more of what is done");
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
