// Job files and profiles, which are small enough to be read and written as a whole. A new one is written beside the old one,
// brought to the disk and then given the name, so that a full disk or a power cut leaves the old file or the new one, and
// never a half.
#pragma once

#include <cstdint>
#include <string>

namespace host {

/// The bytes of a file. what names its kind: "job file". Throws Failure, also for a file of more than most bytes.
std::string readWhole(const std::string &path, const char *what, int64_t most);

/// Writes a file that is either wholly there or not at all. Throws Failure, also for a device or a pipe, in whose place the
/// file would come; without force also when the file exists.
/// One that is replaced keeps its permissions; a link is followed, and stays.
void writeWhole(const std::string &path, const std::string &contents, bool force);

} // namespace host
