// A plotter's own texts around each plot: speed, force, a new page. They are put into the plot, since ahead of it its
// initialisation would undo them, and behind what ends it nobody listens. Being a part of the plot, they are in the state
// that a print begins with in the middle of it, too.
#pragma once

#include "host/examination/examination.h"

#include <string>

namespace host {

/// Bytes; empty for none.
struct PlotTexts {
    std::string before, after;
};

/// The texts with what ends an instruction behind them.
PlotTexts ended(PlotTexts texts, const PlotRules &rules);

/// The plot with the texts in it: one behind its initialisation, one at its end. Throws Failure (usage): for a language that
/// cannot be followed, and when anything else would be drawn then, as behind a plot that ends within a label.
PlotFile withTexts(const PlotFile &plot, const PlotTexts &texts, const PlotRules &rules);

} // namespace host
