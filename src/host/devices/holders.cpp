#include "host/devices/holders.h"

#include "host/devices/pseudo_terminal.h"
#include "host/devices/small_file.h"
#include "host/terminal/text.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <csignal>
#include <cstring>
#include <filesystem>
#include <fmt/format.h>
#include <optional>
#include <set>
#include <sys/sysmacros.h>
#include <unistd.h>

namespace host {

namespace fs = std::filesystem;

namespace {

const dev_t kPtyMultiplexer = makedev(5, 2); // fixed in Linux's device list

template <class Number> Number numberAt(std::string_view text) {
    Number number = 0;
    text.remove_prefix(std::min(text.find_first_not_of(" \t"), text.size()));
    std::from_chars(text.data(), text.data() + text.size(), number);
    return number;
}

Holder processNamed(pid_t pid) {
    std::string name = smallFile(fmt::format("/proc/{}/comm", pid)).value_or("");
    while (!name.empty() && name.back() == '\n')
        name.pop_back();
    return {pid, name, false};
}

/// Equal device numbers are one device; but each mount of devpts counts its pseudo-terminals from 0.
bool sameDevice(const struct stat &a, const struct stat &b) {
    return S_ISCHR(a.st_mode) && a.st_rdev == b.st_rdev && (!isPseudoTerminal(a.st_rdev) || a.st_dev == b.st_dev);
}

/// For a descriptor of /dev/ptmx, a far end: the N of the near end /dev/pts/N; none when the system does not tell.
std::optional<int> terminalIndex(const fs::path &process, const std::string &descriptor) {
    std::string info = smallFile(process / "fdinfo" / descriptor).value_or("");
    constexpr std::string_view kLabel = "tty-index:";
    size_t at = info.find(kLabel);
    if (at == std::string::npos) return {};
    return numberAt<int>(std::string_view(info).substr(at + kLabel.size()));
}

/// Looks through one process's descriptors; true when one is the device. isFarEnd becomes true when one is its far end.
bool holds(const fs::path &process, const struct stat &device, bool &isFarEnd) {
    bool found = false;
    const std::optional<int> index = pseudoTerminalIndex(device.st_rdev);
    std::error_code ignored;
    for (fs::directory_iterator entry(process / "fd", ignored), end; entry != end; entry.increment(ignored)) {
        struct stat status;
        if (stat(entry->path().c_str(), &status) != 0 || !S_ISCHR(status.st_mode)) continue;
        if (sameDevice(status, device)) found = true;
        if (index && status.st_rdev == kPtyMultiplexer && terminalIndex(process, entry->path().filename()) == index) {
            isFarEnd = true;
        }
    }
    return found;
}

/// A lock file holds the process number as text, or as the four bytes of an int; 0 for what is neither.
pid_t lockOwner(const std::string &file) {
    constexpr size_t kMost = 512; // number, line end, and the names of program and user that some add
    std::string text = smallFile(file, kMost).value_or("");
    // Four bytes that are all digits or blanks are text: as an int they would be more than any process number.
    bool isText = text.find_first_not_of("0123456789 \t\r\n") == std::string::npos;
    if (text.size() == sizeof(int32_t) && !isText) {
        int32_t binary;
        memcpy(&binary, text.data(), sizeof binary);
        return binary;
    }
    return numberAt<pid_t>(text);
}

/// The names under which programs lock a port: the device's name alone, or its path below /dev with underscores.
std::set<std::string> lockNames(const std::string &port) {
    std::set<std::string> names;
    std::error_code ignored;
    for (const fs::path &path : {fs::path(port), fs::canonical(port, ignored)}) {
        if (path.empty()) continue;
        names.insert(path.filename());
        std::string below = path.string();
        if (below.rfind("/dev/", 0) != 0) continue;
        below.erase(0, strlen("/dev/"));
        std::replace(below.begin(), below.end(), '/', '_');
        names.insert(below);
    }
    return names;
}

} // namespace

std::vector<Holder> holdersOf(const struct stat &device) {
    std::vector<Holder> holders;
    std::error_code ignored;
    for (fs::directory_iterator entry("/proc", ignored), end; entry != end; entry.increment(ignored)) {
        auto pid = numberAt<pid_t>(entry->path().filename().string());
        if (pid <= 0 || pid == getpid()) continue;
        bool isFarEnd = false;
        if (!holds(entry->path(), device, isFarEnd)) continue;
        Holder holder = processNamed(pid);
        holder.isFarEnd = isFarEnd;
        holders.push_back(holder);
    }
    return holders;
}

std::vector<Holder> holdersOfPrinterNode(const UsbDevice &device) {
    if (!device.printerNode) return {};
    struct stat node = {};
    node.st_mode = S_IFCHR;
    node.st_rdev = *device.printerNode;
    return holdersOf(node);
}

std::vector<Holder> holdersOf(const UsbDevice &device) {
    std::vector<Holder> holders = holdersOfPrinterNode(device);
    struct stat node;
    if (stat(device.node.c_str(), &node) != 0) return holders;
    for (Holder &holder : holdersOf(node))
        holders.push_back(std::move(holder));
    return holders;
}

std::string usersText(const UsbDevice &device) {
    std::vector<Holder> holders = holdersOf(device);
    std::string text;
    if (device.isClaimed()) {
        if (holders.empty()) text = "a program";
    } else if (!device.driver.empty()) {
        text = "driver " + shown(device.driver);
    }
    for (const Holder &holder : holders)
        text += (text.empty() ? "" : ", ") + holderText(holder);
    return text;
}

Holder uucpHolder(const std::string &port) {
    for (const std::string &name : lockNames(port)) {
        pid_t pid = lockOwner("/var/lock/LCK.." + name);
        if (pid <= 0 || pid == getpid()) continue;
        if (kill(pid, 0) == 0 || errno == EPERM) return processNamed(pid);
    }
    return {};
}

std::string holderText(const Holder &holder) {
    return fmt::format("{} (process {})", holder.name.empty() ? "a program" : shown(holder.name), holder.pid);
}

} // namespace host
