// A profile: what one plotter needs (link, line settings, emulation, tools), kept under a name for --profile. It is a TOML
// file that people may also write by hand; so reading it checks everything that typing the options would have checked, and a
// complaint names the line of the file.
#pragma once

#include "host/options/profile_folder.h"
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
    ProfileFile file;
    std::vector<ProfileValue> values; ///< in the order of kProfileKeys, each key once
};

/// Reads a profile and checks its values as the options would. Throws Failure: usage when the name is none that a profile
/// can have, missing when there is no such profile, unfit, with the line that is wrong, when its file is.
Profile readProfile(const std::string &name);

/// Writes the profile's file whole or not at all; one of the system so that everybody can read it, whatever the umask.
/// Throws Failure; without force also when there is one already.
void writeProfile(const Profile &profile, bool force);

/// Puts a value into a profile that exists, in place of the one that it has, and leaves all else of its file as it is,
/// comments too. Throws Failure, also for a value that the profile cannot have.
void keepInProfile(const std::string &name, std::string_view key, const std::string &word);

/// Throws Failure, also for a profile that is in the other scope alone.
void removeProfile(const std::string &name, ProfileScope scope);

} // namespace host
