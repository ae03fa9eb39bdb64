// What a reader found in a plot (size, strokes, pens, time, what it did not understand), as lines for people and as JSON for
// programs. Preview and simulate tell all of it from here, "print --virtual" the remarks. The list of the JSON fields stands
// beside the code that writes them, because help and manual pages are made from it.
#pragma once

#include "host/picture/view.h"
#include "host/terminal/json.h"
#include "host/terminal/manual.h"
#include "language/plot_reader.h"

#include <string>
#include <vector>

namespace host {

/// A few lines: language and size, what was drawn where, with which pens and in what time, what was not understood. line:
/// what the time was estimated for, "9600 bit/s"; empty for the pen alone.
std::string findingsText(language::Language language, const language::Findings &findings, const std::string &line = {});

/// What is worth a remark of a plot that was drawn on a sheet: that it leaves it, or that something was left out.
std::vector<std::string> findingNotes(const language::PlotReader &plot, const virtual_plotter::Sheet &sheet);

/// The same of one that is shown as a view, in a picture or not.
std::vector<std::string> viewNotes(const language::Findings &findings, const View &view, bool isDrawn);

/// The part of them that holds whatever the sheet: what a reader had to leave out.
std::vector<std::string> lossNotes(const language::Findings &findings);

/// Adds the findings to a JSON object, as the fields that findingsFields() lists.
void addFindings(Json &object, language::Language language, const language::Findings &findings);

/// The names of the fields that addFindings() writes, with what each holds, for the help and the manual pages.
std::vector<JsonFields> findingsFields();

} // namespace host
