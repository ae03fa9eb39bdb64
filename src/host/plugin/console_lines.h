// What the plug-in prints during its calls. It is more than somebody who prints wants to read, so it is kept, and shown only
// when the call failed or with -v; and on a terminal it must not run into the progress bar.
#pragma once

#include "host/plugin/progress_bar.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace host {

/// While it exists, the plug-in's console lines come here instead of to the standard streams. One object at a time.
class ConsoleLines {
public:
    /// live: writes each line to standard error as it comes, above the bar; otherwise keeps the first 16 KB. bar must
    /// outlive the object.
    ConsoleLines(bool live, ProgressBar &bar);
    ConsoleLines(const ConsoleLines &) = delete;
    ConsoleLines &operator=(const ConsoleLines &) = delete;
    ~ConsoleLines();

    /// Writes the lines that were kept to standard error, after a call that failed.
    void show();

private:
    static void take(const char *text, uint32_t length, int32_t isError, void *context) noexcept;
    void add(std::string_view text);
    void endLine();

    bool live_;
    ProgressBar &bar_;
    std::string line_; ///< not ended yet
    std::string kept_;
    uint64_t dropped_ = 0; ///< lines for which kept_ had no room
};

} // namespace host
