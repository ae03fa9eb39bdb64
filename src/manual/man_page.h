// Manual pages, in the language of the man macros.
#pragma once

#include "host/terminal/command.h"

#include <string>

namespace manual {

/// "vectorix-print".
std::string pageName(const host::Command &command);

/// The page of one command. date stands at its foot.
std::string manPage(const host::Command &command, const std::string &date);

} // namespace manual
