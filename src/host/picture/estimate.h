// What a plot comes to before anything is drawn or sent: what is in it, how far it reaches, and how long it takes. Preview,
// dry run and print tell of the same plot, so they all read it here; a plot is read through once, at some 100 MB a second.
#pragma once

#include "host/files/plot_file.h"
#include "language/reader.h"

#include <optional>
#include <vector>

namespace host {

struct Estimate {
    language::Language language;
    language::Findings findings; ///< of the whole file, with nothing cut off at the sheet's edges

    /// Seconds that remain when so many bytes have gone to the plotter and have been drawn.
    double secondsLeft(int64_t doneBytes) const;

    int64_t stepBytes = 1;           ///< of the file, for each entry of course
    std::vector<double> course = {}; ///< seconds that have gone by at the end of each step
};

/// language: none to go by the first bytes. hardClip: what the pen reaches, by which some plots scale themselves.
/// secondsPerByte: of the line, 0 when the pen alone sets the pace. Throws Failure.
Estimate estimateOf(const PlotFile &plot, std::optional<language::Language> language, const language::Rectangle &hardClip,
                    double secondsPerByte);

} // namespace host
