#include "manual/completion.h"
#include "manual/declared_option.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

namespace manual {

using host::Command;

namespace {

/// What the functions of all programs share.
constexpr const char *kHelpers = R"shell(
_vectorix_words() { mapfile -t COMPREPLY < <(compgen -W "$1" -- "$word"); }

# Files with one of the extensions, and folders; any file when there is none of these, or no extension.
_vectorix_files() {
    local extension
    compopt -o filenames 2>/dev/null
    for extension in "$@"; do
        mapfile -t -O "${#COMPREPLY[@]}" COMPREPLY < <(compgen -f -X "!*.$extension" -- "$word")
    done
    if [[ ${#COMPREPLY[@]} -gt 0 ]]; then
        mapfile -t -O "${#COMPREPLY[@]}" COMPREPLY < <(compgen -d -- "$word")
    else
        mapfile -t COMPREPLY < <(compgen -f -- "$word")
    fi
}

# The command lists the ports without opening any.
_vectorix_ports() {
    local ports
    ports=$("${COMP_WORDS[0]}" ports --json 2>/dev/null | sed -n 's/^ *"\(path\|stableName\)": "\(.\+\)",\{0,1\}$/\2/p')
    _vectorix_words "$ports"
    if [[ ${#COMPREPLY[@]} -eq 0 ]]; then _vectorix_files; fi
}

_vectorix_profiles() { _vectorix_words "$("${COMP_WORDS[0]}" profile list --names 2>/dev/null)"; }
)shell";

constexpr const char *kSplit = R"shell(    COMPREPLY=()
    # --option=value comes as three words.
    if [[ $before == = ]]; then
        before=${COMP_WORDS[COMP_CWORD - 2]}
    elif [[ $word == = ]]; then
        word=
    fi
    for ((at = 1; at < COMP_CWORD; at++)); do
        case "$command ${COMP_WORDS[at]}" in
)shell";

std::string quoted(const std::string &text) { return "'" + text + "'"; }

std::string actionOf(const DeclaredOption &option) {
    switch (option.kind) {
    case ValueKind::Words: return fmt::format("_vectorix_words {}", quoted(fmt::format("{}", fmt::join(option.words, " "))));
    case ValueKind::File:
        return fmt::format("_vectorix_files{}{}", option.words.empty() ? "" : " ", fmt::join(option.words, " "));
    case ValueKind::Port: return "_vectorix_ports";
    case ValueKind::Profile: return "_vectorix_profiles";
    default: return ":";
    }
}

/// Rows of a shell case: what may follow each option of the command that takes a value.
std::string valueRows(const Command &command) {
    std::string rows;
    for (const DeclaredOption &option : optionsOf(command)) {
        if (option.isPositional() || option.kind == ValueKind::None || option.isValueOptional) continue;
        std::vector<std::string> patterns;
        for (const std::string &name : option.names)
            patterns.push_back(quoted(command.fullName() + " " + name));
        rows +=
            fmt::format("    {})\n        {}\n        return\n        ;;\n", fmt::join(patterns, " | "), actionOf(option));
    }
    return rows;
}

/// A row of a shell case: what may stand anywhere else (options, sub-commands, the positional value).
std::string wordRow(const Command &command) {
    std::vector<std::string> words, names;
    std::string action = ":";
    for (const DeclaredOption &option : optionsOf(command)) {
        names.insert(names.end(), option.names.begin(), option.names.end());
        if (option.isPositional()) action = actionOf(option);
    }
    for (const Command &below : command.below())
        words.push_back(below.name());
    if (!words.empty()) action = fmt::format("_vectorix_words {}", quoted(fmt::format("{}", fmt::join(words, " "))));
    return fmt::format("    {})\n        if [[ $word == -* ]]; then\n            _vectorix_words {}\n        else\n"
                       "            {}\n        fi\n        ;;\n",
                       quoted(command.fullName()), quoted(fmt::format("{}", fmt::join(names, " "))), action);
}

} // namespace

std::string bashCompletion(const Command &root) {
    std::vector<std::string> below;
    std::string values, words, name = root.name();
    for (const Command &command : commandsFrom(root)) {
        if (!(command == root)) below.push_back(quoted(command.fullName()));
        values += valueRows(command);
        words += wordRow(command);
    }
    if (below.empty()) below.push_back(quoted("")); // which no word is
    return fmt::format("# Completion of {0} in bash. Made from the declarations of its options.\n{1}\n_{0}() {{\n"
                       "    local word=${{COMP_WORDS[COMP_CWORD]}} before=${{COMP_WORDS[COMP_CWORD - 1]}} command={0} at\n"
                       "{2}        {3}) command+=\" ${{COMP_WORDS[at]}}\" ;;\n        esac\n    done\n"
                       "    case \"$command $before\" in\n{4}    esac\n    case $command in\n{5}    esac\n}}\n\n"
                       "complete -F _{0} {0}\n",
                       name, kHelpers, kSplit, fmt::join(below, " | "), values, words);
}

} // namespace manual
