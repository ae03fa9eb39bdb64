// A USB plotter: what stands in the way to it, and print queues. And what concerns all links.
#include "host/doctor/checks.h"
#include "host/obstacles/usb_obstacles.h"
#include "host/terminal/text.h"

#include <algorithm>
#include <fmt/format.h>
#include <sys/stat.h>

namespace host {

namespace {

void sawRight(const Computer &computer, const UsbDevice &device, LinkReport &report) {
    struct stat node;
    if (stat(device.node.c_str(), &node) != 0) return;
    const std::string file = rulesGiving(*computer.rules, ruleDevice(device)).string();
    report.saw(fmt::format("{}: {}; {} for {}", device.node, rightsOf(node), accessText(accessTo(device.node)),
                           computer.user->name));
    report.saw(fmt::format("{} of udev rules: {}", counted(static_cast<int64_t>(computer.rules->size()), "file"),
                           file.empty() ? "none gives it to people" : shown(file) + " gives it to people"));
}

void sawUsers(const UsbDevice &device, LinkReport &report) {
    report.saw(fmt::format("driver {}; open in {}", device.driver.empty() ? "none" : shown(device.driver),
                           report.holders.empty() ? "no process that can be seen" : usersText(device)));
}

void checkQueues(const Computer &computer, const UsbDevice &device, LinkReport &report) {
    for (const PrintQueue &queue : computer.queues->queues) {
        if (sendsTo(queue, device)) report.add(Obstacle::PrintQueue, {{"queue", queue.name}, {"uri", queue.uri}});
    }
    report.saw(fmt::format("print queues: {}",
                           computer.queues->unseen.empty() ? computer.queues->source : computer.queues->unseen));
}

} // namespace

LinkReport checkPlotter(const Computer &computer, const UsbDevice &device) {
    LinkReport report{"usb", device.id(), device.title()};
    sawRight(computer, device, report);
    addUsbObstacles(computer, device, report);
    sawUsers(device, report);
    checkQueues(computer, device, report);
    if (!device.isPlotter) report.add(Obstacle::NotLikeAPlotter);
    return report;
}

LinkReport checkComputer(const Computer &computer) {
    LinkReport report{"computer", "this computer"};
    auto hidden =
        std::count_if(computer.processes->begin(), computer.processes->end(), [](const Process &p) { return p.isHidden; });
    if (hidden > 0) report.add(Obstacle::HiddenProcesses, {{"count", fmt::format("{}", hidden)}});
    if (!computer.queues->unseen.empty()) report.add(Obstacle::HiddenQueues, {{"reason", computer.queues->unseen}});
    if (*computer.isContainer) report.add(Obstacle::Container);
    return report;
}

} // namespace host
