// vectorix plotters: the USB plotters there are, and whether they can be printed to.
#include "host/commands/commands.h"
#include "host/devices/holders.h"
#include "host/devices/node_access.h"
#include "host/plugin/usb_target.h"
#include "host/terminal/json.h"
#include "host/terminal/output.h"
#include "host/terminal/table.h"
#include "host/terminal/text.h"

#include <algorithm>
#include <fmt/format.h>
#include <memory>

namespace host {

namespace {

struct PlotterOptions {
    std::string vendor;
    std::string product;
    bool json = false;
};

uint16_t modelNumber(const std::string &option, const std::string &text) {
    auto number = parseHex(text, 4);
    if (number) return static_cast<uint16_t>(*number);
    throw Failure(ExitCode::Usage,
                  fmt::format("{}: {}: type up to four hexadecimal digits, as lsusb shows them", option, shown(text)));
}

/// The plotters that the plug-in finds of a model; what it does not tell of them is taken from the system.
std::vector<UsbDevice> plottersOf(uint16_t vendor, uint16_t product) {
    ORB_ServiceRecord record = listPlotters(vendor, product);
    std::vector<UsbDevice> all = usbDevices();
    std::vector<UsbDevice> found;
    for (int32_t i = 0; i < record.ORB_deviceCount; ++i) {
        const ORB_USBplotterEntry &entry = record.ORB_USBplotterTable[i];
        UsbDevice device;
        device.vendor = entry.idVendor;
        device.product = entry.idProduct;
        device.location = entry.locationID;
        auto known = std::find_if(all.begin(), all.end(), [&](const UsbDevice &d) { return d.location == device.location; });
        found.push_back(known == all.end() ? device : *known);
    }
    return found;
}

std::vector<UsbDevice> anyPlotters() {
    std::vector<UsbDevice> found = usbDevices();
    std::erase_if(found, [](const UsbDevice &device) { return !device.isPlotter; });
    if (!found.empty()) return found;
    throw Failure(ExitCode::Missing,
                  "no USB plotter found; check cable and power. One that 'lsusb' shows is found with --vendor and "
                  "--product; one with a serial cable or adapter is printed to with 'vectorix print --port'");
}

Json jsonOf(const UsbDevice &device) {
    Json holders = Json::array();
    for (const Holder &holder : holdersOf(device))
        holders.push_back({{"process", holder.pid}, {"name", holder.name}});
    return {{"vendor", fmt::format("{:04x}", device.vendor)},
            {"product", fmt::format("{:04x}", device.product)},
            {"manufacturer", device.manufacturer},
            {"name", device.name},
            {"serialNumber", device.serialNumber},
            {"location", fmt::format("{:08x}", device.location)},
            {"node", device.node},
            {"access", accessText(accessTo(device.node))},
            {"driver", device.driver},
            {"holders", holders}};
}

void printPlotters(const std::vector<UsbDevice> &devices) {
    std::vector<std::vector<std::string>> rows = {{"MODEL", "NAME", "SERIAL NUMBER", "LOCATION", "ACCESS", "HOLDER"}};
    for (const UsbDevice &device : devices) {
        rows.push_back({fmt::format("{:04x}:{:04x}", device.vendor, device.product), device.title(),
                        shown(device.serialNumber), fmt::format("{:08x}", device.location),
                        accessText(accessTo(device.node)), usersText(device)});
    }
    printTable(rows, "ACCESS");
}

ExitCode list(const PlotterOptions &options) {
    std::vector<UsbDevice> found = options.vendor.empty() ? anyPlotters()
                                                          : plottersOf(modelNumber("--vendor", options.vendor),
                                                                       modelNumber("--product", options.product));
    if (!options.json) {
        printPlotters(found);
        return ExitCode::Done;
    }
    Json plotters = Json::array();
    for (const UsbDevice &device : found)
        plotters.push_back(jsonOf(device));
    printOut("{}\n", Json{{"plotters", plotters}}.text());
    return ExitCode::Done;
}

} // namespace

void addPlottersCommand(const Command &app) {
    auto options = std::make_shared<PlotterOptions>();
    Command command = app.add("plotters", "List the USB plotters");
    command.explain(
        {"Without a model: the devices with a printer interface, and those of the makers that the plug-in knows.\n"
         "With one: what the plug-in finds of it, up to six. V and P are hexadecimal, with or without 0x.\n"
         "MODEL and LOCATION go to 'vectorix print --usb MODEL@LOCATION'. The driver usblp is no obstacle to a print.",
         {{"vectorix plotters", "All that can be printed to."},
          {"vectorix plotters --vendor 0b75 --product 0402", "What the plug-in finds of one model."}},
         {{"plotters", "a list of objects with the fields that follow"},
          {"vendor, product, location", "hexadecimal digits: what --usb takes as VENDOR:PRODUCT@LOCATION"},
          {"manufacturer, name, serialNumber", "as the device says them"},
          {"node, access", "its file, and the right to it: ok, no permission or no node"},
          {"driver", "of the kernel; empty for none"},
          {"holders", "programs that have it open: process, name"}}});
    Option vendor = command.option("--vendor", options->vendor, "USB vendor of the model").valueName("V");
    Option product = command.option("--product", options->product, "USB product of the model").valueName("P").needs(vendor);
    vendor.needs(product);
    command.flag("--json", options->json, "As one JSON object");
    command.whenTyped([options] { return list(*options); }, &options->json);
}

} // namespace host
