#include "manual/man_page.h"

#include "host/terminal/text.h"
#include "manual/declared_option.h"
#include "manual/roff.h"

#include <algorithm>
#include <fmt/format.h>
#include <fmt/ranges.h>

namespace manual {

using host::Command;

namespace {

std::string reference(const Command &command) { return fmt::format(".BR {} (1)", roff(pageName(command))); }

/// The command's description as the NAME section has it: in small letters, without a full stop.
std::string purpose(const Command &command) {
    std::string text = host::lowered(command.help());
    if (text.ends_with('.')) text.pop_back();
    return text;
}

std::string optionHead(const DeclaredOption &option) {
    if (option.isPositional()) return italic(option.valueName) + (option.isRepeatable ? "..." : "");
    std::vector<std::string> names;
    for (const std::string &name : option.names)
        names.push_back(bold(name));
    std::string value = option.valueName.empty() ? "" : " " + italic(option.valueName);
    return fmt::format("{}{}", fmt::join(names, ", "), value);
}

std::string synopsis(const Command &command, const std::vector<DeclaredOption> &options) {
    std::string line = bold(command.fullName()) + " [" + italic("OPTION") + "]...";
    if (command.requiresSubcommand()) line += " " + italic("COMMAND") + " ...";
    for (const DeclaredOption &option : options) {
        if (option.isPositional() || option.isRequired) line += " " + optionHead(option);
    }
    return ".SH SYNOPSIS\n" + line + "\n";
}

std::string optionSection(const std::vector<DeclaredOption> &options) {
    std::vector<std::string> groups;
    for (const DeclaredOption &option : options) {
        if (std::find(groups.begin(), groups.end(), option.group) == groups.end()) groups.push_back(option.group);
    }
    std::string text = ".SH OPTIONS\n";
    for (const std::string &group : groups) {
        if (group != "Options") text += fmt::format(".SS {}\n", roff(group));
        for (const DeclaredOption &option : options) {
            if (option.group == group) text += fmt::format(".TP\n{}\n{}\n", optionHead(option), roff(option.help));
        }
    }
    return text;
}

std::string commandSection(const Command &command) {
    std::string text;
    for (const Command &below : command.below()) {
        text += fmt::format(".TP\n{}\n{}; see\n{}\n", bold(below.name()), roff(purpose(below)), reference(below));
    }
    return text.empty() ? text : ".SH COMMANDS\n" + text;
}

std::string exampleSection(const host::Manual &manual) {
    std::string text;
    for (const host::Example &example : manual.examples)
        text += fmt::format(".PP\n{}\n.RS 4\n.EX\n{}\n.EE\n.RE\n", roff(example.what), roff(example.line));
    return text.empty() ? text : ".SH EXAMPLES\n" + text;
}

std::string jsonSection(const host::Manual &manual) {
    std::string text;
    for (const host::JsonFields &row : manual.json)
        text += fmt::format(".TP\n{}\n{}\n", bold(row.names), filled(row.meaning));
    if (text.empty()) return text;
    return ".SH \"JSON REPORT\"\nWith\n" + bold("--json") +
           ",\nstandard output is one JSON object. These are its fields; others may be added, none of these changes.\n" +
           text;
}

std::string exitSection() {
    std::string text = ".SH \"EXIT STATUS\"\n";
    for (const host::ExitCodeRow &row : host::kExitCodes)
        text += fmt::format(".TP\n.B {}\n{}\n", static_cast<int>(row.code), roff(row.meaning));
    return text;
}

/// What the command reads of it, which is the program that colours.
std::string environmentSection(const Command &root) {
    if (!root.find("--color")) return {};
    return ".SH ENVIRONMENT\n.TP\n.B NO_COLOR\nWhen it is set to something, nothing has colour, unless\n" + bold("--color") +
           "\nis given.\n.TP\n.B TMPDIR\nWhere a plot from standard input is kept, without a name, while it is used; " +
           "otherwise\n.IR /tmp .\n";
}

std::string neighbours(const Command &command) {
    std::vector<std::string> references;
    std::optional<Command> above = command.above();
    if (above) references.push_back(reference(*above));
    const Command family = above && command.below().empty() ? *above : command;
    for (const Command &each : family.below()) {
        if (!(each == command)) references.push_back(reference(each));
    }
    if (references.empty()) return {};
    return fmt::format(".SH \"SEE ALSO\"\n{}\n", fmt::join(references, " ,\n"));
}

} // namespace

std::string pageName(const Command &command) {
    std::string name = command.fullName();
    std::replace(name.begin(), name.end(), ' ', '-');
    return name;
}

std::string manPage(const Command &command, const std::string &date) {
    std::string name = pageName(command), title = name;
    std::transform(title.begin(), title.end(), title.begin(), [](unsigned char c) { return std::toupper(c); });
    host::Manual manual = command.manual();
    std::vector<DeclaredOption> options = optionsOf(command);

    std::string page = fmt::format(".TH {} 1 \"{}\" \"{}\" \"User Commands\"\n", roff(title), date, roff(command.version()));
    page += fmt::format(".SH NAME\n{} \\- {}\n", roff(name), roff(purpose(command)));
    page += synopsis(command, options);
    if (!manual.about.empty()) page += ".SH DESCRIPTION\n" + paragraphs(manual.about);
    page += commandSection(command) + optionSection(options) + exampleSection(manual) + jsonSection(manual) + exitSection();
    if (!command.above()) page += environmentSection(command);
    return page + neighbours(command);
}

} // namespace manual
