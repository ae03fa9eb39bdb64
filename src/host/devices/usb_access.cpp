#include "host/devices/usb_access.h"

#include "host/terminal/failure.h"
#include "host/terminal/text.h"

#include <fmt/format.h>

namespace host {

namespace {

constexpr char kPrinterDriver[] = "usblp"; // the plug-in puts it aside for a job
constexpr char kProgram[] = "usbfs";       // what the kernel calls a program that has claimed an interface

template <class... Values>
Failure failure(ExitCode code, const UsbDevice &device, fmt::format_string<Values...> format, Values &&...values) {
    return {code, fmt::format("{}: {}", device.id(), fmt::format(format, std::forward<Values>(values)...))};
}

} // namespace

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
    if (device.driver == kProgram) {
        if (holders.empty()) text = "a program";
    } else if (!device.driver.empty()) {
        text = "driver " + shown(device.driver);
    }
    for (const Holder &holder : holders)
        text += (text.empty() ? "" : ", ") + holderText(holder);
    return text;
}

std::string permissionRemedy(const UsbDevice &device) {
    struct stat node;
    std::string group = stat(device.node.c_str(), &node) == 0 ? groupWithAccess(node) : "";
    if (!group.empty()) {
        return fmt::format("add yourself to the group {0}: sudo usermod -aG {0} $USER (then log in again)", group);
    }
    std::string line = isPlotterVendor(device.vendor) ? "" : fmt::format(" with its vendor {:04x} added", device.vendor);
    return fmt::format("copy packaging/udev/70-orb-vectorix.rules{} into /etc/udev/rules.d/, run 'sudo udevadm control "
                       "--reload && sudo udevadm trigger', and plug the plotter in again",
                       line);
}

void requireFree(const UsbDevice &device) {
    switch (accessTo(device.node)) {
    case NodeAccess::Ok: break;
    case NodeAccess::NoNode:
        throw failure(ExitCode::Missing, device,
                      "there is no {}; plug the plotter in again (a container must be given /dev/bus/usb)", device.node);
    case NodeAccess::NoPermission:
        throw failure(ExitCode::Permission, device, "{}: permission denied; {}", device.node, permissionRemedy(device));
    }
    bool isClaimed = device.driver == kProgram;
    std::vector<Holder> holders = isClaimed ? holdersOf(device) : holdersOfPrinterNode(device);
    if (!holders.empty()) {
        throw failure(ExitCode::Busy, device, "busy: held by {}; wait until it is done, or end it",
                      holderText(holders.front()));
    }
    if (isClaimed) {
        throw failure(ExitCode::Busy, device, "busy: held by another program; 'sudo fuser -v {}' names it", device.node);
    }
    if (!device.driver.empty() && device.driver != kPrinterDriver) {
        throw failure(ExitCode::Busy, device,
                      "busy: the system's driver {} has it; if that made a serial port of it, print with --port",
                      shown(device.driver));
    }
}

std::string notesOf(const UsbDevice &device) {
    std::string text;
    if (device.driver == kPrinterDriver) {
        text += fmt::format("vectorix: note: the system's printer driver {} is put aside for this job\n", kPrinterDriver);
    }
    for (const Holder &holder : holdersOf(device))
        text += fmt::format("vectorix: note: {} has the plotter open as well\n", holderText(holder));
    return text;
}

} // namespace host
