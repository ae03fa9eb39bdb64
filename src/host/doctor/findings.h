// What may stand between this computer and a plotter: one row in a table for each finding, with its words, its exit code and
// the command that mends it. A check only names the finding and fills the placeholders, so that all texts and remedies can
// be read in one place.
#pragma once

#include "host/terminal/failure.h"

#include <string>
#include <utility>
#include <vector>

namespace host {

enum class Severity { Note, MayBlock, Blocks };

/// "note", "may be in the way", "in the way".
const char *severityText(Severity severity);

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

/// A finding about one link, in words, safe to print.
struct Found {
    const char *name; ///< for programs: "not-in-group"
    Severity severity;
    ExitCode code;       ///< with which it would end a print; Done when it is not in the way
    std::string text;    ///< what is the matter
    std::string command; ///< a shell command that mends or shows it; empty for none
    std::string then;    ///< what the command does, or what to do after it; may be empty
};

/// The finding in words. Each placeholder of its row must be among the words.
Found found(Finding finding, const Words &words);

/// One word of a shell command, quoted when it must be.
std::string shellWord(const std::string &text);

} // namespace host
