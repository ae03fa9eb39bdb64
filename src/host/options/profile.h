// A profile: what somebody's plotter needs, under a name, in a TOML file of its own.
#pragma once

#include "host/options/profile_keys.h"
#include "host/terminal/failure.h"

#include <string>
#include <vector>

namespace host {

struct ProfileValue {
    const ProfileKey *key;
    std::vector<std::string> words; ///< as they would be typed behind the option; "" for one that stands alone
    int line = 0;                   ///< in the file; 0 when it comes from no file
};

struct Profile {
    std::string name;
    std::string path;
    std::vector<ProfileValue> values; ///< in the order of kProfileKeys, each key once
};

/// Reads a profile and holds it against the checks of the options. Throws Failure: usage for what is no name, missing, or
/// unfit with the line that is wrong.
Profile readProfile(const std::string &name);

/// Writes a profile that is either wholly there or not at all. Throws Failure; without force also when it exists.
void writeProfile(const Profile &profile, bool force);

/// There is no profile of that name.
Failure unknownProfile(const std::string &name);

} // namespace host
