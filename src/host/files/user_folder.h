// The folders below which a user's own files are kept, as the desktop's base directory convention has them.
#pragma once

#include <filesystem>

namespace host {

/// $variable/vectorix, or the same in the folder belowHome of the home folder; empty when the environment names neither by
/// an absolute path. The folder may not exist.
std::filesystem::path userFolder(const char *variable, const char *belowHome);

} // namespace host
