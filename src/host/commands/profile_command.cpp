// vectorix profile: what a plotter needs, kept under a name.
#include "host/commands/commands.h"
#include "host/job/job_options.h"
#include "host/options/profile.h"
#include "host/terminal/json.h"
#include "host/terminal/output.h"
#include "host/terminal/table.h"
#include "host/terminal/text.h"

#include <algorithm>
#include <fmt/format.h>
#include <fmt/ranges.h>
#include <memory>

namespace host {

namespace {

struct CommandOptions {
    std::string name;
    ProfileOptions profile;
    bool force = false;
    bool json = false;
    bool namesOnly = false;
    bool isOfSystem = false;

    ProfileScope scope() const { return isOfSystem ? ProfileScope::System : ProfileScope::User; }
};

void printJson(const Json &object) { printOut("{}\n", object.text()); }

Json jsonOf(const ProfileValue &value) {
    switch (value.key->kind) {
    case ProfileKind::Number: return std::stoll(value.words.front());
    case ProfileKind::Texts: return value.words;
    case ProfileKind::TextOrTrue:
        if (value.words.front().empty()) return true;
        break;
    case ProfileKind::False: return false;
    case ProfileKind::Text: break;
    }
    return value.words.front();
}

Json jsonOf(const Profile &profile) {
    Json settings = Json::object();
    for (const ProfileValue &value : profile.values)
        settings[value.key->name] = jsonOf(value);
    return {{"name", profile.name}, {"file", profile.file.path}, {"settings", settings}};
}

std::string settingOf(const Profile &profile, std::string_view key) {
    for (const ProfileValue &value : profile.values) {
        if (value.key->name == key) return shown(value.words.front());
    }
    return {};
}

std::string linkOf(const Profile &profile) {
    bool isUsb = std::any_of(profile.values.begin(), profile.values.end(),
                             [](const ProfileValue &value) { return value.key == findProfileKey("usb"); });
    if (!isUsb) return settingOf(profile, "port");
    std::string model = settingOf(profile, "usb");
    return model.empty() ? "usb" : "usb " + model;
}

ExitCode add(const Command &command, const CommandOptions &options) {
    Profile profile{options.name, {profilePath(options.name, options.scope()), options.scope()}, {}};
    for (const ProfileKey &key : kProfileKeys) {
        Option option = *command.find(optionName(key));
        if (!option.isTyped()) continue;
        bool isNumber = key.kind == ProfileKind::Number; // may be typed in another form than a profile has it in
        profile.values.push_back({&key, isNumber ? std::vector{fmt::format("{}", option.number())} : option.typed()});
    }
    if (profile.values.empty()) {
        throw Failure(ExitCode::Usage, fmt::format("{}: nothing to keep in the profile; add what the plotter needs, such as "
                                                   "--port DEVICE",
                                                   options.name));
    }
    requireFitProfile(options.profile);
    writeProfile(profile, options.force);
    return ExitCode::Done;
}

/// An unfit profile is reported and gives the exit code, but the others are listed all the same.
ExitCode list(const Command &, const CommandOptions &options) {
    std::vector<std::vector<std::string>> rows = {{"NAME", "LINK", "EMULATION", "PLOTTER", "OF"}};
    Json profiles = Json::array();
    ExitCode code = ExitCode::Done;
    for (const std::string &name : profileNames()) {
        if (options.namesOnly) {
            printOut("{}\n", name);
            continue;
        }
        const std::optional<ProfileFile> file = findProfile(name);
        if (!file) continue; // removed meanwhile
        const char *owner = file->scope == ProfileScope::System ? "the system" : "the user";
        try {
            Profile profile = readProfile(name);
            rows.push_back({name, linkOf(profile), settingOf(profile, "emulation"), settingOf(profile, "plotter"), owner});
            profiles.push_back(jsonOf(profile));
        } catch (const Failure &failure) {
            code = failure.code();
            printError("vectorix: {}\n", failure.what());
            rows.push_back({name, "(unfit)", "", "", owner});
            profiles.push_back({{"name", name}, {"file", file->path}, {"error", failure.what()}});
        }
    }
    if (options.json) {
        printJson({{"profiles", profiles}});
    } else if (!options.namesOnly) {
        printTable(rows);
    }
    return code;
}

std::string textOf(const ProfileValue &value) {
    if (value.key->kind == ProfileKind::False) return "false";
    const std::string words = shown(fmt::format("{}", fmt::join(value.words, "  ")));
    return words.empty() ? "the only one" : words;
}

ExitCode show(const Command &, const CommandOptions &options) {
    Profile profile = readProfile(options.name);
    if (options.json) {
        printJson(jsonOf(profile));
        return ExitCode::Done;
    }
    printOut("{}\n", shown(profile.file.path));
    for (const ProfileValue &value : profile.values)
        printOut("  {:<10}  {}\n", value.key->name, textOf(value));
    return ExitCode::Done;
}

ExitCode remove(const Command &, const CommandOptions &options) {
    removeProfile(options.name, options.scope());
    return ExitCode::Done;
}

constexpr const char *kHelp =
    "A profile is a file of its own, $XDG_CONFIG_HOME/vectorix/profiles/NAME.toml or the same below ~/.config, with a line\n"
    "for each option: port = '/dev/ttyUSB0', baud = 2400, tool = ['P1,', 'P2,'], and usb = true for the only USB plotter.\n"
    "A text in single quotes stands as it would be typed.\n"
    "\n"
    "Profiles for all users, of which print queues are made, are in /etc/vectorix/profiles, or below the folders that\n"
    "XDG_CONFIG_DIRS names: the first that has one is taken, --system writes into the last, and /etc/xdg there stands for\n"
    "/etc. The user's own wins over one of the same name.\n"
    "\n"
    "'vectorix print PLOT -p NAME' takes from it what is not typed; so do preview, send, limits and\n"
    "simulate. What is typed wins.\n"
    "With another --emulation typed than the profile's, its terminator, tools, variant and the texts before and after\na "
    "plot are left out. Of an area and a sheet in one profile the area counts for prints.\n"
    "\n"
    "confirm = false is for print queues (vectorix-printer-app): their sheets then wait for nobody. 'print' and its kin "
    "ignore it.";

} // namespace

void addProfileCommand(const Command &app) {
    auto options = std::make_shared<CommandOptions>();
    Command profile = app.add("profile", "Keep under a name what a plotter needs");
    profile.requireSubcommand();
    profile.explain({kHelp,
                     {{"vectorix profile add house --port /dev/ttyUSB0 --baud 2400", "Keeps port and rate."},
                      {"vectorix profile add hall --usb --system", "For all users of this computer, run with sudo."},
                      {"vectorix print drawing.plt -p house", "Prints with them."},
                      {"vectorix profile list", "Which profiles there are."}},
                     {}});
    auto addCommand = [&](const char *name, const char *help, ExitCode (*run)(const Command &, const CommandOptions &)) {
        Command command = profile.add(name, help);
        command.whenTyped([options, command, run] { return run(command, *options); }, &options->json);
        return command;
    };
    auto addName = [&](Command command, const char *what) {
        command.option(what, options->name, "Profile").required().valueName("");
        return command;
    };
    auto addScope = [&](Command command) {
        command.flag("--system", options->isOfSystem, "One for all users and print queues; needs sudo");
    };
    Command adding = addName(addCommand("add", "Make a profile of the options that follow", add), "NAME");
    addProfileOptions(adding, options->profile);
    adding.flag("--force", options->force, "Replace a profile that exists");
    addScope(adding);
    adding.explain({fmt::format("{}\n\n{}", escapeHelp(), kHelp),
                    {{"vectorix profile add cutter --port /dev/ttyUSB0 --baud 2400 --emulation 17008 --terminator ,",
                      "For a plotter of another language than HP-GL."}},
                    {}});
    Command listing = addCommand("list", "List the profiles", list);
    Option json = listing.flag("--json", options->json, "As one JSON object");
    listing.flag("--names", options->namesOnly, "Their names alone, a line each").excludes(json);
    addName(addCommand("show", "Show a profile", show), "PROFILE").flag("--json", options->json, "As one JSON object");
    addScope(addName(addCommand("remove", "Remove a profile", remove), "PROFILE"));
}

} // namespace host
