// How reports on links are told to people and to programs. Besides the findings, people may see all that was looked at: who
// finds nothing in the way wants to know what was checked.
#pragma once

#include "host/obstacles/link_report.h"
#include "host/terminal/manual.h"

namespace host {

/// The exit code of the first finding that is in the way; Done when none is.
ExitCode exitCodeOf(const std::vector<LinkReport> &reports);

/// Prints a block for each report on standard output; with isVerbose also what was looked at.
void printReports(const std::vector<LinkReport> &reports, bool isVerbose);

/// The reports as one JSON object on standard output.
void printReportsAsJson(const std::vector<LinkReport> &reports);

/// The fields of that object, for the help and the manual pages.
std::vector<JsonFields> reportFields();

} // namespace host
