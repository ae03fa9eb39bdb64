// What the declaration of an option tells the generators of manual pages and completions. What may stand for its value is
// told from the placeholder in its help ("FILE", "DEVICE", "none|even|odd"), so that commands declare nothing for
// completions alone.
#pragma once

#include "host/terminal/command.h"

#include <string>
#include <vector>

namespace manual {

enum class ValueKind { None, Text, Words, File, Port, Profile };

struct DeclaredOption {
    std::vector<std::string> names; ///< "-v", "--verbose"; empty for a positional one
    std::string valueName;          ///< "FILE", "none|even|odd"
    std::string help;
    std::string group;
    bool isRequired = false;
    bool isRepeatable = false;
    bool isValueOptional = false;
    ValueKind kind = ValueKind::None;
    std::vector<std::string> words; ///< the values, or for File the extensions without the dot; empty for any file

    bool isPositional() const { return names.empty(); }
};

/// The options that are not hidden, in the order of their declaration, with the help option.
std::vector<DeclaredOption> optionsOf(const host::Command &command);

/// The command and all commands below it, each before its own sub-commands.
std::vector<host::Command> commandsFrom(const host::Command &command);

} // namespace manual
