#include "host/options/profile_folder.h"

#include "host/files/user_folder.h"
#include "host/terminal/failure.h"
#include "host/terminal/text.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fmt/format.h>
#include <sys/stat.h>

namespace fs = std::filesystem;

namespace host {

namespace {

constexpr const char *kSuffix = ".toml";
constexpr size_t kLongest = 64;

bool isName(const std::string &name) {
    auto isLetterOrDigit = [](char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9'); };
    // One that starts with "-" would be taken for an option, one with "." would be hidden.
    return !name.empty() && name.size() <= kLongest && name[0] != '.' && name[0] != '-' &&
           std::all_of(name.begin(), name.end(),
                       [&](char c) { return isLetterOrDigit(c) || c == '-' || c == '_' || c == '.'; });
}

} // namespace

std::string profileFolder() {
    const fs::path folder = userFolder("XDG_CONFIG_HOME", ".config");
    if (folder.empty()) {
        throw Failure(ExitCode::Usage, "profiles: no folder for them: neither XDG_CONFIG_HOME nor HOME is set to one; set "
                                       "HOME to your home folder");
    }
    return folder / "profiles";
}

std::string profilePath(const std::string &name) {
    if (!isName(name)) {
        throw Failure(ExitCode::Usage,
                      fmt::format("\"{}\": not a name for a profile; take up to {} letters, digits, \"-\", \"_\" and \".\", "
                                  "with neither \"-\" nor \".\" in front",
                                  shown(name), kLongest));
    }
    return fs::path(profileFolder()) / (name + kSuffix);
}

std::vector<std::string> profileNames() {
    std::string folder = profileFolder();
    std::error_code error;
    std::vector<std::string> names;
    for (fs::directory_iterator at(folder, error), end; !error && at != end; at.increment(error)) {
        fs::path file = at->path();
        if (file.extension() == kSuffix && isName(file.stem())) names.push_back(file.stem());
    }
    if (error && error.value() != ENOENT) throw fileFailure(folder, error.value());
    std::sort(names.begin(), names.end());
    return names;
}

void makeProfileFolder() {
    fs::path made;
    for (const fs::path &part : fs::path(profileFolder())) {
        made /= part;
        // Configuration is the user's alone, unless somebody made the folder otherwise.
        if (mkdir(made.c_str(), 0700) == 0) continue;
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
