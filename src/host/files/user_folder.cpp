#include "host/files/user_folder.h"

#include <cstdlib>

namespace host {

namespace {

/// What the environment says; a path that is not absolute counts as none.
std::filesystem::path folderIn(const char *variable) {
    const char *value = getenv(variable);
    return value && value[0] == '/' ? value : "";
}

} // namespace

std::filesystem::path userFolder(const char *variable, const char *belowHome) {
    std::filesystem::path folder = folderIn(variable);
    if (const auto home = folderIn("HOME"); folder.empty() && !home.empty()) folder = home / belowHome;
    return folder.empty() ? folder : folder / "vectorix";
}

} // namespace host
