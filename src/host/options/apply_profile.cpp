#include "host/options/apply_profile.h"

#include "host/options/profile.h"

#include <algorithm>

namespace host {

namespace {

constexpr const char *kOption = "--profile";

/// True when what was typed leaves no room for the profile's value: the option itself, or one that excludes it; or when an
/// option that it needs is missing.
bool isSetAside(Option option) {
    auto isThere = [](Option other) { return other.isTyped(); };
    std::vector<Option> excluding = option.excluded(), needed = option.needed();
    return isThere(option) || std::any_of(excluding.begin(), excluding.end(), isThere) ||
           !std::all_of(needed.begin(), needed.end(), isThere);
}

/// True when another emulation was typed than the profile is for.
bool isOtherLanguage(const Command &command, const Profile &profile) {
    std::optional<Option> typed = command.find("--emulation");
    if (!typed || !typed->isTyped()) return false;
    int own = emulations::kHpgl;
    for (const ProfileValue &value : profile.values) {
        if (optionName(*value.key) == "--emulation") own = std::stoi(value.words.front());
    }
    return typed->number() != own;
}

} // namespace

void addProfileOption(const Command &command) {
    command.option(std::string("-p,") + kOption, "Take from a profile what is not typed ('vectorix profile')")
        .valueName("PROFILE");
}

void applyProfile(const Command &command) {
    std::optional<Option> named = command.find(kOption);
    if (!named->isTyped()) return;
    Profile profile = readProfile(named->value());
    bool otherLanguage = isOtherLanguage(command, profile);
    for (const ProfileValue &value : profile.values) {
        std::optional<Option> option = command.find(optionName(*value.key));
        if (!option || isSetAside(*option) || (otherLanguage && value.key->isOfLanguage)) continue;
        option->give(value.words);
    }
}

} // namespace host
