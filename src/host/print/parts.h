// A print in parts: from a place on, or with a pause for each change of pens. Each part is a job of its own, which begins
// with the state that the language had there; so nothing depends on where pieces end, and what a plotter is sent when a job
// begins does no harm.
#pragma once

#include "host/convert/conversion.h"
#include "host/examination/examination.h"
#include "host/terminal/command.h"
#include "language/places.h"

#include <optional>
#include <string>
#include <vector>

namespace host {

/// What is sent as a job of its own.
struct PlotPart {
    PlotFile file;          ///< the state, and a part of the plot behind it
    int64_t begin = 0;      ///< in the plot, of that part
    int64_t stateBytes = 0; ///< ahead of it in the file
    std::string wanted;     ///< what a person has to do before, as "put in pen 2"; empty: nothing

    /// In the plot, when so many bytes of the file have been sent.
    int64_t place(int64_t sentBytes) const { return begin + std::max<int64_t>(0, sentBytes - stateBytes); }
};

/// Where a print begins.
struct StartOptions {
    std::string from;       ///< "2000", "40%" or "stroke:12"; empty: at the beginning
    bool isResumed = false; ///< where the last print of the plot ended
    double overlap = 0;     ///< millimetres drawn that are drawn once more
};

/// Adds --from.
Option addFrom(const Command &command, StartOptions &start);

/// How a plot is read.
struct ReadAs {
    std::optional<language::Language> language;
    language::Rectangle hardClip;
};

/// Where the print of a plot begins: the last place with the pen up that leaves out nothing behind what was typed. Throws
/// Failure for a place that the plot does not have, or when there is no interrupted print of it.
language::Place startOf(const PlotFile &plot, const ReadAs &as, const StartOptions &options);

/// The plot from a place on, in parts between which a person changes pens where the plotter holds fewer than are drawn with;
/// pensHeld 0: the plotter changes them itself. colours: of the pens, where they are known. Empty when that is the whole
/// plot as it is. Throws Failure.
std::vector<PlotPart> partsOf(const PlotFile &plot, const ReadAs &as, const language::Place &start, int pensHeld,
                              const strokes::PenColours &colours, const PlotRules &rules);

} // namespace host
