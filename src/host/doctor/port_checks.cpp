// A serial port: its node, the right to it, print queues and modem lines.
#include "host/devices/pseudo_terminal.h"
#include "host/doctor/checks.h"
#include "host/doctor/system_files.h"
#include "host/terminal/text.h"

#include <algorithm>
#include <fmt/format.h>
#include <sys/sysmacros.h>

namespace host {

namespace fs = std::filesystem;

namespace {

using PortCheck = void (*)(const System &, const SerialPort &, const struct stat &, LinkReport &);

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
    if (!port.bus.empty()) {
        report.add(system.isContainer ? Finding::NoNodeInContainer : Finding::NoNode, {{"node", port.path}});
    } else {
        report.add(Finding::NoSuchPort, {{"port", port.path}});
    }
}

void checkRight(const System &system, const SerialPort &port, const struct stat &node, LinkReport &report) {
    const std::string rights = rightsOf(node);
    report.saw(
        fmt::format("{}: {}; {} for {}", shown(port.path), rights, accessText(accessTo(port.path)), system.user.name));
    const Words words = {
        {"node", port.path}, {"rights", rights}, {"user", system.user.name}, {"group", groupWithAccess(node)}};
    switch (refusalOf(accessTo(port.path), node, system.user)) {
    case Refusal::None: break;
    case Refusal::NotInGroup: report.add(Finding::NotInGroup, words); break;
    case Refusal::NotInSession: report.add(Finding::NotInSession, words); break;
    case Refusal::NoGroup: report.add(Finding::RootOnlyPort, words); break;
    }
}

void checkPrograms(const System &system, const SerialPort &port, const struct stat & /*node*/, LinkReport &report) {
    if (!port.vendor.empty()) checkAdapterPrograms(system, port, report);
}

void checkQueues(const System &system, const SerialPort &port, const struct stat & /*node*/, LinkReport &report) {
    std::error_code ignored;
    const std::vector<std::string> names = {port.path, "/dev/" + port.name, port.stableName,
                                            fs::canonical(port.path, ignored).string()};
    for (const PrintQueue &queue : system.queues.queues) {
        if (sendsTo(queue, names)) report.add(Finding::PrintQueue, {{"queue", queue.name}, {"uri", queue.uri}});
    }
    report.saw(fmt::format("print queues: {}", system.queues.unseen.empty() ? system.queues.source : system.queues.unseen));
}

void checkLines(const System &system, const SerialPort &port, const struct stat &node, LinkReport &report) {
    if (isPseudoTerminal(node.st_rdev)) report.add(Finding::NoWires);
    auto lines = modemLines(system.below("proc"), port.name);
    report.saw(lines ? fmt::format("/proc/tty/driver/serial: up are {}", lines->empty() ? "no lines" : shown(*lines))
                     : "modem lines: not to be seen without opening the port");
    if (lines && lines->find("CTS") == std::string::npos) {
        report.add(Finding::LinesDown, {{"lines", lines->empty() ? "none" : *lines}});
    }
}

constexpr PortCheck kChecks[] = {checkRight, checkHolders, checkPrograms, checkQueues, checkLines};

} // namespace

LinkReport checkPort(const System &system, const SerialPort &port) {
    LinkReport report{"serial", port.path, port.hardware(), {}, {}};
    if (!port.driver.empty()) report.hardware += ", driver " + shown(port.driver);
    struct stat node;
    if (stat(port.path.c_str(), &node) != 0) {
        addMissing(system, port, report);
        return report;
    }
    if (std::string kind = otherKind(system, node); !kind.empty()) {
        report.add(Finding::NotSerial, {{"port", port.path}, {"what", kind}});
        return report;
    }
    if (isEmptySlot(node.st_rdev, system.below("sys"))) {
        report.add(Finding::NoHardware, {{"port", port.path}});
        return report;
    }
    for (PortCheck check : kChecks)
        check(system, port, node, report);
    return report;
}

} // namespace host
