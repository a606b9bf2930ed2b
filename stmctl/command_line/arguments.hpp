// Declares what follows the name of a command: flags, options with a value, operands.
//
// All values are taken as words; numbers.hpp converts them to numbers.
#pragma once

#include <string>
#include <vector>

namespace CLI
{
class App;
class Option;
} // namespace CLI

namespace stmctl
{

// What a shell may offer for a value, and whether nothing else is accepted.
struct Offer {
    std::vector<std::string> words;
    bool files = false;
    bool only_these = false;
};

Offer names_of_files();
Offer some_of(std::vector<std::string> words);
Offer one_of(std::vector<std::string> words);

// names are as in "-y,--yes".
void add_flag(CLI::App &command, const char *names, bool &value, const char *help);

// A word that value already holds is shown as the default.
void add_option(CLI::App &command, const char *names, const char *value_name, std::string &value,
                const char *help, const Offer &offer = {});

enum class Presence { required, optional };

void add_operand(CLI::App &command, const char *name, Presence presence, std::string &value,
                 const char *help, const Offer &offer = {});
void add_operands(CLI::App &command, const char *name, Presence presence,
                  std::vector<std::string> &values, const char *help);

// "-q" and "-v", which take effect at once.
void add_detail(CLI::App &command);

// What a shell may offer after a flag.
void add_offer(const CLI::Option &flag, const Offer &offer);

// What was offered for an option or operand.
const Offer &offer_for(const CLI::Option &option);

} // namespace stmctl
