// From a file to the bytes that a plotter is sent of it: a plot file as it is, mended where it would not arrive whole, and
// anything else, or what shall lie elsewhere, written anew. Print and preview get their plots here, so that the one shows
// what the other sends.
#pragma once

#include "host/convert/conversion.h"
#include "host/convert/plot_texts.h"
#include "host/examination/examination.h"

namespace host {

/// What may become of a file.
struct ReadyOptions {
    ConversionOptions conversion;
    bool isConverted = false; ///< a plot as well: something was typed that only strokes can be given
    PlotTexts texts = {};     ///< that are put into it
    bool isExact = false;     ///< nothing is mended
    bool isForced = false;    ///< what cannot be mended is taken as it is
};

/// What became of the file.
struct ReadyReport {
    std::vector<std::string> mendings;          ///< of a plot file: "ended with \";\""
    std::optional<ConversionReport> conversion; ///< of one that was written anew
    PlotTexts texts = {};                       ///< that were put into it
    std::string refusal = {};                   ///< why it would not arrive whole, of one that is taken all the same
};

struct ReadyPlot {
    PlotFile plot;
    ReadyReport report;
};

/// Of a plot file for which none were named: those of its language.
PlotRules usualRules(const PlotFile &file);

/// rules: by which the plot will be cut; drawing: sheet and language. Throws Failure.
ReadyPlot readyPlot(PlotFile file, const ReadyOptions &options, const DrawingOptions &drawing, const PlotRules &rules);

/// As lines for people, as what is worth knowing, and as members of a JSON object.
std::string readyText(const ReadyReport &report);
std::vector<std::string> readyNotes(const ReadyReport &report);
void addReady(Json &object, const ReadyReport &report);

/// The members that addReady() writes, for the help and the manual page.
std::vector<JsonFields> readyFields();

} // namespace host
