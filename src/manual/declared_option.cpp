#include "manual/declared_option.h"

#include <CLI/CLI.hpp>
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

/// The names that the command gives to values. Words for one that is not told here are those small letters in its name.
const std::vector<KnownValue> &knownValues() {
    static const std::vector<KnownValue> rows = {
        {"DEVICE", ValueKind::Port, {}},
        {"PROFILE", ValueKind::Profile, {}},
        {"FILE", ValueKind::File, {}},
        {"PATH", ValueKind::File, {}},
        {"OUT", ValueKind::File, {}},
        {"PLOT", ValueKind::File, {"plt", "hpgl", "hpg", "hgl", "dmpl", "dmp"}},
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
        if (!isPlaceholder(word)) option.words.push_back(word);
    }
    option.kind = option.words.empty() ? ValueKind::Text : ValueKind::Words;
}

DeclaredOption declared(const CLI::Option &option) {
    DeclaredOption result;
    for (const std::string &name : option.get_snames())
        result.names.push_back("-" + name);
    for (const std::string &name : option.get_lnames())
        result.names.push_back("--" + name);
    result.help = option.get_description();
    result.group = option.get_group();
    result.isRequired = option.get_required();
    result.valueName = result.isPositional() ? option.get_name(true) : option.get_type_name();
    bool takesValue = option.get_items_expected_max() > 0;
    if (!takesValue) result.valueName.clear();
    result.isRepeatable = option.get_items_expected_max() > 1;
    result.isValueOptional = takesValue && option.get_items_expected_min() == 0;
    if (takesValue) findValues(result, result.valueName);
    return result;
}

} // namespace

std::vector<DeclaredOption> optionsOf(const CLI::App &command) {
    std::vector<DeclaredOption> options;
    for (const CLI::Option *option : command.get_options()) {
        if (!option->get_group().empty()) options.push_back(declared(*option)); // without a group it is hidden
    }
    return options;
}

std::vector<const CLI::App *> commandsFrom(const CLI::App &command) {
    std::vector<const CLI::App *> commands = {&command};
    for (const CLI::App *below : command.get_subcommands([](const CLI::App *) { return true; })) {
        for (const CLI::App *each : commandsFrom(*below))
            commands.push_back(each);
    }
    return commands;
}

} // namespace manual
