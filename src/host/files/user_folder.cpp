#include "host/files/user_folder.h"

#include <cstdlib>
#include <sstream>

namespace host {

namespace {

constexpr const char *kSystemFolder = "/etc";
/// What the convention has for it. Desktops name it in XDG_CONFIG_DIRS behind folders of their own, services name nothing:
/// both have to find the same profiles.
constexpr const char *kConventionalFolder = "/etc/xdg";

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

std::vector<std::filesystem::path> systemFolders() {
    const char *value = getenv("XDG_CONFIG_DIRS");
    std::istringstream list(value ? value : "");
    std::vector<std::filesystem::path> folders;
    for (std::string folder; std::getline(list, folder, ':');) {
        if (!folder.starts_with('/')) continue;
        folders.push_back(std::filesystem::path(folder == kConventionalFolder ? kSystemFolder : folder) / "vectorix");
    }
    if (folders.empty()) folders.push_back(std::filesystem::path(kSystemFolder) / "vectorix");
    return folders;
}

} // namespace host
