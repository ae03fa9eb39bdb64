// Standard output and standard error. A full disk or a reader that has left must not end a job half-way on the plotter: so
// writing never throws, SIGPIPE is ignored, and the first write that failed is remembered until afterOutput() makes an exit
// code of it. Width and colour are decided here too, so that commands write the same to a terminal and to a file.
#pragma once

#include "host/terminal/failure.h"

#include <fmt/format.h>
#include <string_view>

namespace host {

/// To be called first. A standard stream that the command was started without (">&-") is opened as /dev/null: else the port
/// would get its descriptor, and with it the report. Also ignores SIGPIPE.
void holdStandardStreams();

void writeOut(std::string_view text) noexcept;
void writeError(std::string_view text) noexcept;

template <class... Values> void printOut(fmt::format_string<Values...> format, Values &&...values) {
    writeOut(fmt::format(format, std::forward<Values>(values)...));
}

template <class... Values> void printError(fmt::format_string<Values...> format, Values &&...values) {
    writeError(fmt::format(format, std::forward<Values>(values)...));
}

/// When text for people is in colour: "always", "never", or "auto", the default: on a terminal (but one with TERM=dumb),
/// unless NO_COLOR is set and not empty.
void chooseColour(std::string_view when);

/// The word in the colour of what it says, when standard output is in colour: green for "ok" and "free", red for "no …" and
/// "in the way". Other words come back as they are.
std::string coloured(std::string_view word);

/// On standard error, as "vectorix: note: …" and "vectorix: …".
void printNote(std::string_view text) noexcept;
void printFailure(std::string_view text) noexcept;

/// Characters in a line of the terminal on standard output; 0 when that is no terminal.
size_t outputColumns();

/// Writes to standard output, broken at blanks to the width of the terminal; not broken when there is none.
void printLines(std::string_view text) noexcept;

/// Writes out what is buffered for standard output. To be called before something is written to standard error that must
/// appear behind it.
void flushOut() noexcept;

/// The exit code at the end of the command, given the one that it has reached. Done becomes Failed, with a message, when
/// standard output could not be written; but not when its reader has left, who had all that was wanted.
ExitCode afterOutput(ExitCode code);

} // namespace host
