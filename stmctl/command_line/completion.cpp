// completion: a script for bash, made from the command line itself.
#include "stmctl/command_line/completion.hpp"

#include "stmctl/command_line/arguments.hpp"
#include "stmctl/output/output.hpp"

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include <memory>

namespace stmctl
{

namespace
{

using Words = std::vector<std::string>;

constexpr char FILES[] = "<file>"; // stands for the names of files

std::string joined(const Words &words)
{
    std::string line;
    for (const std::string &word : words) {
        line += (line.empty() ? "" : " ") + word;
    }
    return line;
}

Words names_of(const CLI::Option &option)
{
    Words names;
    for (const std::string &name : option.get_lnames()) {
        names.push_back("--" + name);
    }
    for (const std::string &name : option.get_snames()) {
        names.push_back("-" + name);
    }
    return names;
}

// The tables of the script: bash's associative arrays, a line each.
struct Tables {
    std::string commands; // path -> its commands
    std::string options;  // path -> its options
    std::string valued;   // path -> those of them that a value follows
    std::string words;    // path and option, or path and number of the operand -> what to offer
};

void add_row(std::string &table, const std::string &key, const std::string &words)
{
    if (!words.empty()) {
        table += fmt::format("        [\"{}\"]=\"{}\"\n", key, words);
    }
}

void add_options(Tables &tables, const CLI::App &app, const std::string &path)
{
    Words names;
    Words valued;
    int operands = 0;
    for (const CLI::Option *option : app.get_options()) {
        const Words own = names_of(*option);
        const Offer &offer = offer_for(*option);
        const std::string words = offer.files ? FILES : joined(offer.words);
        if (own.empty()) {
            add_row(tables.words, fmt::format("{} {}", path, ++operands), words);
        }
        for (const std::string &name : own) {
            names.push_back(name);
            if (option->get_items_expected_max() > 0) {
                valued.push_back(name);
                add_row(tables.words, fmt::format("{} {}", path, name), words);
            }
        }
    }
    add_row(tables.options, path, joined(names));
    add_row(tables.valued, path, joined(valued));
}

void walk(Tables &tables, const CLI::App &app, const std::string &path)
{
    add_options(tables, app, path);
    Words commands;
    for (const CLI::App *command : app.get_subcommands([](const CLI::App *) { return true; })) {
        commands.push_back(command->get_name());
        walk(tables, *command, path + ' ' + command->get_name());
    }
    add_row(tables.commands, path, joined(commands));
}

constexpr char SCRIPT[] = R"(# Completions of stmctl for bash:  source <(stmctl completion bash)
_stmctl()
{{
    local -A commands=(
{commands}    )
    local -A options=(
{options}    )
    local -A valued=(
{valued}    )
    local -A words=(
{words}    )
    local path=stmctl operand=1 previous= word i
    for ((i = 1; i < COMP_CWORD; ++i)); do
        word=${{COMP_WORDS[i]}}
        if [[ $word == = ]]; then
            continue # bash makes a word of it
        elif [[ -n $previous ]]; then
            previous=
        elif [[ " ${{valued[$path]-}} " == *" $word "* ]]; then
            previous=$word
        elif [[ " ${{commands[$path]-}} " == *" $word "* ]]; then
            path+=" $word"
        elif [[ $word != -* ]]; then
            ((++operand))
        fi
    done
    local current=${{COMP_WORDS[COMP_CWORD]#=}} offered
    if [[ -n $previous ]]; then
        offered=${{words[$path $previous]-}}
    elif [[ $current == -* ]]; then
        offered=${{options[$path]-}}
    else
        offered="${{commands[$path]-}} ${{words[$path $operand]-}}"
    fi
    if [[ $offered == *"{files}"* ]]; then
        compopt -o filenames 2>/dev/null || true # it is an error where nobody completes
        mapfile -t COMPREPLY < <(compgen -f -- "$current")
    else
        mapfile -t COMPREPLY < <(compgen -W "$offered" -- "$current")
    fi
}}
complete -F _stmctl stmctl
)";

} // namespace

Action declare_completion(CLI::App &command)
{
    auto shell = std::make_shared<std::string>();
    add_operand(command, "SHELL", Presence::required, *shell, "the shell", one_of({"bash"}));
    const CLI::App *root = command.get_parent();
    return [shell, root] {
        Tables tables;
        walk(tables, *root, root->get_name());
        print(fmt::format(SCRIPT, fmt::arg("commands", tables.commands),
                          fmt::arg("options", tables.options), fmt::arg("valued", tables.valued),
                          fmt::arg("words", tables.words), fmt::arg("files", FILES)));
        return ExitStatus::done;
    };
}

} // namespace stmctl
