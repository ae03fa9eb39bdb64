// What a profile may hold: one row for each option that it can stand in for. Reader, writer, 'profile add' and --profile all
// go by these rows, so that a new key is one row here.
#pragma once

#include "host/job/job_options.h"
#include "host/options/line_settings.h"
#include "host/options/plotter_options.h"
#include "host/picture/drawing_options.h"
#include "host/terminal/command.h"

#include <string>
#include <string_view>

namespace host {

enum class ProfileKind { Text, Texts, Number, TextOrTrue, False };

struct ProfileKey {
    const char *name; ///< in the file; with "--" before it, mostly the option
    ProfileKind kind;
    bool isOfLanguage = false;    ///< left out when another emulation is typed: it is written in the profile's language
    const char *option = nullptr; ///< where its name is another
};

/// In the order in which they are written and put on a command: what an option needs stands before it, and of two that
/// exclude each other on a command the one that counts. So a profile may say both how far the pen reaches, by which plots
/// are judged, and of what size its paper mostly is.
inline constexpr ProfileKey kProfileKeys[] = {
    {"port", ProfileKind::Text},
    {"usb", ProfileKind::TextOrTrue},
    {"plotter-id", ProfileKind::Number},
    {"baud", ProfileKind::Number},
    {"bits", ProfileKind::Number},
    {"parity", ProfileKind::Text},
    {"stop-bits", ProfileKind::Number},
    {"handshake", ProfileKind::Text},
    {"emulation", ProfileKind::Number},
    {"variant", ProfileKind::Number, true},
    {"terminator", ProfileKind::Text, true},
    {"tool", ProfileKind::Texts, true},
    {"before", ProfileKind::Text, true},
    {"after", ProfileKind::Text, true},
    {"project", ProfileKind::Text},
    {"plotter", ProfileKind::Text},
    {"area", ProfileKind::Text},
    {"pens", ProfileKind::Number, false, "--pens-held"},
    {"sheet", ProfileKind::Text},
    {"confirm", ProfileKind::False, false, "--no-confirm"},
};

struct ProfileOptions {
    std::string port;
    std::string usbChoice;
    int32_t plotterID = 0;
    uint32_t variant = 1;
    LineSettings line;
    DrawingOptions drawing;
    int32_t pensHeld = 0;
    bool isUnconfirmed = false;
    PlotterTexts texts;
    JobOptions job;
};

/// nullptr for a key that no profile has.
const ProfileKey *findProfileKey(std::string_view name);

inline std::string optionName(const ProfileKey &key) { return key.option ? key.option : std::string("--") + key.name; }

/// Adds an option for each row of kProfileKeys to a command.
void addProfileOptions(const Command &app, ProfileOptions &options);

/// Checks what the options do not check one by one. Throws Failure (usage), whose text starts with the option's name.
void requireFitProfile(const ProfileOptions &options);

} // namespace host
