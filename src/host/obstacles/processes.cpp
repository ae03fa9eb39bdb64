#include "host/obstacles/processes.h"

#include "host/devices/small_file.h"

#include <optional>
#include <sstream>
#include <sys/sysmacros.h>
#include <unistd.h>

namespace host {

namespace fs = std::filesystem;

namespace {

constexpr pid_t kKernelThreads = 2; // the parent of all of them

/// Unpacks a device number as the kernel writes it, in 32 bits from the highest: the minor number's upper 12 bits, 12 of the
/// major number, the minor's lower 8.
dev_t unpacked(unsigned number) { return makedev((number >> 8) & 0xFFF, (number & 0xFF) | ((number >> 12) & 0xFFF00)); }

/// "1234 (name) S parent group session terminal …", in which the name may hold blanks and brackets.
std::optional<Process> processIn(const fs::path &folder) {
    std::string text = smallFile(folder / "stat").value_or("");
    size_t open = text.find('('), close = text.rfind(')');
    if (open == std::string::npos || close == std::string::npos || close < open) return {};
    std::istringstream rest(text.substr(close + 1));
    std::string state;
    pid_t parent = 0, group = 0, session = 0;
    int terminal = 0;
    Process process;
    process.pid = static_cast<pid_t>(std::strtol(text.c_str(), nullptr, 10));
    process.name = text.substr(open + 1, close - open - 1);
    if (!(rest >> state >> parent >> group >> session >> terminal)) return {};
    if (process.pid == getpid() || process.pid == kKernelThreads || parent == kKernelThreads) return {};
    process.terminal = terminal > 0 ? unpacked(static_cast<unsigned>(terminal)) : 0;
    process.isHidden = access((folder / "fd").c_str(), R_OK) != 0;
    return process;
}

} // namespace

std::vector<Process> runningProcesses(const fs::path &root) {
    std::vector<Process> all;
    std::error_code ignored;
    for (fs::directory_iterator entry(root / "proc", ignored), end; entry != end; entry.increment(ignored)) {
        const std::string name = entry->path().filename();
        if (name.find_first_not_of("0123456789") != std::string::npos) continue;
        if (auto process = processIn(entry->path())) all.push_back(std::move(*process)); // it may be gone by now
    }
    return all;
}

} // namespace host
