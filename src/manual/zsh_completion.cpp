#include "manual/completion.h"
#include "manual/declared_option.h"

#include <algorithm>
#include <fmt/format.h>
#include <fmt/ranges.h>

namespace manual {

using host::Command;

namespace {

/// What the functions of all programs share.
constexpr const char *kHelpers = R"shell(
# The command lists the ports without opening any.
__vectorix_ports() {
    local -a ports
    ports=(${(f)"$(_call_program ports $service ports --json 2>/dev/null |
        sed -n 's/^ *"\(path\|stableName\)": "\(.\+\)",\{0,1\}$/\2/p')"})
    if (( $#ports )); then compadd -a ports; else _files; fi
}

__vectorix_profiles() {
    local -a profiles
    profiles=(${(f)"$(_call_program profiles $service profile list --names 2>/dev/null)"})
    compadd -a profiles
}
)shell";

/// Text for an argument of _arguments, with the signs escaped that mean something there.
std::string escaped(const std::string &text) {
    std::string result;
    for (char c : text) {
        if (std::string_view("[]:\\").find(c) != std::string_view::npos) result += '\\';
        result += c;
    }
    return result;
}

/// The text as one word of the shell, in quotes.
std::string quoted(const std::string &text) {
    std::string result = "'";
    for (char c : text)
        result += c == '\'' ? "'\\''" : std::string(1, c);
    return result + "'";
}

std::string functionName(const Command &command) {
    std::string name = "_" + command.fullName();
    std::replace(name.begin(), name.end(), ' ', '_');
    return name;
}

std::string actionOf(const DeclaredOption &option) {
    switch (option.kind) {
    case ValueKind::Words: return fmt::format("({})", fmt::join(option.words, " "));
    case ValueKind::File:
        return option.words.empty() ? "_files" : fmt::format("_files -g \"*.({})\"", fmt::join(option.words, "|"));
    case ValueKind::Port: return "__vectorix_ports";
    case ValueKind::Profile: return "__vectorix_profiles";
    default: return " ";
    }
}

std::vector<std::string> argumentsOf(const Command &command) {
    std::vector<std::string> arguments;
    for (const DeclaredOption &option : optionsOf(command)) {
        std::string value = fmt::format("{}:{}", escaped(option.valueName), actionOf(option));
        if (option.isPositional()) arguments.push_back(quoted((option.isRepeatable ? "*:" : ":") + value));
        bool takesValue = option.kind != ValueKind::None;
        std::string tail = fmt::format("[{}]", escaped(option.help));
        if (takesValue) tail += (option.isValueOptional ? "::" : ":") + value;
        for (const std::string &name : option.names) {
            bool takesEqualSign = takesValue && !option.isValueOptional && name.starts_with("--");
            arguments.push_back(
                quoted(fmt::format("{}{}{}{}", option.isRepeatable ? "*" : "", name, takesEqualSign ? "=" : "", tail)));
        }
    }
    return arguments;
}

std::string functionOf(const Command &command) {
    std::vector<std::string> arguments = argumentsOf(command);
    std::string name = functionName(command);
    std::vector<Command> below = command.below();
    if (below.empty()) {
        return fmt::format("\n{}() {{\n    _arguments -s \\\n        {}\n}}\n", name, fmt::join(arguments, " \\\n        "));
    }
    arguments.push_back("':command:->command'");
    arguments.push_back("'*::argument:->rest'");
    std::string commands, rows;
    for (const Command &each : below) {
        commands += fmt::format("            {}\n", quoted(each.name() + ":" + each.help()));
        rows += fmt::format("        {}) {} ;;\n", each.name(), functionName(each));
    }
    return fmt::format(
        "\n{}() {{\n    local curcontext=$curcontext state line\n    local -a commands\n"
        "    _arguments -C \\\n        {}\n    case $state in\n    command)\n        commands=(\n{}        )\n"
        "        _describe command commands\n        ;;\n    rest)\n        case $line[1] in\n{}        esac\n"
        "        ;;\n    esac\n}}\n",
        name, fmt::join(arguments, " \\\n        "), commands, rows);
}

} // namespace

std::string zshCompletion(const Command &root) {
    std::string text = fmt::format(
        "#compdef {0}\n# Completion of {0} in zsh. Made from the declarations of its options.\n{1}", root.name(), kHelpers);
    auto commands = commandsFrom(root);
    for (auto command = commands.rbegin(); command != commands.rend(); ++command)
        text += functionOf(*command);
    return text + fmt::format("\n{} \"$@\"\n", functionName(root));
}

} // namespace manual
