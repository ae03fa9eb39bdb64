// What the plug-in prints during its calls.
#pragma once

#include "host/plugin/progress_bar.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace host {

/// Takes the plug-in's console while it lives. One at a time.
class ConsoleLines {
public:
    /// live: shows each line on standard error as it comes, past the bar; otherwise keeps them.
    ConsoleLines(bool live, ProgressBar &bar);
    ConsoleLines(const ConsoleLines &) = delete;
    ConsoleLines &operator=(const ConsoleLines &) = delete;
    ~ConsoleLines();

    /// Shows the lines that were kept: a call failed.
    void show();

private:
    static void take(const char *text, uint32_t length, int32_t isError, void *context) noexcept;
    void add(std::string_view text);
    void endLine();

    bool live_;
    ProgressBar &bar_;
    std::string line_; ///< not ended yet
    std::string kept_;
    uint64_t dropped_ = 0; ///< lines past what is kept
};

} // namespace host
