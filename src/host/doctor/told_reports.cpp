#include "host/doctor/told_reports.h"
#include "host/terminal/json.h"

#include "host/terminal/output.h"
#include "host/terminal/text.h"

#include <fmt/format.h>
#include <string_view>

namespace host {

namespace {

constexpr size_t kWordWidth = 19; // "may be in the way" and what separates it

const char *stateOf(const LinkReport &report) {
    return report.severity() == Severity::Note ? "free" : severityText(report.severity());
}

/// The word, filled with blanks up to the column of what it is about.
std::string wordOf(std::string_view word) { return fmt::format("{}{:{}}", coloured(word), "", kWordWidth - word.size()); }

void print(const LinkReport &report, bool isVerbose) {
    const char *state = report.kind == "computer" ? severityText(report.severity()) : stateOf(report);
    printOut("{}{}{}{}\n", wordOf(state), shown(report.link), report.hardware.empty() ? "" : "  ", report.hardware);
    for (const Found &found : report.findings) {
        printOut("  {}{}\n", wordOf(severityText(found.severity)), found.text);
        if (!found.command.empty()) printOut("  {:{}}$ {}\n", "", kWordWidth, found.command);
        if (!found.then.empty()) printOut("  {:{}}{}\n", "", kWordWidth, found.then);
    }
    for (const std::string &what : report.looked) {
        if (isVerbose) printOut("  {}{}\n", wordOf("looked at"), what);
    }
}

Json jsonOf(const LinkReport &report) {
    Json findings = Json::array();
    for (const Found &found : report.findings) {
        findings.push_back({{"name", found.name},
                            {"severity", severityText(found.severity)},
                            {"text", found.text},
                            {"command", found.command},
                            {"then", found.then}});
    }
    return {{"kind", report.kind},      {"link", report.link},  {"hardware", report.hardware},
            {"state", stateOf(report)}, {"findings", findings}, {"lookedAt", report.looked}};
}

} // namespace

ExitCode exitCodeOf(const std::vector<LinkReport> &reports) {
    for (const LinkReport &report : reports) {
        if (const Found *found = report.inTheWay()) return found->code;
    }
    return ExitCode::Done;
}

void printReports(const std::vector<LinkReport> &reports, bool isVerbose) {
    for (const LinkReport &report : reports)
        print(report, isVerbose);
}

void printReportsAsJson(const std::vector<LinkReport> &reports) {
    Json links = Json::array();
    for (const LinkReport &report : reports)
        links.push_back(jsonOf(report));
    Json object = {{"exitCode", static_cast<int>(exitCodeOf(reports))}, {"links", links}};
    printOut("{}\n", object.text());
}

std::vector<JsonFields> reportFields() {
    return {
        {"exitCode", "as the command's"},
        {"links", "one for each link, and one of kind computer for what concerns all"},
        {"  kind, link, hardware", "serial, usb, adapter (one without a port) or computer"},
        {"  state", "free, may be in the way, or in the way"},
        {"  findings", "name, severity (note or as state), text, command, then"},
        {"  lookedAt", "what was looked at, and what it said"},
    };
}

} // namespace host
