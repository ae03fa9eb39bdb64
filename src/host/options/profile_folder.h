// Where profiles are kept: a file each, in the user's configuration folder.
#pragma once

#include <string>
#include <vector>

namespace host {

/// $XDG_CONFIG_HOME/vectorix/profiles, or the same below ~/.config. Throws Failure when the environment says neither.
std::string profileFolder();

/// The file of a profile that may exist. Throws Failure (usage) for what is no name.
std::string profilePath(const std::string &name);

/// In the order of the alphabet. Throws Failure when the folder is there and cannot be read.
std::vector<std::string> profileNames();

/// Makes the folder, and what is missing above it. Throws Failure.
void makeProfileFolder();

} // namespace host
