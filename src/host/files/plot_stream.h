// A plot that comes through a pipe: kept in a file without a name, for a plot is read more than once.
#pragma once

#include <string>

namespace host {

/// "-", for standard input, or the path of a named pipe.
bool isPlotStream(const std::string &path);

/// As people call it.
std::string streamName(const std::string &path);

/// A descriptor of a file with all that came until the stream's end. The file is in the folder for temporary files, and gone
/// with its last descriptor, however the process ends; a signal ends it here as it ends any program. Throws Failure.
int keepPlotStream(const std::string &path);

} // namespace host
