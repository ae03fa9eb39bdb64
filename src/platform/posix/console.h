// The console: the class that takes the plug-in's lines, and the names under which they are printed.
//
// The lines are part of the plug-in's interface. They go to the process's own streams unless a host takes them over.
#pragma once

#include <string_view>

namespace platform {

class Console {
public:
    virtual ~Console() = default;
    /// Takes text as it is printed, in whole or in part lines. Keeps no reference to it.
    virtual void print(std::string_view text, bool isError) = 0;
    /// Called at the end of each call of the entry.
    virtual void flush() = 0;
};

using ConsoleFunction = void (*)(const char *text, unsigned length, int isError, void *context);

/// Sends all console text to function instead of the process's streams; nullptr takes that back.
void setConsoleFunction(ConsoleFunction function, void *context) noexcept;

} // namespace platform

namespace posix {

/// Standard output: text and a line end.
void puts(std::string_view text);
/// Standard output.
__attribute__((format(printf, 1, 2))) void printf(const char *format, ...);
/// Standard error.
__attribute__((format(printf, 1, 2))) void eprintf(const char *format, ...);
/// Standard error: prefix and ": ", unless it is empty or NULL, the text of errno and a line end.
void perror(const char *prefix);
void flushConsole();

} // namespace posix
