// A plot that comes through a pipe. A plot is read more than once, for its examination and for the print, and a pipe can be
// read only once: so it is copied to its end into a temporary file.
#pragma once

#include "host/files/kept_file.h"

#include <string>

namespace host {

/// "-", for standard input, or the path of a named pipe.
bool isPlotStream(const std::string &path);

/// For messages: "standard input", or the path.
std::string streamName(const std::string &path);

/// All that came until the stream's end. Blocks until then, and a signal with a handler does not end that: to be called
/// before StopOnSignal holds Ctrl-C. Throws Failure, also when standard input is a terminal.
KeptFile keepPlotStream(const std::string &path);

} // namespace host
