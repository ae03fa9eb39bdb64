// The folders below which a user's own files are kept, and those of the whole system, as the desktop's base directory
// convention has them.
#pragma once

#include <filesystem>
#include <vector>

namespace host {

/// $variable/vectorix, or the same in the folder belowHome of the home folder; empty when the environment names neither by
/// an absolute path. The folder may not exist.
std::filesystem::path userFolder(const char *variable, const char *belowHome);

/// The vectorix folders for all users' settings, the one that counts most first: below those that XDG_CONFIG_DIRS names,
/// else /etc/vectorix. There is at least one; it may not exist.
std::vector<std::filesystem::path> systemFolders();

} // namespace host
