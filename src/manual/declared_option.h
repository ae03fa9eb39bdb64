// What the declaration of an option tells: its names, and what may stand for its value.
#pragma once

#include "host/terminal/command.h"

#include <string>
#include <vector>

namespace manual {

enum class ValueKind { None, Text, Words, File, Port, Profile };

struct DeclaredOption {
    std::vector<std::string> names; ///< "-v", "--verbose"; of a positional one none
    std::string valueName;          ///< "FILE", "none|even|odd"
    std::string help;
    std::string group;
    bool isRequired = false;
    bool isRepeatable = false;
    bool isValueOptional = false;
    ValueKind kind = ValueKind::None;
    std::vector<std::string> words; ///< that are values, or file name extensions without the dot; empty for any file

    bool isPositional() const { return names.empty(); }
};

/// In the order of their declaration, with the help option.
std::vector<DeclaredOption> optionsOf(const host::Command &command);

/// The command and all below it, from above.
std::vector<host::Command> commandsFrom(const host::Command &command);

} // namespace manual
