// What was found about one link.
#pragma once

#include "host/doctor/findings.h"
#include "host/terminal/manual.h"

namespace host {

struct LinkReport {
    std::string kind;     ///< for programs: "serial", "usb", "adapter", "computer"
    std::string link;     ///< as it was typed or found: a path, a model at a location; any bytes
    std::string hardware; ///< safe to print; may be empty
    std::vector<Found> findings;
    std::vector<std::string> looked; ///< what was looked at, and what it said; safe to print

    void add(Finding finding, const Words &words = {}) { findings.push_back(found(finding, words)); }
    void saw(const std::string &what) { looked.push_back(what); }

    /// Of its gravest finding; a note when there is none.
    Severity severity() const;
};

/// Of the first finding in the way; Done when nothing is.
ExitCode exitCodeOf(const std::vector<LinkReport> &reports);

/// A block for each report on standard output; isVerbose: with what was looked at.
void printReports(const std::vector<LinkReport> &reports, bool isVerbose);

/// The reports as one JSON object on standard output.
void printReportsAsJson(const std::vector<LinkReport> &reports);

/// That object, as a paragraph for the help.
std::vector<JsonFields> reportFields();

} // namespace host
