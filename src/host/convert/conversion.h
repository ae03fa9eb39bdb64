// What becomes of a drawing on its way to a plotter: strokes with pens, placed on a sheet and put in order, as a plot file
// that cuts well. The steps are those of src/strokes; here is what people type for them, and what they are told. "convert"
// writes it to a file, "print" and "preview" go on with it.
#pragma once

#include "host/convert/drawing_of.h"
#include "host/picture/drawing.h"
#include "host/terminal/command.h"
#include "host/terminal/json.h"
#include "host/terminal/manual.h"
#include "strokes/pens.h"
#include "strokes/place.h"

#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace host {

/// As typed; lengths in millimetres.
struct ConversionOptions {
    double margin = 0;
    bool isFitted = false;
    double scale = 1;
    std::string turn;
    bool isMirrored = false;
    bool isCentred = false;
    std::string at; ///< "X,Y"
    double unit = 1 / language::kUnitsPerMillimetre;
    std::string pens;
    strokes::PenColours taken; ///< pens that other sheets of the same print have given to their colours
    int32_t pensHeld = 0;      ///< 0: as many as most plotters hold
    std::string order;         ///< empty: nearest for SVG and PDF, as-drawn for a plot
    bool isByPen = false;      ///< a plot's strokes as well
    bool isMixed = false;      ///< the pens, where strokes stay as they were drawn
    int page = 1;
    std::string fill = "outline";
    bool showsHidden = false;
    std::optional<double> simplify;
};

inline constexpr const char *kDrawingsGroup = "SVG and PDF"; ///< heading of their own options
inline constexpr int kMostPages = 1'000'000;

/// Adds --page, of the one page that is drawn. For the order in the help: ahead of the options that follow.
void addPage(const Command &command, ConversionOptions &options);

/// Adds the options for pens, place and order, but for the sheet; returns those that a plot file must be converted for.
std::vector<Option> addConversionOptions(const Command &command, ConversionOptions &options);

/// What the plot is written for.
struct ConversionTarget {
    DrawingOptions drawing; ///< the sheet, and the input's language
    int emulation = 0;
    std::string terminator; ///< that the job names
};

/// What became of the strokes.
struct StrokeCount {
    size_t strokes = 0;
    strokes::Travel travel;
};

struct ConversionReport {
    std::optional<language::Language> language; ///< that the drawing was in; none for SVG and PDF
    size_t bytes = 0;                           ///< of the plot
    language::Rectangle extent;                 ///< in millimetres, from the corner of the pen's area
    strokes::Placed placed;
    StrokeCount before, after; ///< they were put in order, both where they were placed
    std::set<int> pens;
    strokes::PenColours colours; ///< of a drawing that has colours
    bool leavesSheet = false;
    std::vector<std::string> notes; ///< what is worth knowing
};

struct Conversion {
    std::string plot; ///< the file's bytes
    ConversionReport report;
};

/// Throws Failure.
Conversion conversionOf(const PlotFile &input, const ConversionOptions &options, const ConversionTarget &target);

/// The report as lines for people, the strokes alone or their size as well, and as members of a JSON object.
std::string strokesText(const ConversionReport &report);
std::string conversionText(const ConversionReport &report);
void addConversion(Json &object, const ConversionReport &report);

/// The members that addConversion() writes, for the help and the manual page.
std::vector<JsonFields> conversionFields();

} // namespace host
