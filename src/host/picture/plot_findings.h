// What was found in a plot, told to people and to programs.
#pragma once

#include "host/terminal/json.h"
#include "host/terminal/manual.h"
#include "language/plot_reader.h"
#include "virtual_plotter/drawing/sheet.h"

#include <string>
#include <vector>

namespace host {

/// A few lines: language and size, what was drawn where, with which pens and in what time, what was not understood.
std::string findingsText(const language::PlotReader &plot);

/// What is worth a remark: a drawing that leaves the sheet, or of which something was left out.
std::vector<std::string> findingNotes(const language::PlotReader &plot, const virtual_plotter::Sheet &sheet);

/// Adds the findings to a JSON object.
void addFindings(Json &object, const language::PlotReader &plot);

/// Those fields.
std::vector<JsonFields> findingsFields();

} // namespace host
