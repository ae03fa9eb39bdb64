#include "host/obstacles/usb_obstacles.h"

#include <algorithm>
#include <fmt/format.h>

namespace host {

namespace {

/// Why no group gives access: rules that are not there, do not name the maker, or came too late.
Obstacle ruleObstacle(const System &system, const UsbDevice &device) {
    if (!rulesGiving(*system.rules, ruleDevice(device)).empty()) return Obstacle::RulesNotApplied;
    return isPlotterVendor(device.vendor) && !hasPlotterRules(*system.rules) ? Obstacle::NoUsbRules
                                                                             : Obstacle::NoRuleForVendor;
}

void addRefusal(const System &system, const UsbDevice &device, NodeAccess access, const struct stat &node,
                const std::string &where, LinkReport &report) {
    const Refusal refusal = refusalOf(access, node, *system.user);
    if (refusal == Refusal::None) return;
    report.add(refusal == Refusal::NotInGroup     ? Obstacle::NotInGroup
               : refusal == Refusal::NotInSession ? Obstacle::NotInSession
                                                  : ruleObstacle(system, device),
               {{"node", device.node},
                {"where", where},
                {"rights", rightsOf(node)},
                {"user", system.user->name},
                {"group", groupWithAccess(node)},
                {"vendor", ruleDevice(device).vendor},
                {"file", rulesGiving(*system.rules, ruleDevice(device)).string()}});
}

void addRight(const System &system, const UsbDevice &device, LinkReport &report) {
    struct stat node;
    if (stat(device.node.c_str(), &node) != 0) {
        // A container is given all of the USB nodes: their names change with each plugging in.
        if (*system.isContainer)
            report.add(Obstacle::NoNodeInContainer, {{"node", "/dev/bus/usb"}});
        else
            report.add(Obstacle::NoNode, {{"node", device.node}});
        return;
    }
    const NodeAccess access = accessTo(device.node);
    if (access != NodeAccess::Ok) addRefusal(system, device, access, node, device.node + ": ", report);
}

/// Nobody has the printer, though its driver is there: unloading that would have been somebody's wish.
bool hasLostDriver(const System &system, const UsbDevice &device) {
    std::error_code ignored;
    return device.isPrinter && device.driver.empty() &&
           std::filesystem::exists(system.below("sys/bus/usb/drivers") / kPrinterDriver, ignored);
}

void addDriver(const System &system, const UsbDevice &device, LinkReport &report) {
    if (device.driver == kPrinterDriver)
        report.add(Obstacle::PrinterDriver);
    else if (hasLostDriver(system, device))
        report.add(Obstacle::PrinterDriverLost, {{"interface", device.interface}});
    else if (!device.driver.empty() && !device.isClaimed())
        report.add(Obstacle::ForeignDriver, {{"driver", device.driver}});
}

} // namespace

RuleDevice ruleDevice(const UsbDevice &device) {
    return {fmt::format("{:04x}", device.vendor), fmt::format("{:04x}", device.product), device.manufacturer, device.name};
}

void addClaims(const UsbDevice &device, const std::vector<Holder> &holders, LinkReport &report) {
    if (!device.isClaimed()) return;
    if (holders.empty()) report.add(Obstacle::ClaimedByHidden, {{"node", device.node}});
    for (const Holder &holder : holders)
        report.addHolder(Obstacle::Claimed, holder, {});
}

void addUsbObstacles(const System &system, const UsbDevice &device, LinkReport &report) {
    addRight(system, device, report);
    for (const Holder &holder : holdersOfPrinterNode(device))
        report.addHolder(Obstacle::Held, holder, {});
    const std::vector<Holder> holders = holdersOf(device);
    addClaims(device, holders, report);
    for (const Holder &holder : holders)
        report.addHolder(Obstacle::OpenAsWell, holder, {});
    addDriver(system, device, report);
}

std::string permissionRefusal(const UsbDevice &device) {
    struct stat node = {};
    stat(device.node.c_str(), &node);
    LinkReport report{"usb", device.id()};
    addRefusal(System(), device, NodeAccess::NoPermission, node, "", report);
    return report.findings.front().line;
}

void requireFree(const UsbDevice &device) {
    LinkReport report{"usb", device.id()};
    addUsbObstacles(System(), device, report);
    requireFree(report);
}

std::string notesOf(const UsbDevice &device) {
    LinkReport report{"usb", device.id()};
    addUsbObstacles(System(), device, report);
    std::string text;
    for (const Found &found : report.findings) {
        if (found.severity == Severity::Note && !found.line.empty()) text += fmt::format("vectorix: note: {}\n", found.line);
    }
    return text;
}

} // namespace host
