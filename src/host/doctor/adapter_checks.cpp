// USB serial adapters: those without a port, and programs that take theirs.
#include "host/doctor/checks.h"
#include "host/obstacles/usb_obstacles.h"
#include "host/terminal/text.h"

#include <algorithm>
#include <fmt/format.h>

namespace host {

namespace fs = std::filesystem;

namespace {

/// The chips in USB serial adapters, and the kernel's driver for each.
constexpr struct {
    uint16_t vendor, product;
    const char *driver;
} kAdapters[] = {
    {0x0403, 0x6001, "ftdi_sio"}, {0x0403, 0x6010, "ftdi_sio"}, {0x0403, 0x6011, "ftdi_sio"}, {0x0403, 0x6014, "ftdi_sio"},
    {0x0403, 0x6015, "ftdi_sio"}, {0x067B, 0x2303, "pl2303"},   {0x067B, 0x23A3, "pl2303"},   {0x067B, 0x23C3, "pl2303"},
    {0x10C4, 0xEA60, "cp210x"},   {0x10C4, 0xEA70, "cp210x"},   {0x10C4, 0xEA71, "cp210x"},   {0x1A86, 0x7523, "ch341"},
    {0x1A86, 0x7522, "ch341"},    {0x1A86, 0x5523, "ch341"},    {0x4348, 0x5523, "ch341"},    {0x1A86, 0x55D4, "cdc_acm"},
    {0x9710, 0x7720, "mos7720"},  {0x9710, 0x7840, "mos7840"},  {0x0711, 0x0230, "mct_u232"}, {0x050D, 0x0109, "mct_u232"},
    {0x0557, 0x2008, "pl2303"},   {0x06CD, 0x0121, "keyspan"},
};
constexpr char kBraille[] = "brltty";
constexpr char kModemManager[] = "ModemManager";
constexpr char kModemDriver[] = "cdc_acm"; // mostly of modems: ModemManager probes all its ports

const char *adapterDriver(const UsbDevice &device) {
    const auto *at = std::find_if(std::begin(kAdapters), std::end(kAdapters), [&](const auto &row) {
        return row.vendor == device.vendor && row.product == device.product;
    });
    return at == std::end(kAdapters) ? nullptr : at->driver;
}

/// An adapter's interface holds its ports: ttyUSB0 itself, or a folder of them.
bool hasPort(const UsbDevice &device) {
    std::error_code ignored;
    for (fs::directory_iterator interface(device.folder, ignored), end; interface != end; interface.increment(ignored)) {
        if (interface->path().filename().string().find(':') == std::string::npos) continue;
        for (fs::directory_iterator entry(interface->path(), ignored); entry != end; entry.increment(ignored)) {
            if (entry->path().filename().string().rfind("tty", 0) == 0) return true;
        }
    }
    return false;
}

void addBrailleRules(const Computer &computer, const RuleDevice &device, LinkReport &report) {
    std::string file = brlttyRulesFor(*computer.rules, device);
    report.saw(fmt::format("{} of udev rules: brltty's {}", counted(static_cast<int64_t>(computer.rules->size()), "file"),
                           file.empty() ? "do not name it" : "name it in " + shown(file)));
    if (!file.empty()) report.add(Obstacle::BrlttyRule, {{"file", file}});
}

} // namespace

void checkAdapterPrograms(const Computer &computer, const SerialPort &port, LinkReport &report) {
    addBrailleRules(computer, {port.vendor, port.product, port.manufacturer, port.productText}, report);

    const bool isCandidate = port.modemMarks.count("ID_MM_CANDIDATE") > 0;
    const bool isIgnored =
        port.modemMarks.count("ID_MM_PORT_IGNORE") > 0 || port.modemMarks.count("ID_MM_DEVICE_IGNORE") > 0;
    const bool isRunning = computer.running(kModemManager) != nullptr;
    report.saw(fmt::format("ModemManager: {}; udev says {}", isRunning ? "runs" : "does not run",
                           isIgnored     ? "that it is to leave the port alone"
                           : isCandidate ? "that it may look at the port"
                                         : "nothing of it"));
    if (!isRunning || isIgnored || !isCandidate) return;
    report.add(port.driver == kModemDriver ? Obstacle::ModemManager : Obstacle::ModemManagerNear,
               {{"vendor", port.vendor}, {"product", port.product}});
}

bool isAdapterWithoutPort(const UsbDevice &device) { return adapterDriver(device) && !hasPort(device); }

LinkReport checkAdapter(const Computer &computer, const UsbDevice &device) {
    const std::string driver = adapterDriver(device);
    LinkReport report{"adapter", device.id(), device.title()};
    report.saw(fmt::format("{}: no port in it", shown(device.folder.string())));
    std::error_code ignored;
    const bool isLoaded = fs::exists(computer.below("sys/module") / driver, ignored);
    const std::vector<Holder> holders = holdersOf(device);
    auto isBraille = [](const Holder &holder) { return holder.name == kBraille; };
    if (device.isClaimed() && (computer.running(kBraille) || std::any_of(holders.begin(), holders.end(), isBraille)))
        report.add(Obstacle::BrlttyHolds);
    else if (device.isClaimed())
        addClaims(device, holders, report);
    else
        report.add(isLoaded ? Obstacle::NoPortMade : Obstacle::DriverMissing, {{"driver", driver}});
    report.saw(fmt::format("/sys/module/{}: {}", driver, isLoaded ? "there" : "not there"));
    addBrailleRules(computer, ruleDevice(device), report);
    return report;
}

} // namespace host
