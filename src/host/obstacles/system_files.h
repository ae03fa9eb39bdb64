// What single files below /proc tell of a serial port. They answer without the port being opened, which could start the
// plotter.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <sys/stat.h>
#include <sys/types.h>

namespace host {

/// True when the kernel's console is on the terminal; proc is /proc.
bool isConsole(const std::filesystem::path &proc, dev_t terminal);

/// The process that has locked the file with flock(); 0 for one outside this container. No value when nobody has.
std::optional<pid_t> lockOwner(const std::filesystem::path &proc, const struct stat &file);

/// The modem lines that are up on one of the board's own ports (ttyS…), such as "RTS|CTS|DTR"; empty when none is. The
/// kernel shows them to root alone. No value when they cannot be seen.
std::optional<std::string> modemLines(const std::filesystem::path &proc, const std::string &name);

} // namespace host
