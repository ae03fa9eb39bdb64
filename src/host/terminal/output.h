// Standard output and standard error. What cannot be written there must not disturb a job: nothing here throws, and the
// loss is judged when the command ends.
#pragma once

#include "host/terminal/failure.h"

#include <fmt/format.h>
#include <string_view>

namespace host {

/// Opens what the command was started without, as the null device: a port would take its number, and then get the report.
void holdStandardStreams();

void writeOut(std::string_view text) noexcept;
void writeError(std::string_view text) noexcept;

template <class... Values> void printOut(fmt::format_string<Values...> format, Values &&...values) {
    writeOut(fmt::format(format, std::forward<Values>(values)...));
}

template <class... Values> void printError(fmt::format_string<Values...> format, Values &&...values) {
    writeError(fmt::format(format, std::forward<Values>(values)...));
}

/// Whether what is meant for people has colour: "always", "never", or "auto": on a terminal that has it, unless NO_COLOR is
/// set to something. The default is "auto".
void chooseColour(std::string_view when);

/// The word in its colour, if standard output has any: what hinders red, what is well green, others as they are.
std::string coloured(std::string_view word);

/// On standard error, as "vectorix: note: …" and "vectorix: …".
void printNote(std::string_view text) noexcept;
void printFailure(std::string_view text) noexcept;

/// Of the terminal that standard output is; 0 when it is none.
size_t outputColumns();

/// Lines for people on standard output: as wide as the terminal, broken at blanks.
void printLines(std::string_view text) noexcept;

/// Before something else is said on standard error, so that both come in their order.
void flushOut() noexcept;

/// The command's exit code: Failed, which is said, for one that is done but could not write its output. A reader that left
/// had enough: that is no failure.
ExitCode afterOutput(ExitCode code);

} // namespace host
