#include "host/obstacles/system_files.h"

#include "host/devices/small_file.h"

#include <cstdio>
#include <fmt/format.h>
#include <sstream>
#include <sys/sysmacros.h>

namespace host {

namespace fs = std::filesystem;

bool isConsole(const fs::path &proc, dev_t terminal) {
    const std::string number = fmt::format("{}:{}", major(terminal), minor(terminal));
    std::istringstream consoles(smallFile(proc / "consoles").value_or(""));
    for (std::string line; std::getline(consoles, line);) {
        if (line.substr(line.find_last_of(" \t") + 1) == number) return true;
    }
    return false;
}

std::optional<pid_t> lockOwner(const fs::path &proc, const struct stat &file) {
    // "1: FLOCK  ADVISORY  WRITE 1234 00:05:13 0 EOF"; one that waits for the lock has an arrow behind its number.
    const std::string id = fmt::format("{:02x}:{:02x}:{}", major(file.st_dev), minor(file.st_dev), file.st_ino);
    std::istringstream locks(smallFile(proc / "locks").value_or(""));
    for (std::string line; std::getline(locks, line);) {
        std::istringstream words(line);
        std::string number, kind, manner, access, inode;
        pid_t owner = 0;
        if (words >> number >> kind >> manner >> access >> owner >> inode && kind == "FLOCK" && inode == id) return owner;
    }
    return {};
}

std::optional<std::string> modemLines(const fs::path &proc, const std::string &name) {
    constexpr std::string_view kPrefix = "ttyS";
    if (name.rfind(kPrefix, 0) != 0) return {};
    const std::string label = name.substr(kPrefix.size()) + ":";
    std::istringstream ports(smallFile(proc / "tty/driver/serial").value_or(""));
    for (std::string line; std::getline(ports, line);) {
        if (line.rfind(label, 0) != 0 || line.find("tx:") == std::string::npos)
            continue; // without counts we are not root, and the lines are hidden as well
        size_t last = line.find_last_of(' ') + 1;
        bool isLines = line.find(':', last) == std::string::npos; // with no line up, the last word is another field
        return isLines ? line.substr(last) : "";
    }
    return {};
}

} // namespace host
