// What was found in a plot, told to people and to programs.
#pragma once

#include "host/manual.h"
#include "virtual_plotter/drawing/sheet.h"
#include "virtual_plotter/face/plot_reader.h"

#include <nlohmann/json_fwd.hpp>
#include <string>
#include <vector>

namespace host {

/// A few lines: language and size, what was drawn where, with which pens and in what time, what was not understood.
std::string findingsText(const virtual_plotter::PlotReader &plot);

/// What is worth a remark: a drawing that leaves the sheet, or of which something was left out.
std::vector<std::string> findingNotes(const virtual_plotter::PlotReader &plot, const virtual_plotter::Sheet &sheet);

/// Adds the findings to a JSON object.
void addFindings(nlohmann::ordered_json &object, const virtual_plotter::PlotReader &plot);

/// Those fields.
std::vector<JsonFields> findingsFields();

} // namespace host
