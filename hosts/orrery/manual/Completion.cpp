#include "hosts/orrery/manual/Completion.h"

#include <algorithm>
#include <cctype>

namespace Orrery::Host {

namespace {

struct FileKind
{
    const char* words; ///< of a description, in small letters
    const char* endings;
};

const FileKind s_fileKinds[] = {
    {"data file", "h5 hdf5"}, {"raw", "raw"},  {"touchstone", "s1p s2p s3p s4p ts"},
    {"csv", "csv"},           {".svg", "svg"}, {".png", "png"},
    {"netcdf", "nc h5"},
};

// The part that no command changes. Names of nodes and files are handed to readline as they are, which quotes them;
// nothing that was typed is ever evaluated.
const char s_functions[] = R"bash(
# Sets words, cword, cur and behind: the words as the shell will split them, which one is completed, and what of that
# one bash doesn't take for a part of it, since it also breaks words at : and =.
_orrery_split()
{
    local i rest=$COMP_LINE word bare
    words=() cword=0
    for ((i = 0; i < ${#COMP_WORDS[@]}; i++)); do
        word=${COMP_WORDS[i]}
        bare=${rest#"${rest%%[![:space:]]*}"}
        if [[ i -gt 0 && ( $bare == "$rest" && -n $rest || -z $word && -z $rest && ${COMP_WORDS[i-1]} == [:=] ) ]]; then
            words[${#words[@]}-1]+=$word
        else
            words+=("$word")
        fi
        rest=${bare#"$word"}
        if ((i == COMP_CWORD)); then
            cword=$((${#words[@]} - 1))
            cur=${words[cword]}
            behind=${cur%"$word"}
            [[ $word == [:=] ]] && behind=$cur
        fi
    done
}

# Sets plain: what the shell makes of a word, without expanding anything but ~/; and open, the quote that isn't closed.
_orrery_unquote()
{
    local word=$1 quote= c i
    plain=
    for ((i = 0; i < ${#word}; i++)); do
        c=${word:i:1}
        if [[ $quote == "'" ]]; then
            if [[ $c == "'" ]]; then quote=; else plain+=$c; fi
        elif [[ $c == '\' && ( -z $quote || ${word:i+1:1} == [\"\\\$\`] ) ]]; then
            i=$((i + 1))
            plain+=${word:i:1}
        elif [[ $c == '"' ]]; then
            if [[ $quote == '"' ]]; then quote=; else quote='"'; fi
        elif [[ $c == "'" && -z $quote ]]; then
            quote=$c
        else
            plain+=$c
        fi
    done
    open=$quote
    if [[ ${word:0:2} == '~/' ]]; then
        plain=$HOME${plain:1}
    fi
}

_orrery_option() # how readline is to treat what is offered; refused outside of a completion, as in a test
{
    compopt -o "$1" 2>/dev/null
}

# Offers the words of which $2 is the beginning, a line each in $1.
_orrery_offer()
{
    local line
    while IFS= read -r line; do
        if [[ -n $line && ${line:0:${#2}} == "$2" ]]; then
            COMPREPLY+=("$line")
        fi
    done <<<"$1"
}

# Offers folders and the files with one of the endings in $2; all files if there is none of these.
_orrery_files()
{
    local file ending found=() others=()
    for file in "$1"*; do
        [[ -e $file || -L $file ]] || continue
        if [[ -d $file ]]; then
            found+=("$file")
            continue
        fi
        others+=("$file")
        for ending in $2; do
            if [[ ${file,,} == *".$ending" ]]; then
                found+=("$file")
                break
            fi
        done
    done
    if [[ ${#found[@]} -eq 0 || -z $2 ]]; then
        found+=("${others[@]}")
    fi
    if [[ ${cur:0:2} == '~/' ]]; then
        found=("${found[@]/#"$HOME"/\~}")
    fi
    COMPREPLY+=("${found[@]}")
    _orrery_option filenames
}

# Offers what the program itself knows.
_orrery_ask()
{
    local program answer plain open
    _orrery_unquote "${words[0]}"
    program=$plain
    answer=$("$program" --color=never __complete -- "$@" 2>/dev/null </dev/null)
    _orrery_offer "$answer" ''
}

_orrery_nodes()
{
    local prefix=$1 node i
    _orrery_ask nodes "$data_file" "$prefix"
    for node in "${COMPREPLY[@]}"; do
        [[ $node == */ ]] && _orrery_option nospace
    done
    _orrery_option filenames
    if [[ ${COMPREPLY[*]} == *[\$\`]* && -z $open ]]; then # readline leaves these to the shell
        compopt +o filenames 2>/dev/null
        for i in "${!COMPREPLY[@]}"; do
            printf -v "COMPREPLY[i]" %q "${COMPREPLY[i]}"
        done
    fi
}

# Lets readline quote what is offered where there is a blank. It would shorten "km/h" to "h" in its lists otherwise.
_orrery_quotes()
{
    local word
    for word in "${COMPREPLY[@]}"; do
        if [[ $word == *[[:space:]]* ]]; then
            _orrery_option filenames
            return
        fi
    done
}

# Offers what fits the kind $1 and begins with what is typed, $2.
_orrery_kind()
{
    local list
    case $1 in
    files*) _orrery_files "$2" "${1#files}" ;;
    nodes) _orrery_nodes "$2" ;;
    units)
        list=
        [[ $2 == *,* ]] && list=${2%"${2##*,}"}
        _orrery_ask units "${2#"$list"}"
        COMPREPLY=("${COMPREPLY[@]/#/"$list"}")
        _orrery_quotes
        ;;
    types)
        _orrery_ask types "$2"
        _orrery_quotes
        ;;
    words*)
        list=${1#words }
        _orrery_offer "${list// /$'\n'}" "$2"
        ;;
    esac
}

# Sets command, and of the words before the one that is completed: how many arguments there are (count), the
# option that still wants its value (pending), whether only arguments follow (is_over), and data_file.
_orrery_scan()
{
    local i word
    command= pending= count=0 is_over= data_file=
    for ((i = 1; i < cword; i++)); do
        word=${words[i]}
        if [[ -n $pending ]]; then
            pending=
        elif [[ $word == -- && -z $is_over ]]; then
            is_over=yes
        elif [[ $word == -?* && -z $is_over ]]; then
            if [[ $word != --*=* && -n $(_orrery_option_kind "$command" "$word") ]]; then
                pending=$word
            fi
        elif [[ -z $command ]]; then
            command=$word
        else
            if [[ $(_orrery_argument_kind "$command" "$count") == 'files h5'* && -z $data_file ]]; then
                _orrery_unquote "$word"
                data_file=$plain
            fi
            count=$((count + 1))
        fi
    done
}

_orrery()
{
    local words cword cur behind plain open command pending count is_over data_file option= i
    COMPREPLY=()
    _orrery_split
    _orrery_scan
    if [[ -n $pending ]]; then
        _orrery_unquote "$cur"
        _orrery_kind "$(_orrery_option_kind "$command" "$pending")" "$plain"
    elif [[ $cur == --*=* && -z $is_over ]]; then
        option=${cur%%=*}=
        cur=${cur#*=}
        _orrery_unquote "$cur"
        _orrery_kind "$(_orrery_option_kind "$command" "${option%=}")" "$plain"
        COMPREPLY=("${COMPREPLY[@]/#/"$option"}")
    elif [[ $cur == -* && -z $is_over ]]; then
        _orrery_offer "$(_orrery_options "$command")" "$cur"
    elif [[ -z $command ]]; then
        _orrery_offer "$_orrery_commands" "$cur"
    else
        _orrery_unquote "$cur"
        _orrery_kind "$(_orrery_argument_kind "$command" "$count")" "$plain"
    fi
    if [[ -n $behind ]]; then
        _orrery_unquote "$behind"
        for ((i = 0; i < ${#COMPREPLY[@]}; i++)); do
            COMPREPLY[i]=${COMPREPLY[i]#"$plain"}
        done
    fi
}

complete -F _orrery orrery
)bash";

// Inside single quotes of the shell.
std::string inShellQuotes(const std::string& text)
{
    std::string out = "'";
    for (const char c : text) {
        if (c == '\'')
            out += "'\\''";
        else
            out += c;
    }
    return out + "'";
}

std::string lowered(std::string text)
{
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return text;
}

bool isArgument(const OptionText& option)
{
    return option.names.front().front() != '-';
}

std::string fileKind(const std::string& description)
{
    std::string kind = "files";
    for (const FileKind& row : s_fileKinds) {
        if (description.find(row.words) != std::string::npos)
            kind += std::string(" ") + row.endings;
    }
    return kind;
}

std::vector<std::string> namesOfAll(const std::vector<OptionText>& options)
{
    std::vector<std::string> names;
    for (const OptionText& option : options)
        names.insert(names.end(), option.names.begin(), option.names.end());
    return names;
}

std::string lines(const std::vector<std::string>& words)
{
    std::string text;
    for (const std::string& word : words)
        text += (text.empty() ? "" : "\n") + word;
    return inShellQuotes(text);
}

std::string pattern(const std::string& command, const std::string& word)
{
    return inShellQuotes(command + ' ' + word);
}

/// "_orrery_options COMMAND": the options of the program and of a command.
std::string optionsFunction(const ProgramText& text)
{
    std::string script = "_orrery_options()\n{\n    printf '%s\\n' " +
                         lines(namesOfAll(text.program.options)) + "\n    case $1 in\n";
    for (const CommandText& command : text.commands) {
        std::vector<std::string> names = namesOfAll(command.options);
        const std::vector<std::string> common = namesOfAll(text.program.options);
        names.erase(std::remove_if(names.begin(), names.end(),
                                   [&](const std::string& name) {
                                       return std::find(common.begin(), common.end(), name) != common.end();
                                   }),
                    names.end());
        if (!names.empty())
            script += "    " + inShellQuotes(command.name) + ") printf '%s\\n' " + lines(names) + " ;;\n";
    }
    return script + "    esac\n}\n\n";
}

std::string optionKindCases(const CommandText& command, const std::string& commandPattern)
{
    std::string cases;
    for (const OptionText& option : command.options) {
        if (option.value.empty())
            continue;
        std::string patterns;
        for (const std::string& name : option.names)
            patterns += (patterns.empty() ? "" : " | ") + commandPattern + inShellQuotes(' ' + name);
        cases += "    " + patterns + ") echo " + inShellQuotes(completionKind(option)) + " ;;\n";
    }
    return cases;
}

/// "_orrery_option_kind COMMAND OPTION": the kind of an option's value, nothing for a flag.
std::string optionKindFunction(const ProgramText& text)
{
    std::string script = "_orrery_option_kind()\n{\n    case \"$1 $2\" in\n";
    for (const CommandText& command : text.commands)
        script += optionKindCases(command, inShellQuotes(command.name));
    script += optionKindCases(text.program, "*");
    return script + "    esac\n}\n\n";
}

/// "_orrery_argument_kind COMMAND INDEX": the kind of an argument, counted from 0.
std::string argumentKindFunction(const ProgramText& text)
{
    std::string script = "_orrery_argument_kind()\n{\n    case \"$1 $2\" in\n";
    for (const CommandText& command : text.commands) {
        for (std::size_t i = 0; i < command.arguments.size(); ++i) {
            const OptionText& argument = command.arguments[i];
            const std::string place = argument.isRepeated ? inShellQuotes(command.name + ' ') + "*"
                                                          : pattern(command.name, std::to_string(i));
            script += "    " + place + ") echo " + inShellQuotes(completionKind(argument)) + " ;;\n";
        }
    }
    return script + "    esac\n}\n";
}

} // namespace

std::string completionKind(const OptionText& option)
{
    const std::string name = isArgument(option) ? option.names.front() : option.value;
    const std::string description = lowered(option.description);
    if (name.find('|') != std::string::npos) {
        std::string words = name;
        std::replace(words.begin(), words.end(), '|', ' ');
        return "words " + words;
    }
    if (name == "U" || name.substr(0, 4) == "UNIT" || description.find("unit") == 4 ||
        description.find("the unit to") == 0)
        return "units";
    if (name == "TYPE")
        return "types";
    if (name == "PATH")
        return "nodes";
    const std::string files = fileKind(description);
    const bool isFile = name.find("FILE") != std::string::npos || name.find("OUT") == 0;
    return isFile || files != "files" ? files : "none";
}

std::string bashCompletion(const ProgramText& text)
{
    std::vector<std::string> commands;
    for (const CommandText& command : text.commands)
        commands.push_back(command.name);
    return "# Completion of " + text.program.name +
           " for bash, written by the build from the texts of its help. -*- shell-script -*-\n\n" +
           "_orrery_commands=" + lines(commands) + "\n\n" + optionsFunction(text) + optionKindFunction(text) +
           argumentKindFunction(text) + s_functions;
}

} // namespace Orrery::Host
