#include "manual/declared_option.h"

#include <algorithm>
#include <cctype>
#include <sstream>

namespace manual {

namespace {

struct KnownValue {
    const char *name;
    ValueKind kind;
    std::vector<std::string> words;
};

/// The placeholders that stand for more than any text. One that is not listed gives its alternatives itself when it is
/// written in small letters, such as "none|even|odd", or begins with them, as "hatch[:MM]" does.
const std::vector<KnownValue> &knownValues() {
    static const std::vector<KnownValue> rows = {
        {"DEVICE", ValueKind::Port, {}},
        {"PROFILE", ValueKind::Profile, {}},
        {"FILE", ValueKind::File, {}},
        {"PATH", ValueKind::File, {}},
        {"OUT", ValueKind::File, {}},
        {"FOLDER", ValueKind::File, {}},
        {"PLOT", ValueKind::File, {"svg", "pdf", "plt", "hpgl", "hpg", "hgl", "dmpl", "dmp"}},
        {"JOB", ValueKind::File, {"plist"}},
        {"RATE", ValueKind::Words, {"300", "600", "1200", "2400", "4800", "9600", "19200", "38400"}},
        {"SHEET", ValueKind::Words, {"a0", "a1", "a2", "a3", "a4", "letter", "tabloid"}},
    };
    return rows;
}

bool isPlaceholder(const std::string &word) {
    return std::any_of(word.begin(), word.end(), [](char c) { return std::isupper(static_cast<unsigned char>(c)); });
}

void findValues(DeclaredOption &option, const std::string &name) {
    for (const KnownValue &row : knownValues()) {
        if (name != row.name) continue;
        option.kind = row.kind;
        option.words = row.words;
        return;
    }
    std::istringstream alternatives(name);
    for (std::string word; std::getline(alternatives, word, '|');) {
        word.resize(std::min(word.size(), word.find('[')));
        if (!word.empty() && !isPlaceholder(word)) option.words.push_back(word);
    }
    option.kind = option.words.empty() ? ValueKind::Text : ValueKind::Words;
}

DeclaredOption declared(const host::Option &option) {
    DeclaredOption result;
    result.names = option.names();
    result.help = option.help();
    result.group = option.heading();
    result.isRequired = option.isRequired();
    result.valueName = option.placeholder();
    result.isRepeatable = option.isRepeatable();
    result.isValueOptional = option.isValueOptional();
    if (option.takesValue()) findValues(result, result.valueName);
    return result;
}

} // namespace

std::vector<DeclaredOption> optionsOf(const host::Command &command) {
    std::vector<DeclaredOption> options;
    for (const host::Option &option : command.options()) {
        if (!option.heading().empty()) options.push_back(declared(option)); // without a heading it is hidden
    }
    return options;
}

std::vector<host::Command> commandsFrom(const host::Command &command) {
    std::vector<host::Command> commands = {command};
    for (const host::Command &below : command.below()) {
        for (const host::Command &each : commandsFrom(below))
            commands.push_back(each);
    }
    return commands;
}

} // namespace manual
