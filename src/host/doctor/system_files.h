// What single files of the system say of a port.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <sys/stat.h>
#include <sys/types.h>

namespace host {

/// True when the kernel's console is on the terminal; proc is /proc.
bool isConsole(const std::filesystem::path &proc, dev_t terminal);

/// The process with a lock on the file: 0 for one outside this container. None when nobody has one.
std::optional<pid_t> lockOwner(const std::filesystem::path &proc, const struct stat &file);

/// The modem lines that are up on a port of the board, "RTS|CTS|DTR", which only root may see: reading them opens nothing.
/// None when they cannot be told.
std::optional<std::string> modemLines(const std::filesystem::path &proc, const std::string &name);

} // namespace host
