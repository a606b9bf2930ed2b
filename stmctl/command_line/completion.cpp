// completion: a script for a shell, generated from the command line itself.
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

constexpr char FILES[] = "<file>"; // represents the names of files

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

// The tables of the script: associative arrays, one line per entry.
struct Tables {
    std::string row;      // how the shell writes an entry with its key and words
    std::string commands; // path -> its commands
    std::string options;  // path -> its options
    std::string valued;   // path -> those of them that take a value
    std::string words;    // path and option, or path and number of the operand -> what to offer
};

void add_row(const Tables &tables, std::string &table, const std::string &key,
             const std::string &words)
{
    if (!words.empty()) {
        table += fmt::format(fmt::runtime(tables.row), key, words);
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
            add_row(tables, tables.words, fmt::format("{} {}", path, ++operands), words);
        }
        for (const std::string &name : own) {
            names.push_back(name);
            if (option->get_items_expected_max() > 0) {
                valued.push_back(name);
            }
            add_row(tables, tables.words, fmt::format("{} {}", path, name), words);
        }
    }
    add_row(tables, tables.options, path, joined(names));
    add_row(tables, tables.valued, path, joined(valued));
}

void walk(Tables &tables, const CLI::App &app, const std::string &path)
{
    add_options(tables, app, path);
    Words commands;
    for (const CLI::App *command : app.get_subcommands([](const CLI::App *) { return true; })) {
        commands.push_back(command->get_name());
        walk(tables, *command, path + ' ' + command->get_name());
    }
    add_row(tables, tables.commands, path, joined(commands));
}

constexpr char BASH_SCRIPT[] =
    R"(# Completions of stmctl for bash:  source <(stmctl completion bash)
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
    if [[ $COMP_CWORD == 2 && ${{COMP_WORDS[1]}} =~ ^(--help|-h|help)$ ]]; then
        offered="${{words[$path --help]-}} ${{commands[$path]-}}"
    elif [[ -n $previous ]]; then
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

constexpr char ZSH_SCRIPT[] = R"(#compdef stmctl
# Completions of stmctl for zsh:  source <(stmctl completion zsh), or a file _stmctl in fpath
_stmctl()
{{
    local -A commands options valued offers
    commands=(
{commands}    )
    options=(
{options}    )
    valued=(
{valued}    )
    offers=(
{words}    )
    local at=stmctl previous= word offered i operand=1
    for ((i = 2; i < CURRENT; ++i)); do
        word=${{words[i]}}
        if [[ -n $previous ]]; then
            previous=
        elif [[ " ${{valued[$at]-}} " == *" $word "* ]]; then
            previous=$word
        elif [[ " ${{commands[$at]-}} " == *" $word "* ]]; then
            at+=" $word"
        elif [[ $word != -* ]]; then
            ((++operand))
        fi
    done
    local current=${{words[CURRENT]}}
    if [[ -z $previous && $current == --*=* ]]; then
        previous=${{current%%=*}}
        compset -P '*='
    fi
    if [[ $CURRENT == 3 && ${{words[2]}} == (--help|-h|help) ]]; then
        offered="${{offers[$at --help]-}} ${{commands[$at]-}}"
    elif [[ -n $previous ]]; then
        offered=${{offers[$at $previous]-}}
    elif [[ $current == -* ]]; then
        offered=${{options[$at]-}}
    else
        offered="${{commands[$at]-}} ${{offers[$at $operand]-}}"
    fi
    if [[ $offered == *"{files}"* ]]; then
        _files
    else
        compadd -- ${{=offered}}
    fi
}}
if [[ ${{funcstack[1]-}} == _stmctl ]]; then
    _stmctl "$@"
else
    compdef _stmctl stmctl
fi
)";

struct Shell {
    const char *name;
    const char *row;
    const char *script;
};

constexpr Shell SHELLS[] = {
    {"bash", "        [\"{}\"]=\"{}\"\n", BASH_SCRIPT},
    {"zsh", "        \"{}\" \"{}\"\n", ZSH_SCRIPT},
};

ExitStatus print_script(const CLI::App &root, const Shell &shell)
{
    Tables tables;
    tables.row = shell.row;
    walk(tables, root, root.get_name());
    print(fmt::format(fmt::runtime(shell.script), fmt::arg("commands", tables.commands),
                      fmt::arg("options", tables.options), fmt::arg("valued", tables.valued),
                      fmt::arg("words", tables.words), fmt::arg("files", FILES)));
    return ExitStatus::done;
}

} // namespace

Action declare_completion(CLI::App &command)
{
    auto name = std::make_shared<std::string>();
    add_operand(command, "SHELL", Presence::required, *name, "the shell",
                one_of({SHELLS[0].name, SHELLS[1].name}));
    const CLI::App *root = command.get_parent();
    return [name, root] {
        return print_script(*root, *name == SHELLS[0].name ? SHELLS[0] : SHELLS[1]);
    };
}

} // namespace stmctl
