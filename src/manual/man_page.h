// Manual pages, in the language of the man macros: one for each command, from the same texts as its --help.
#pragma once

#include "host/terminal/command.h"

#include <string>

namespace manual {

/// "vectorix-print".
std::string pageName(const host::Command &command);

/// The page of one command, as its source text. date is printed at the foot as it is.
std::string manPage(const host::Command &command, const std::string &date);

} // namespace manual
