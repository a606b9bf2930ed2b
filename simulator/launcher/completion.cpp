// Completions of virtual-board for a shell.
#include "simulator/launcher/completion.hpp"

#include "simulator/faults/faults.hpp"
#include "simulator/store/board_directory.hpp"
#include "simulator/store/order.hpp"

#include <string_view>

namespace simulator
{

namespace
{

// Placeholders in a script: for the options, and for the possible arguments.
constexpr std::string_view OPTIONS_PLACE = "%OPTIONS%";
constexpr std::string_view VALUED_PLACE = "%VALUED%";
constexpr std::string_view ARGUMENTS_PLACE = "%ARGUMENTS%";
constexpr std::string_view ORDERS_PLACE = "%ORDERS%";

constexpr char BASH_SCRIPT[] =
    R"(# Completions of virtual-board for bash:  source <(virtual-board --completion bash)
_virtual_board()
{
    local previous= word current=${COMP_WORDS[COMP_CWORD]#[=]} i
    for ((i = 1; i < COMP_CWORD; ++i)); do
        word=${COMP_WORDS[i]}
        if [[ $word == [=@] ]]; then # bash makes a word of it
            ((i + 1 < COMP_CWORD)) && { previous=; ((++i)); }
        elif [[ -n $previous ]]; then
            previous=
        elif [[ " %VALUED% " == *" $word "* ]]; then
            previous=$word
        elif [[ $word == -- ]]; then
            ((++i))
            break
        elif [[ $word != -* ]]; then
            break
        fi
    done
    COMPREPLY=()
    if ((i < COMP_CWORD)); then # what the command itself has
        local command=${COMP_WORDS[i]}
        if ((i == 1)) && [[ $command == tell ]]; then
            if ((COMP_CWORD == 2)); then
                compopt -o filenames 2>/dev/null || true
                mapfile -t COMPREPLY < <(compgen -d -- "$current")
            elif ((COMP_CWORD == 3)); then
                mapfile -t COMPREPLY < <(compgen -W '%ORDERS%' -- "$current")
            fi
        elif [[ $(complete -p "${command##*/}" 2>/dev/null) =~ -F\ ([^ ]+) ]]; then
            local function=${BASH_REMATCH[1]}
            COMP_WORDS=("${COMP_WORDS[@]:i}")
            COMP_CWORD=$((COMP_CWORD - i))
            "$function" "$command" "$current" "${COMP_WORDS[COMP_CWORD - 1]}"
        else
            compopt -o filenames 2>/dev/null || true # an error outside a completion
            mapfile -t COMPREPLY < <(compgen -f -- "$current")
        fi
        return
    fi
    case $previous in
    '')
        if [[ $current == -* ]]; then
            mapfile -t COMPREPLY < <(compgen -W '%OPTIONS%' -- "$current")
        else
            mapfile -t COMPREPLY < <(compgen -c -- "$current")
            if ((COMP_CWORD == 1)) && [[ tell == "$current"* ]]; then
                COMPREPLY+=(tell)
            fi
        fi
        ;;
%ARGUMENTS%    esac
}
complete -F _virtual_board virtual-board
)";

constexpr char ZSH_SCRIPT[] = R"(#compdef virtual-board
# Completions of virtual-board for zsh:  source <(virtual-board --completion zsh)
_virtual_board()
{
    local previous= word i
    for ((i = 2; i < CURRENT; ++i)); do
        word=${words[i]}
        if [[ -n $previous ]]; then
            previous=
        elif [[ " %VALUED% " == *" $word "* ]]; then
            previous=$word
        elif [[ $word == -- ]]; then
            ((++i))
            break
        elif [[ $word != -* ]]; then
            break
        fi
    done
    if ((i == 2 && CURRENT > 2)) && [[ ${words[2]} == tell ]]; then
        if ((CURRENT == 3)); then
            _files -/
        elif ((CURRENT == 4)); then
            compadd -- %ORDERS%
        fi
        return
    fi
    if ((i < CURRENT)); then # what the command itself has
        words=("${(@)words[i,-1]}")
        ((CURRENT -= i - 1))
        _normal
        return
    fi
    if [[ -z $previous && ${words[CURRENT]} == --*=* ]]; then
        previous=${words[CURRENT]%%=*}
        compset -P 1 '*='
    fi
    case $previous in
    '')
        if [[ ${words[CURRENT]} == -* ]]; then
            compadd -- %OPTIONS%
        else
            if ((CURRENT == 2)); then
                compadd -- tell
            fi
            _command_names -e
        fi
        ;;
%ARGUMENTS%    esac
}
if [[ ${funcstack[1]-} == _virtual_board ]]; then
    _virtual_board "$@"
else
    compdef _virtual_board virtual-board
fi
)";

struct Shell {
    std::string_view name;
    const char *script;
    const char *words; // offers them; between the two
    const char *behind_words;
    const char *files;
};

constexpr Shell SHELLS[] = {
    {"bash", BASH_SCRIPT,
     "compopt -o nospace 2>/dev/null || true\n        "
     "mapfile -t COMPREPLY < <(compgen -W '",
     "' -- \"$current\")",
     "compopt -o filenames 2>/dev/null || true\n        "
     "mapfile -t COMPREPLY < <(compgen -f -- \"$current\")"},
    {"zsh", ZSH_SCRIPT, "compadd -S '' -- ", "", "_files"},
};

std::string joined(const std::vector<std::string> &words)
{
    std::string line;
    for (const std::string &word : words) {
        line += (line.empty() ? "" : " ") + word;
    }
    return line;
}

// The possible values of an argument of this name.
std::string words_for(const std::string &argument)
{
    if (argument == "FAULT") {
        return joined(beginnings_of_faults());
    }
    if (argument == "MODE") {
        return joined({mode_name(Mode::application), mode_name(Mode::unknown)});
    }
    return argument == "SHELL" ? joined({std::string(SHELLS[0].name), std::string(SHELLS[1].name)})
                               : "";
}

std::string order_words()
{
    std::vector<std::string> words;
    for (const Order &order : orders()) {
        words.emplace_back(order.words);
    }
    return joined(words);
}

std::string line_for(const Shell &shell, const OptionWords &option)
{
    const std::string words = words_for(option.argument);
    const bool names_files = option.argument == "DIR" || option.argument == "FILE";
    if (words.empty() && !names_files) {
        return "";
    }
    const std::string offer = names_files ? shell.files : shell.words + words + shell.behind_words;
    return "    " + option.name + ")\n        " + offer + "\n        ;;\n";
}

void put(std::string &script, std::string_view place, const std::string &words)
{
    for (size_t at = script.find(place); at != std::string::npos; at = script.find(place, at)) {
        script.replace(at, place.size(), words);
        at += words.size();
    }
}

} // namespace

std::string completion_script(const std::string &shell, const std::vector<OptionWords> &options)
{
    for (const Shell &row : SHELLS) {
        if (shell != row.name) {
            continue;
        }
        std::vector<std::string> names;
        std::vector<std::string> valued;
        std::string arguments;
        for (const OptionWords &option : options) {
            names.push_back(option.name);
            if (!option.argument.empty()) {
                valued.push_back(option.name);
            }
            arguments += line_for(row, option);
        }
        std::string script = row.script;
        put(script, OPTIONS_PLACE, joined(names));
        put(script, VALUED_PLACE, joined(valued));
        put(script, ARGUMENTS_PLACE, arguments);
        put(script, ORDERS_PLACE, order_words());
        return script;
    }
    return "";
}

} // namespace simulator
