// Shell completions, made from the declarations of the options so that they can never lag behind them. Ports and profiles
// are not in them: the shell asks the command for those at the moment of typing.
#pragma once

#include "host/terminal/command.h"

#include <string>

namespace manual {

/// The text of the completion file for each shell; root is the whole command.
std::string bashCompletion(const host::Command &root);
std::string zshCompletion(const host::Command &root);

} // namespace manual
