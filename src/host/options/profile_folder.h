// Where profiles are kept: in the user's configuration folder and in the system's, a file for each. With separate files,
// adding and removing a profile is a single rename or unlink; neither needs a lock or can spoil another profile. A profile's
// name becomes a file's name, which is why few characters are allowed in it. Those of the system are for all users and for
// print queues, which run as none of them; the user's own hides one of the same name.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace host {

enum class ProfileScope { User, System };

struct ProfileFile {
    std::string path;
    ProfileScope scope;
};

/// Where a profile of this scope is written: $XDG_CONFIG_HOME/vectorix/profiles, or the same below ~/.config; of the system
/// /etc/vectorix/profiles, or the last folder that XDG_CONFIG_DIRS names. Throws Failure (usage) for a name that a profile
/// cannot have, and when the environment names no folder of the user.
std::string profilePath(const std::string &name, ProfileScope scope);

/// The file that a profile is read from, looked for in the user's folder and then in the system's; none when it is in
/// neither. Throws Failure (usage) for a name that a profile cannot have.
std::optional<ProfileFile> findProfile(const std::string &name);

/// The names of all profiles, sorted, each once; none without a folder. Throws Failure when one is there and cannot be read.
std::vector<std::string> profileNames();

/// Makes the folder into which profiles of this scope are written, and its missing parents. Throws Failure.
void makeProfileFolder(ProfileScope scope);

} // namespace host
