// What may stand between this computer and a plotter: one row for each finding, with what mends it.
#pragma once

#include "host/terminal/failure.h"

#include <string>
#include <utility>
#include <vector>

namespace host {

enum class Severity { Note, MayBlock, Blocks };

/// "note", "may be in the way", "in the way".
const char *describe(Severity severity);

enum class Finding {
    NothingFound,
    NoSuchPort,
    NotSerial,
    NoHardware,
    NoSuchPlotter,
    NoNode,
    NoNodeInContainer,
    NotInGroup,
    NotInSession,
    RootOnlyPort,
    NoUsbRules,
    NoRuleForVendor,
    RulesNotApplied,
    Console,
    Login,
    Held,
    Locked,
    LockedByHidden,
    LockFile,
    Claimed,
    ClaimedByHidden,
    ForeignDriver,
    DriverMissing,
    NoPortMade,
    BrlttyHolds,
    BrlttyRule,
    ModemManager,
    ModemManagerNear,
    PrintQueue,
    NotLikeAPlotter,
    OpenAsWell,
    PrinterDriver,
    PrinterDriverLost,
    NoWires,
    LinesDown,
    HiddenProcesses,
    HiddenQueues,
    Container,
};

/// What a row's placeholders stand for, by name. Any bytes: they are made safe to print, and safe for a shell.
using Words = std::vector<std::pair<const char *, std::string>>;

/// A finding about one link, in words.
struct Found {
    const char *name; ///< for programs: "not-in-group"
    Severity severity;
    ExitCode code;       ///< that it would end a print with; Done when it is not in the way
    std::string text;    ///< what it is
    std::string command; ///< that mends it; empty for none
    std::string then;    ///< what else there is to do; may be empty
};

/// The finding in words. Each placeholder of its row must be among the words.
Found found(Finding finding, const Words &words);

/// One word of a shell command, quoted when it must be.
std::string shellWord(const std::string &text);

} // namespace host
