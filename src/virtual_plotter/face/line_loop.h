// Plays a virtual plotter on a pseudo-terminal, in real time.
#pragma once

#include "virtual_plotter/face/plotter.h"
#include "virtual_plotter/face/pty_line.h"

#include <chrono>
#include <functional>
#include <optional>

namespace virtual_plotter {

struct LineRules {
    /// Asked several times a second; true ends the play. Empty: never.
    std::function<bool()> isStopped;
    /// Ends the play when whoever had opened the line has closed it, and nobody has opened it again for so long.
    std::optional<std::chrono::milliseconds> onceWithin;
    /// Not before something was heard: a program may only have looked whether the line is there.
    bool mustHear = true;
};

/// Returns when the rules say so, or when the plotter hangs up, which takes the line away. What the plotter says and nobody
/// reads is lost.
void playOn(PtyLine &line, VirtualPlotter &plotter, const LineRules &rules);

} // namespace virtual_plotter
