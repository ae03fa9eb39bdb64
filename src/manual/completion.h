// Completions of what is typed in a shell.
#pragma once

#include "host/terminal/command.h"

#include <string>

namespace manual {

std::string bashCompletion(const host::Command &root);
std::string zshCompletion(const host::Command &root);

} // namespace manual
