// What may stand between this computer and a plotter: one row in a table for each obstacle, with its exit code, its words
// and the command that mends it: for the doctor, and in one line for a print that ends there. A check only names the
// obstacle and fills the placeholders, so that all texts and remedies can be read in one place.
#pragma once

#include "host/terminal/failure.h"

#include <string>
#include <utility>
#include <vector>

namespace host {

enum class Severity { Note, MayBlock, Blocks };

/// "note", "may be in the way", "in the way".
const char *severityText(Severity severity);

enum class Obstacle {
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
    HeldByHidden,
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

/// An obstacle that was found on one link, in words, safe to print.
struct Found {
    const char *name; ///< for programs: "not-in-group"
    Severity severity;
    ExitCode code;       ///< with which it would end a print; Done when it is not in the way
    std::string text;    ///< what is the matter
    std::string command; ///< a shell command that mends or shows it; empty for none
    std::string then;    ///< what the command does, or what to do after it; may be empty
    std::string line;    ///< all in one, as a print says it; empty for what it does not meet
};

/// The obstacle in words. Each placeholder of its row must be among the words.
Found found(Obstacle obstacle, const Words &words);

/// One word of a shell command, quoted when it must be.
std::string shellWord(const std::string &text);

} // namespace host
