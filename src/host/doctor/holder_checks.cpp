// Who holds a serial port. Several signs are read, for a user who is not root does not see them all.
#include "host/devices/holders.h"
#include "host/doctor/checks.h"
#include "host/doctor/system_files.h"
#include "host/terminal/text.h"

#include <algorithm>
#include <fmt/format.h>
#include <set>
#include <sys/sysmacros.h>
#include <unistd.h>

namespace host {

namespace {

bool isLogin(const Process &process) {
    constexpr const char *kNames[] = {"agetty", "getty", "mgetty", "login", "sulogin"};
    return std::find(std::begin(kNames), std::end(kNames), process.name) != std::end(kNames);
}

Holder holderOf(const Process &process) { return {process.pid, process.name, false}; }

/// One finding for each process, whatever signs there are of it.
class Names {
public:
    Names(const SerialPort &port, LinkReport &report) : port_(port), report_(report) {}

    void add(Finding finding, const Holder &holder) {
        if (!told_.insert(holder.pid).second) return;
        report_.add(finding, {{"who", holderText(holder)},
                              {"pid", fmt::format("{}", holder.pid)},
                              {"node", port_.path},
                              {"name", port_.name}});
    }
    size_t count() const { return told_.size(); }

private:
    const SerialPort &port_;
    LinkReport &report_;
    std::set<pid_t> told_;
};

/// Processes that the port controls: everybody may see that of every process.
void addControlled(const System &system, dev_t terminal, Names &names) {
    std::vector<const Process *> controlled;
    for (const Process &process : system.processes) {
        if (process.terminal == terminal) controlled.push_back(&process);
    }
    // What was started from a login goes with it.
    auto login = std::find_if(controlled.begin(), controlled.end(), [](const Process *p) { return isLogin(*p); });
    if (login != controlled.end()) {
        names.add(Finding::Login, holderOf(**login));
        return;
    }
    for (const Process *process : controlled)
        names.add(Finding::Held, holderOf(*process));
}

void addLocker(const System &system, const struct stat &node, Names &names) {
    auto owner = lockOwner(system.below("proc"), node);
    if (!owner || *owner == getpid()) return;
    auto at =
        std::find_if(system.processes.begin(), system.processes.end(), [&](const Process &p) { return p.pid == *owner; });
    if (at == system.processes.end())
        names.add(Finding::LockedByHidden, {*owner, "", false});
    else
        names.add(Finding::Locked, holderOf(*at));
}

} // namespace

void checkHolders(const System &system, const SerialPort &port, const struct stat &node, LinkReport &report) {
    // Pseudo-terminals of several file systems share numbers: which of them controls a process is not known.
    const bool isPty = port.bus.empty();
    Names names(port, report);
    const bool isOnConsole = isConsole(system.below("proc"), node.st_rdev);
    if (isOnConsole) report.add(Finding::Console, {{"name", port.name}});
    if (!isPty) addControlled(system, node.st_rdev, names);
    if (Holder locker = uucpHolder(port.path); locker.pid != 0) names.add(Finding::LockFile, locker);
    addLocker(system, node, names);
    for (const Holder &holder : holdersOf(node)) {
        if (!holder.isFarEnd) names.add(Finding::Held, holder);
    }
    report.saw(fmt::format("/proc/consoles: {}", isOnConsole ? "the kernel's console" : "no console on it"));
    report.saw(fmt::format("controlled processes, /var/lock, /proc/locks, open files of {} processes: {}",
                           system.processes.size(),
                           names.count() == 0 ? "nobody" : fmt::format("held by {}", names.count())));
}

} // namespace host
