// vectorix doctor: what stands between this computer and a plotter, and what mends it.
#include "host/commands/commands.h"
#include "host/doctor/checks.h"
#include "host/doctor/told_reports.h"
#include "host/obstacles/port_lock.h"
#include "host/options/plotter_options.h"
#include "host/plugin/usb_target.h"

#include <algorithm>
#include <filesystem>
#include <fmt/format.h>
#include <iterator>
#include <memory>

namespace host {

namespace fs = std::filesystem;

namespace {

struct DoctorOptions {
    bool isPort = false, isUsb = false; ///< look at this kind of link alone
    std::string port, usbChoice;
    bool isVerbose = false;
    bool json = false;
};

using Reports = std::vector<LinkReport>;

void addAdapters(const Computer &computer, Reports &reports) {
    for (const UsbDevice &device : usbDevices()) {
        if (isAdapterWithoutPort(device)) reports.push_back(checkAdapter(computer, device));
    }
}

Reports examinePort(const Computer &computer, const std::string &path) {
    requirePortPath(path);
    Reports reports = {checkPort(computer, portAt(path))};
    // A port that is not there may belong to an adapter for which the kernel has made none.
    if (!fs::exists(path)) addAdapters(computer, reports);
    return reports;
}

Reports examineUsb(const Computer &computer, const std::string &typed) {
    Reports reports;
    for (const UsbDevice &device : matchingUsbDevices(usbDevices(), parseUsbChoice(typed)))
        reports.push_back(checkPlotter(computer, device));
    if (!reports.empty()) return reports;
    reports.push_back({"usb", typed.empty() ? "USB plotter" : typed});
    reports.back().add(Obstacle::NoSuchPlotter);
    return reports;
}

Reports examineAll(const Computer &computer) {
    Reports reports;
    for (const SerialPort &port : serialPorts())
        reports.push_back(checkPort(computer, port));
    addAdapters(computer, reports);
    for (const UsbDevice &device : matchingUsbDevices(usbDevices(), {}))
        reports.push_back(checkPlotter(computer, device));
    if (!reports.empty()) return reports;
    reports.push_back({"serial", "plotter"});
    reports.back().add(Obstacle::NothingFound);
    return reports;
}

ExitCode examine(const DoctorOptions &options) {
    const Computer computer;
    Reports reports = options.isPort  ? examinePort(computer, options.port)
                      : options.isUsb ? examineUsb(computer, options.usbChoice)
                                      : examineAll(computer);
    if (LinkReport all = checkComputer(computer); !all.findings.empty()) reports.push_back(std::move(all));
    if (options.json)
        printReportsAsJson(reports);
    else
        printReports(reports, options.isVerbose);
    return exitCodeOf(reports);
}

} // namespace

void addDoctorCommand(const Command &app) {
    auto options = std::make_shared<DoctorOptions>();
    Command command = app.add("doctor", "Say what stands in the way to a plotter, and what mends it");
    command.explain(
        {"Looks at one link, or at all, and touches none: no port is opened, no plotter claimed, no setting changed. Each\n"
         "finding is in the way, may be in the way, or is a note; behind $ stands the command that mends it. A link is "
         "free\n"
         "when nothing is or may be in its way. The first thing in the way gives the exit code; what only may be, gives 0.",
         {{"vectorix doctor", "Looks at all ports and USB plotters."},
          {"vectorix doctor --port /dev/ttyUSB0 -v", "Looks at one, and says what it looked at."}},
         reportFields()});
    Option port = addPort(command, options->port).describe("Only this serial port");
    Option usb = command.option("--usb", options->usbChoice, "Only USB plotters, or those of one model")
                     .valueName("[V:P[@LOCATION]]")
                     .mayStandAlone()
                     .excludes(port);
    command.flag("-v,--verbose", options->isVerbose, "Also what was looked at");
    command.flag("--json", options->json, "As one JSON object");
    command.whenTyped(
        [options, port, usb] {
            options->isPort = port.isTyped();
            options->isUsb = usb.isTyped();
            return examine(*options);
        },
        &options->json);
}

} // namespace host
