// The options that say what a plot is drawn on and with: a sheet, or the area that a plotter's pen reaches, pens, and which
// language the plot is in. Preview, print, simulate and convert take the same ones, and profiles keep the area.
#pragma once

#include "host/terminal/command.h"

#include "language/language.h"
#include "virtual_plotter/drawing/sheet.h"

#include <optional>
#include <string>
#include <vector>

namespace host {

/// Where neither a sheet nor an area is named.
inline constexpr const char *kUsualSheet = "a4";

struct DrawingOptions {
    std::string sheet;      ///< empty: the usual one
    std::string area;       ///< as parseArea() takes it; empty: that of the sheet
    double dotsPerInch = 0; ///< 0: as many as are usual
    std::string format;     ///< of the picture; empty: by its name
    std::string language = "auto";
};

/// Adds --sheet, --area and --dpi; returns the first and the last, which are of a picture alone.
std::vector<Option> addDrawingOptions(const Command &app, DrawingOptions &options);
/// Adds --sheet and --area, of what is plotted.
void addPlaceOn(const Command &app, DrawingOptions &options);
/// Adds --dpi alone.
Option addDotsPerInch(const Command &app, DrawingOptions &options);
/// Adds --sheet alone.
Option addSheet(const Command &app, DrawingOptions &options, const std::string &help);
/// Adds --area alone.
Option addArea(const Command &app, std::string &area);
/// Adds --pens-held; 0 when it is not typed.
Option addPensHeld(const Command &app, int32_t &pens);
/// Adds --language.
void addLanguage(const Command &app, DrawingOptions &options);

virtual_plotter::Sheet sheetOf(const DrawingOptions &options);
/// As it was typed, or what it is when nothing was typed: "a4".
std::string sheetName(const DrawingOptions &options);
/// None for "auto".
std::optional<language::Language> languageOf(const DrawingOptions &options);

} // namespace host
