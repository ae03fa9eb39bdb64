// Small files that come and go without our doing: what the kernel publishes of processes, and lock files. One that vanishes
// before it is read is no failure, so there is a text or none.
#pragma once

#include <optional>
#include <string>

namespace host {

/// The file's bytes. None when it is gone (a process may end between being found and being read), may not be read, is no
/// regular file or longer than most bytes. Never waits, and follows no link in the path's last part: in a folder that all
/// may write, anything may stand under a name.
std::optional<std::string> smallFile(const std::string &path, size_t most = size_t{16} * 1024 * 1024);

} // namespace host
