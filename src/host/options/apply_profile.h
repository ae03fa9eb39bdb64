// Lets a command take from a profile what was not typed. The values go through the command's own options, as if they had
// been typed, so that checks, defaults and exclusions are the same for both; the command itself never sees a profile.
#pragma once

#include "host/terminal/command.h"

namespace host {

/// Adds -p, --profile.
void addProfileOption(const Command &command);

/// Gives the command's options the values of the profile that was named, if one was, as if they had been typed. What was
/// typed wins: over the same option, over those that exclude it, and a typed emulation over what was meant for another.
/// What the command has no option for is left out. Call it after the command line has been parsed. Throws Failure.
void applyProfile(const Command &command);

} // namespace host
