// What "vectorix convert" makes of a drawing: strokes with pens, placed on a sheet and put in order, as a plot file that
// cuts well. The steps are those of src/strokes; here is what people type for them, and what they are told.
#pragma once

#include "emulations/emulations.h"
#include "host/convert/drawing_of.h"
#include "host/picture/drawing.h"
#include "host/terminal/command.h"
#include "host/terminal/manual.h"
#include "host/terminal/telling.h"
#include "strokes/place.h"

#include <optional>
#include <string>

namespace host {

/// As typed; lengths in millimetres.
struct ConvertOptions {
    std::string input;
    std::string output;     ///< "-" for standard output
    DrawingOptions drawing; ///< its sheet, and the input's language
    int emulation = emulations::kHpgl;
    double margin = 0;
    bool isFitted = false;
    double scale = 1;
    std::string turn;
    bool isMirrored = false;
    bool isCentred = false;
    std::string at; ///< "X,Y"
    std::string pens;
    int carousel = 8;
    std::string order; ///< empty: nearest for SVG and PDF, as-drawn for a plot
    int page = 1;
    std::string fill = "outline";
    bool showsHidden = false;
    std::optional<double> simplify;
    Telling telling;
};

/// Adds the options for pens, place and order.
void addConvertOptions(const Command &command, ConvertOptions &options);

/// What became of the strokes.
struct StrokeCount {
    size_t strokes = 0;
    strokes::Travel travel;
};

struct Conversion {
    std::string plot;           ///< the file's bytes
    ReadDrawing read;           ///< with the strokes as they were written
    language::Rectangle extent; ///< of them in millimetres, from the corner of the pen's area
    strokes::Placed placed;
    StrokeCount before, after; ///< they were put in order, both where they were placed
    bool leavesSheet = false;
};

/// Throws Failure.
Conversion conversionOf(const PlotFile &input, const ConvertOptions &options);

/// The verdict with its notes; the report as lines for people, and as JSON without the verdict.
Verdict verdictOf(const Conversion &conversion, const ConvertOptions &options);
std::string conversionText(const Conversion &conversion, const ConvertOptions &options);
void addConversion(Json &report, const Conversion &conversion);

/// The fields that addConversion() writes, for the help and the manual page.
std::vector<JsonFields> conversionFields();

} // namespace host
