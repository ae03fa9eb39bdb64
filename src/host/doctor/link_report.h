// What was found about one link, and how it is told to people and to programs. Besides the findings it lists all that was
// looked at, for --verbose: who finds nothing in the way wants to know what was checked.
#pragma once

#include "host/doctor/findings.h"
#include "host/terminal/manual.h"

namespace host {

struct LinkReport {
    std::string kind;     ///< for programs: "serial", "usb", "adapter", "computer"
    std::string link;     ///< as it was typed or found: a path, or a USB model and location; any bytes
    std::string hardware; ///< safe to print; may be empty
    std::vector<Found> findings;
    std::vector<std::string> looked; ///< what was looked at, and what it said; safe to print

    void add(Finding finding, const Words &words = {}) { findings.push_back(found(finding, words)); }
    void saw(const std::string &what) { looked.push_back(what); }

    /// The severity of the gravest finding; Note when there is no finding.
    Severity severity() const;
};

/// The exit code of the first finding that is in the way; Done when none is.
ExitCode exitCodeOf(const std::vector<LinkReport> &reports);

/// Prints a block for each report on standard output; with isVerbose also what was looked at.
void printReports(const std::vector<LinkReport> &reports, bool isVerbose);

/// The reports as one JSON object on standard output.
void printReportsAsJson(const std::vector<LinkReport> &reports);

/// The fields of that object, for the help and the manual pages.
std::vector<JsonFields> reportFields();

} // namespace host
