// A serial port: what stands in the way to it, programs that may come to it, print queues and modem lines.
#include "host/devices/pseudo_terminal.h"
#include "host/doctor/checks.h"
#include "host/obstacles/port_obstacles.h"
#include "host/obstacles/system_files.h"
#include "host/terminal/text.h"

#include <fmt/format.h>

namespace host {

namespace fs = std::filesystem;

namespace {

void sawRight(const Computer &computer, const SerialPort &port, const struct stat &node, LinkReport &report) {
    report.saw(fmt::format("{}: {}; {} for {}", shown(port.path), rightsOf(node), accessText(accessTo(port.path)),
                           computer.user->name));
}

void sawHolders(const Computer &computer, const struct stat &node, LinkReport &report) {
    const bool isOnConsole = isConsole(computer.below("proc"), node.st_rdev);
    report.saw(fmt::format("/proc/consoles: {}", isOnConsole ? "the kernel's console" : "no console on it"));
    report.saw(fmt::format("controlled processes, /var/lock, /proc/locks, open files of {} processes: {}",
                           computer.processes->size(),
                           report.holders.empty() ? "nobody" : fmt::format("held by {}", report.holders.size())));
}

void checkQueues(const Computer &computer, const SerialPort &port, LinkReport &report) {
    std::error_code ignored;
    const std::vector<std::string> names = {port.path, "/dev/" + port.name, port.stableName,
                                            fs::canonical(port.path, ignored).string()};
    for (const PrintQueue &queue : computer.queues->queues) {
        if (sendsTo(queue, names)) report.add(Obstacle::PrintQueue, {{"queue", queue.name}, {"uri", queue.uri}});
    }
    report.saw(fmt::format("print queues: {}",
                           computer.queues->unseen.empty() ? computer.queues->source : computer.queues->unseen));
}

void checkLines(const Computer &computer, const SerialPort &port, const struct stat &node, LinkReport &report) {
    if (isPseudoTerminal(node.st_rdev)) report.add(Obstacle::NoWires);
    auto lines = modemLines(computer.below("proc"), port.name);
    report.saw(lines ? fmt::format("/proc/tty/driver/serial: up are {}", lines->empty() ? "no lines" : shown(*lines))
                     : "modem lines: not to be seen without opening the port");
    if (lines && lines->find("CTS") == std::string::npos) {
        report.add(Obstacle::LinesDown, {{"lines", lines->empty() ? "none" : *lines}});
    }
}

} // namespace

LinkReport checkPort(const Computer &computer, const SerialPort &port) {
    LinkReport report{"serial", port.path, port.hardware()};
    if (!port.driver.empty()) report.hardware += ", driver " + shown(port.driver);
    const auto node = findPort(computer, port, report);
    if (!node) return report;
    sawRight(computer, port, *node, report);
    addPortSigns(computer, port, *node, report);
    addOpenHolders(port, *node, report);
    sawHolders(computer, *node, report);
    if (!port.vendor.empty()) checkAdapterPrograms(computer, port, report);
    checkQueues(computer, port, report);
    checkLines(computer, port, *node, report);
    return report;
}

} // namespace host
