#include "host/obstacles/port_obstacles.h"

#include "host/obstacles/system_files.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <fmt/format.h>
#include <sys/sysmacros.h>
#include <thread>
#include <unistd.h>

namespace host {

namespace fs = std::filesystem;

namespace {

/// "a file", "a directory", …; empty for what may be a serial port. A device's kind is asked of sysfs, for asking the
/// device itself would open it.
std::string otherKind(const System &system, const struct stat &node) {
    if (S_ISDIR(node.st_mode)) return "a directory";
    if (S_ISREG(node.st_mode)) return "a file";
    if (!S_ISCHR(node.st_mode)) return "something else";
    std::error_code ignored;
    const fs::path device = system.below("sys/dev/char") / fmt::format("{}:{}", major(node.st_rdev), minor(node.st_rdev));
    const std::string subsystem = fs::read_symlink(device / "subsystem", ignored).filename();
    return subsystem.empty() || subsystem == "tty" ? "" : fmt::format("another kind of device ({})", subsystem);
}

void addMissing(const System &system, const SerialPort &port, LinkReport &report) {
    if (port.bus.empty())
        report.add(Obstacle::NoSuchPort, {{"port", port.path}});
    else
        report.add(*system.isContainer ? Obstacle::NoNodeInContainer : Obstacle::NoNode, {{"node", port.path}});
}

void addRight(const System &system, const SerialPort &port, const struct stat &node, LinkReport &report) {
    const NodeAccess access = accessTo(port.path);
    if (access == NodeAccess::Ok) return;
    constexpr Obstacle kOfGroups[] = {Obstacle::NotInGroup, Obstacle::NotInSession, Obstacle::RootOnlyPort};
    if (auto refusal = refusalOf(access, node, *system.user); refusal != Refusal::None) {
        report.add(kOfGroups[static_cast<size_t>(refusal) - 1], {{"node", port.path},
                                                                 {"where", ""},
                                                                 {"rights", rightsOf(node)},
                                                                 {"user", system.user->name},
                                                                 {"group", groupWithAccess(node)}});
    }
}

bool isLogin(const Process &process) {
    constexpr const char *kNames[] = {"agetty", "getty", "mgetty", "login", "sulogin"};
    return std::find(std::begin(kNames), std::end(kNames), process.name) != std::end(kNames);
}

Holder holderOf(const Process &process) { return {process.pid, process.name, false}; }

Words wordsOf(const SerialPort &port) { return {{"node", port.path}, {"name", port.name}}; }

/// Processes that the port controls: everybody may see that of every process.
void addControlled(const System &system, const SerialPort &port, dev_t terminal, LinkReport &report) {
    std::vector<const Process *> controlled;
    for (const Process &process : *system.processes) {
        if (process.terminal == terminal) controlled.push_back(&process);
    }
    // What was started from a login goes with it.
    auto login = std::find_if(controlled.begin(), controlled.end(), [](const Process *p) { return isLogin(*p); });
    if (login != controlled.end()) {
        report.addHolder(Obstacle::Login, holderOf(**login), wordsOf(port));
        return;
    }
    for (const Process *process : controlled)
        report.addHolder(Obstacle::Held, holderOf(*process), wordsOf(port));
}

void addLocker(const System &system, const SerialPort &port, const struct stat &node, LinkReport &report) {
    auto owner = lockOwner(system.below("proc"), node);
    if (!owner || *owner == getpid()) return;
    auto at =
        std::find_if(system.processes->begin(), system.processes->end(), [&](const Process &p) { return p.pid == *owner; });
    if (at == system.processes->end())
        report.addHolder(Obstacle::LockedByHidden, {*owner, "", false}, wordsOf(port));
    else
        report.addHolder(Obstacle::Locked, holderOf(*at), wordsOf(port));
}

/// Who has the port open, but for those that are told already.
std::vector<Holder> rivalsOn(const struct stat &node, const LinkReport &report) {
    std::vector<Holder> holders = holdersOf(node);
    std::erase_if(holders, [&](const Holder &holder) { return holder.isFarEnd || report.holders.count(holder.pid) > 0; });
    return holders;
}

} // namespace

std::optional<struct stat> findPort(const System &system, const SerialPort &port, LinkReport &report) {
    struct stat node;
    if (stat(port.path.c_str(), &node) != 0) {
        if (errno != ENOENT && errno != ENOTDIR) throw fileFailure(port.path, errno);
        addMissing(system, port, report);
        return {};
    }
    if (std::string kind = otherKind(system, node); !kind.empty()) {
        report.add(Obstacle::NotSerial, {{"port", port.path}, {"what", kind}});
        return {};
    }
    if (isEmptySlot(node.st_rdev, system.below("sys"))) {
        report.add(Obstacle::NoHardware, {{"port", port.path}});
        return {};
    }
    return node;
}

void addPortSigns(const System &system, const SerialPort &port, const struct stat &node, LinkReport &report) {
    addRight(system, port, node, report);
    if (isConsole(system.below("proc"), node.st_rdev)) report.add(Obstacle::Console, wordsOf(port));
    // Pseudo-terminals of several file systems share numbers: which of them controls a process is not known.
    if (!port.bus.empty()) addControlled(system, port, node.st_rdev, report);
    if (Holder locker = uucpHolder(port.path); locker.pid != 0) report.addHolder(Obstacle::LockFile, locker, wordsOf(port));
    addLocker(system, port, node, report);
}

void addOpenHolders(const SerialPort &port, const struct stat &node, LinkReport &report) {
    std::vector<Holder> rivals = rivalsOn(node, report);
    if (rivals.empty()) return;
    // Looked for twice: another vectorix that has just been refused the lock still holds the port for a moment.
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
    for (const Holder &rival : rivalsOn(node, report))
        report.addHolder(Obstacle::Held, rival, wordsOf(port));
}

LinkReport obstaclesOf(const System &system, const SerialPort &port) {
    LinkReport report{"serial", port.path};
    if (auto node = findPort(system, port, report)) {
        addPortSigns(system, port, *node, report);
        addOpenHolders(port, *node, report);
    }
    return report;
}

} // namespace host
