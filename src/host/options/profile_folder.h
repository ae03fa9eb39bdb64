// Where profiles are kept: in the user's configuration folder, a file for each. With separate files, adding and removing a
// profile is a single rename or unlink; neither needs a lock or can spoil another profile. A profile's name becomes a file's
// name, which is why few characters are allowed in it.
#pragma once

#include <string>
#include <vector>

namespace host {

/// $XDG_CONFIG_HOME/vectorix/profiles, or the same below ~/.config. Throws Failure when the environment says neither.
std::string profileFolder();

/// The path of a profile's file, whether it exists or not. Throws Failure (usage) for a name that a profile cannot have.
std::string profilePath(const std::string &name);

/// The names of all profiles, sorted; none without the folder. Throws Failure when it is there and cannot be read.
std::vector<std::string> profileNames();

/// Makes the folder and its missing parents. Throws Failure.
void makeProfileFolder();

} // namespace host
