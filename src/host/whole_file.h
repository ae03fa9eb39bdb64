// Small files that are read and written as a whole.
#pragma once

#include <string>

namespace host {

/// The bytes of a file of at most 16 MB. what names its kind: "job file". Throws Failure.
std::string readWhole(const std::string &path, const char *what);

/// Writes a file that is either wholly there or not at all. Throws Failure; without force also when the file exists.
/// One that is replaced keeps its permissions; a link is followed, and stays.
void writeWhole(const std::string &path, const std::string &contents, bool force);

} // namespace host
