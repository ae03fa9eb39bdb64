// A USB plotter: its node, the right to it, who has it, print queues. And what concerns all links.
#include "host/devices/usb_access.h"
#include "host/doctor/checks.h"
#include "host/terminal/text.h"

#include <algorithm>
#include <fmt/format.h>

namespace host {

namespace {

constexpr char kPrinterDriver[] = "usblp"; // the plug-in puts it aside for a job
constexpr char kProgram[] = "usbfs";       // what the kernel calls a program that has claimed an interface

RuleDevice ruleDevice(const UsbDevice &device) {
    return {fmt::format("{:04x}", device.vendor), fmt::format("{:04x}", device.product), device.manufacturer, device.name};
}

/// Why no group gives access: rules that are not there, do not name the maker, or came too late.
Finding ruleFinding(const System &system, const UsbDevice &device) {
    if (!rulesGiving(system.rules, ruleDevice(device)).empty()) return Finding::RulesNotApplied;
    return isPlotterVendor(device.vendor) && !hasPlotterRules(system.rules) ? Finding::NoUsbRules : Finding::NoRuleForVendor;
}

void checkRight(const System &system, const UsbDevice &device, LinkReport &report) {
    struct stat node;
    if (stat(device.node.c_str(), &node) != 0) {
        // A container is given all of the USB nodes: their names change with each plugging in.
        if (system.isContainer)
            report.add(Finding::NoNodeInContainer, {{"node", "/dev/bus/usb"}});
        else
            report.add(Finding::NoNode, {{"node", device.node}});
        return;
    }
    const NodeAccess access = accessTo(device.node);
    const RuleDevice facts = ruleDevice(device);
    const std::string rights = rightsOf(node), file = rulesGiving(system.rules, facts).string();
    report.saw(fmt::format("{}: {}; {} for {}", device.node, rights, accessText(access), system.user.name));
    report.saw(fmt::format("{} of udev rules: {}", counted(static_cast<int64_t>(system.rules.size()), "file"),
                           file.empty() ? "none gives it to people" : shown(file) + " gives it to people"));
    const Words words = {{"node", device.node},      {"rights", rights},
                         {"user", system.user.name}, {"group", groupWithAccess(node)},
                         {"vendor", facts.vendor},   {"file", file}};
    switch (refusalOf(access, node, system.user)) {
    case Refusal::None: break;
    case Refusal::NotInGroup: report.add(Finding::NotInGroup, words); break;
    case Refusal::NotInSession: report.add(Finding::NotInSession, words); break;
    case Refusal::NoGroup: report.add(ruleFinding(system, device), words); break;
    }
}

/// Nobody has the printer, though its driver is there: unloading that would have been somebody's wish.
bool hasLostDriver(const System &system, const UsbDevice &device) {
    std::error_code ignored;
    return device.isPrinter && device.driver.empty() &&
           std::filesystem::exists(system.below("sys/bus/usb/drivers") / kPrinterDriver, ignored);
}

void checkOwners(const System &system, const UsbDevice &device, LinkReport &report) {
    const bool isClaimed = device.driver == kProgram;
    const std::vector<Holder> holders = holdersOf(device), printing = holdersOfPrinterNode(device);
    auto isPrinting = [&](const Holder &holder) {
        return std::any_of(printing.begin(), printing.end(), [&](const Holder &p) { return p.pid == holder.pid; });
    };
    if (isClaimed && holders.empty()) report.add(Finding::ClaimedByHidden, {{"node", device.node}});
    for (const Holder &holder : holders) {
        Finding finding = isPrinting(holder) ? Finding::Held : isClaimed ? Finding::Claimed : Finding::OpenAsWell;
        report.add(finding, {{"who", holderText(holder)}, {"pid", fmt::format("{}", holder.pid)}});
    }
    if (device.driver == kPrinterDriver)
        report.add(Finding::PrinterDriver);
    else if (hasLostDriver(system, device))
        report.add(Finding::PrinterDriverLost, {{"interface", device.interface}});
    else if (!device.driver.empty() && !isClaimed)
        report.add(Finding::ForeignDriver, {{"driver", device.driver}});
    report.saw(fmt::format("driver {}; open in {}", device.driver.empty() ? "none" : shown(device.driver),
                           holders.empty() ? "no process that can be seen" : usersText(device)));
}

void checkQueues(const System &system, const UsbDevice &device, LinkReport &report) {
    for (const PrintQueue &queue : system.queues.queues) {
        if (sendsTo(queue, device)) report.add(Finding::PrintQueue, {{"queue", queue.name}, {"uri", queue.uri}});
    }
    report.saw(fmt::format("print queues: {}", system.queues.unseen.empty() ? system.queues.source : system.queues.unseen));
}

} // namespace

LinkReport checkPlotter(const System &system, const UsbDevice &device) {
    LinkReport report{"usb", device.id(), device.title(), {}, {}};
    checkRight(system, device, report);
    checkOwners(system, device, report);
    checkQueues(system, device, report);
    if (!device.isPlotter) report.add(Finding::NotLikeAPlotter);
    return report;
}

LinkReport checkComputer(const System &system) {
    LinkReport report{"computer", "this computer", "", {}, {}};
    auto hidden =
        std::count_if(system.processes.begin(), system.processes.end(), [](const Process &p) { return p.isHidden; });
    if (hidden > 0) report.add(Finding::HiddenProcesses, {{"count", fmt::format("{}", hidden)}});
    if (!system.queues.unseen.empty()) report.add(Finding::HiddenQueues, {{"reason", system.queues.unseen}});
    if (system.isContainer) report.add(Finding::Container);
    return report;
}

} // namespace host
