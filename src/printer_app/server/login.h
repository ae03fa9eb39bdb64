// The page's password, for those who come from another computer. It is kept as a hash (yescrypt, the system's own for
// passwords); the print system's ways to log in are not used, for one lets anybody pause a queue and the other takes any
// word.
#pragma once

#include "host/terminal/failure.h"

#include <filesystem>
#include <string>

namespace printer_app {

/// Reads a password from standard input and keeps its hash. Throws host::Failure.
host::ExitCode keepPassword(const std::filesystem::path &folder);

/// Throws host::Failure (usage) when none was kept.
void requirePassword(const std::filesystem::path &folder);

/// Whether the value of an HTTP field "Authorization" (Basic, any user) has the password. One at a time, and a wrong one
/// takes a second, so that nobody tries many.
bool isAuthorized(const std::filesystem::path &folder, const std::string &field);

} // namespace printer_app
