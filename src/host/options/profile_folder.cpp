#include "host/options/profile_folder.h"

#include "host/files/user_folder.h"
#include "host/terminal/failure.h"
#include "host/terminal/text.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fmt/format.h>
#include <set>
#include <sys/stat.h>

namespace fs = std::filesystem;

namespace host {

namespace {

constexpr const char *kSuffix = ".toml";
constexpr const char *kFolder = "profiles";
constexpr size_t kLongest = 64;

bool isName(const std::string &name) {
    auto isLetterOrDigit = [](char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9'); };
    // One that starts with "-" would be taken for an option, one with "." would be hidden.
    return !name.empty() && name.size() <= kLongest && name[0] != '.' && name[0] != '-' &&
           std::all_of(name.begin(), name.end(),
                       [&](char c) { return isLetterOrDigit(c) || c == '-' || c == '_' || c == '.'; });
}

/// Empty where the environment names none.
fs::path usersFolder() {
    const fs::path folder = userFolder("XDG_CONFIG_HOME", ".config");
    return folder.empty() ? folder : folder / kFolder;
}

/// Those that there may be, the one that counts most first. A service's user need not have one of its own.
std::vector<ProfileFile> foldersToRead() {
    std::vector<ProfileFile> all;
    if (const fs::path own = usersFolder(); !own.empty()) all.push_back({own, ProfileScope::User});
    for (const fs::path &folder : systemFolders())
        all.push_back({folder / kFolder, ProfileScope::System});
    return all;
}

fs::path folderToWrite(ProfileScope scope) {
    if (scope == ProfileScope::System) return systemFolders().back() / kFolder;
    if (fs::path own = usersFolder(); !own.empty()) return own;
    throw Failure(ExitCode::Usage, "profiles: no folder for them: neither XDG_CONFIG_HOME nor HOME is set to one; set "
                                   "HOME to your home folder");
}

std::string fileName(const std::string &name) {
    if (isName(name)) return name + kSuffix;
    throw Failure(ExitCode::Usage,
                  fmt::format("\"{}\": not a name for a profile; take up to {} letters, digits, \"-\", \"_\" and \".\", "
                              "with neither \"-\" nor \".\" in front",
                              shown(name), kLongest));
}

void gatherNames(const std::string &folder, std::set<std::string> &names) {
    std::error_code error;
    for (fs::directory_iterator at(folder, error), end; !error && at != end; at.increment(error)) {
        fs::path file = at->path();
        if (file.extension() == kSuffix && isName(file.stem())) names.insert(file.stem());
    }
    if (error && error.value() != ENOENT) throw fileFailure(folder, error.value());
}

} // namespace

std::string profilePath(const std::string &name, ProfileScope scope) {
    const std::string file = fileName(name);
    return folderToWrite(scope) / file;
}

std::optional<ProfileFile> findProfile(const std::string &name) {
    const std::string file = fileName(name);
    for (const auto &[folder, scope] : foldersToRead()) {
        const fs::path path = fs::path(folder) / file;
        struct stat status;
        if (lstat(path.c_str(), &status) == 0 || errno != ENOENT) return ProfileFile{path, scope};
    }
    return std::nullopt;
}

std::vector<std::string> profileNames() {
    std::set<std::string> names;
    for (const ProfileFile &folder : foldersToRead())
        gatherNames(folder.path, names);
    return {names.begin(), names.end()};
}

void makeProfileFolder(ProfileScope scope) {
    // Configuration is the user's alone, unless somebody made the folder otherwise; the system's is for all.
    const mode_t mode = scope == ProfileScope::User ? 0700 : 0755;
    fs::path made;
    for (const fs::path &part : folderToWrite(scope)) {
        made /= part;
        if (mkdir(made.c_str(), mode) == 0) continue;
        int errorNumber = errno;
        std::error_code ignored;
        if (fs::is_directory(made, ignored)) continue;
        if (errorNumber != EACCES && errorNumber != EROFS) throw outputFailure(made, errorNumber);
        throw Failure(ExitCode::Permission,
                      fmt::format("{}: {}; profiles are kept below it: make it writable for you, or set XDG_CONFIG_HOME to "
                                  "a folder that is",
                                  shown(made.parent_path().string()), lowered(strerror(errorNumber))));
    }
}

} // namespace host
