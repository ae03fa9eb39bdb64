#include "host/plugin/console_lines.h"

#include "host/terminal/output.h"
#include "host/terminal/text.h"

#include <cstdio>
#include <fmt/format.h>
#include <orb/vectorix.h>

namespace host {

namespace {

constexpr size_t kMostKept = size_t{16} * 1024; // bytes: a job that fails at every piece would fill the memory

} // namespace

ConsoleLines::ConsoleLines(bool live, ProgressBar &bar) : live_(live), bar_(bar) { ORB_hostSetConsole(take, this); }

ConsoleLines::~ConsoleLines() { ORB_hostSetConsole(nullptr, nullptr); }

void ConsoleLines::take(const char *text, uint32_t length, int32_t, void *context) noexcept {
    try {
        static_cast<ConsoleLines *>(context)->add({text, length});
    } catch (...) {
        // No memory: the line is lost, the job is not.
    }
}

void ConsoleLines::add(std::string_view text) {
    for (char c : text) {
        if (c == '\n') {
            endLine();
        } else {
            line_ += c;
        }
    }
}

void ConsoleLines::endLine() {
    std::string text = std::move(line_);
    line_.clear();
    if (text.empty()) return;
    text = fmt::format("plug-in: {}\n", shown(text));
    if (live_) {
        bar_.writeAbove(text);
    } else if (kept_.size() + text.size() <= kMostKept) {
        kept_ += text;
    } else {
        ++dropped_;
    }
}

void ConsoleLines::show() {
    endLine();
    writeError(kept_);
    if (dropped_ > 0)
        printError("plug-in: … and {} more; -v shows them all\n", counted(static_cast<int64_t>(dropped_), "line"));
    kept_.clear();
    dropped_ = 0;
}

} // namespace host
