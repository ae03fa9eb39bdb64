#include "host/profile_option.h"

#include "host/profile.h"

#include <CLI/CLI.hpp>
#include <algorithm>

namespace host {

namespace {

constexpr const char *kOption = "--profile";

bool isSetAside(const CLI::Option &option) {
    auto isThere = [](const CLI::Option *other) { return other->count() > 0; };
    auto excluding = option.get_excludes();
    auto needed = option.get_needs();
    return isThere(&option) || std::any_of(excluding.begin(), excluding.end(), isThere) ||
           !std::all_of(needed.begin(), needed.end(), isThere);
}

/// True when another emulation was typed than the profile is for.
bool isOtherLanguage(const CLI::App &command, const Profile &profile) {
    const CLI::Option *typed = command.get_option_no_throw("--emulation");
    if (!typed || typed->count() == 0) return false;
    int own = JobOptions().emulation;
    for (const ProfileValue &value : profile.values) {
        if (optionName(*value.key) == "--emulation") own = std::stoi(value.words.front());
    }
    return typed->as<int>() != own;
}

} // namespace

void addProfileOption(CLI::App &command) {
    command.add_option(std::string("-p,") + kOption, "Take from a profile what is not typed ('vectorix profile')")
        ->type_name("PROFILE");
}

void applyProfile(CLI::App &command) {
    const CLI::Option *named = command.get_option(kOption);
    if (named->count() == 0) return;
    Profile profile = readProfile(named->as<std::string>());
    bool otherLanguage = isOtherLanguage(command, profile);
    for (const ProfileValue &value : profile.values) {
        CLI::Option *option = command.get_option_no_throw(optionName(*value.key));
        if (!option || isSetAside(*option) || (otherLanguage && value.key->isOfLanguage)) continue;
        option->add_result(value.words);
        option->run_callback();
    }
}

} // namespace host
