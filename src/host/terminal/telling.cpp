#include "host/terminal/telling.h"

#include "host/terminal/output.h"

#include <algorithm>

namespace host {

void addTelling(const Command &command, Telling &telling, const TellingHelp &help) {
    if (help.verbose) command.flag("-v,--verbose", telling.verbose, help.verbose);
    command.flag("-q,--quiet", telling.quiet, help.quiet);
    command.flag("--json", telling.json, help.json);
}

void join(Verdict &all, const Verdict &next) {
    if (all.code == ExitCode::Done) {
        all.code = next.code;
        all.message = next.message;
    }
    for (const std::string &note : next.notes)
        if (std::ranges::find(all.notes, note) == all.notes.end()) all.notes.push_back(note);
}

Json jsonOf(const Verdict &verdict) {
    return {{"exitCode", static_cast<int>(verdict.code)}, {"message", verdict.message}, {"notes", verdict.notes}};
}

ExitCode tell(const Telling &telling, const Verdict &verdict, const Json &report, const std::string &lines) {
    if (telling.json) {
        printOut("{}\n", report.line());
    } else if (!telling.quiet) {
        printLines(lines);
    }
    flushOut();
    for (const std::string &note : verdict.notes) {
        if (!telling.quiet) printNote(note);
    }
    if (!verdict.message.empty()) printFailure(verdict.message);
    return verdict.code;
}

} // namespace host
