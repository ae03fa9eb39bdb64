#include "host/devices/usb_devices.h"

#include "host/terminal/text.h"

#include <algorithm>
#include <charconv>
#include <fmt/format.h>
#include <fstream>
#include <iterator>
#include <sys/sysmacros.h>

namespace host {

namespace fs = std::filesystem;

namespace {

constexpr uint16_t kPlotterVendors[] = {0x0B4D, 0x0B75, 0x427E, 0x428D, 0x099F, 0x0C30};

std::string contents(const fs::path &path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

std::string attribute(const fs::path &folder, const char *name) {
    std::string text = contents(folder / name);
    if (!text.empty() && text.back() == '\n') text.pop_back();
    return text;
}

/// The number that the text begins with; it is cut off the text. None when there is none.
std::optional<unsigned> takeNumber(std::string_view &text, int base = 10) {
    unsigned number = 0;
    auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number, base);
    if (error != std::errc()) return {};
    text.remove_prefix(static_cast<size_t>(end - text.data()));
    return number;
}

unsigned numberIn(const fs::path &folder, const char *name, int base = 10) {
    std::string text = attribute(folder, name);
    std::string_view rest = text;
    return takeNumber(rest, base).value_or(0);
}

/// Walks the descriptors of all configurations and alternate settings (USB 2.0, chapter 9).
bool isPlotter(std::string_view descriptors, uint16_t vendor) {
    enum : uint8_t { kInterface = 4, kEndpoint = 5, kPrinterClass = 7, kBulk = 2, kInFlag = 0x80, kTypeMask = 3 };
    auto byte = [&](size_t at) { return at < descriptors.size() ? static_cast<uint8_t>(descriptors[at]) : uint8_t{0}; };
    bool counts = false; // endpoints of this interface
    for (size_t at = 0; byte(at) >= 2; at += byte(at)) {
        if (byte(at + 1) == kInterface) counts = byte(at + 5) == kPrinterClass || isPlotterVendor(vendor);
        bool isBulkOut = byte(at + 1) == kEndpoint && (byte(at + 3) & kTypeMask) == kBulk && (byte(at + 2) & kInFlag) == 0;
        if (isBulkOut && counts) return true;
    }
    return false;
}

/// The folder of the device's first interface: 1-2.3:1.0 is interface 0 of configuration 1. Empty when there is none.
fs::path firstInterface(const fs::path &device) {
    fs::path first;
    unsigned lowest = 0;
    std::error_code ignored;
    for (fs::directory_iterator entry(device, ignored), end; entry != end; entry.increment(ignored)) {
        std::string name = entry->path().filename().string();
        std::string_view rest = name;
        size_t colon = rest.find(':');
        if (colon == std::string_view::npos) continue;
        rest.remove_prefix(rest.find_last_of('.') + 1);
        auto number = takeNumber(rest, 16);
        if (!number || !rest.empty() || (!first.empty() && *number >= lowest)) continue;
        first = entry->path();
        lowest = *number;
    }
    return first;
}

std::optional<dev_t> printerNodeOf(const fs::path &interface) {
    std::error_code ignored;
    fs::directory_iterator entry(interface / "usbmisc", ignored);
    if (ignored || entry == fs::directory_iterator()) return {};
    std::string text = attribute(entry->path(), "dev"); // 180:0
    std::string_view rest = text;
    auto majorNumber = takeNumber(rest);
    if (!majorNumber || rest.empty()) return {};
    rest.remove_prefix(1);
    auto minorNumber = takeNumber(rest);
    if (!minorNumber) return {};
    return makedev(*majorNumber, *minorNumber);
}

UsbDevice readDevice(const fs::path &folder, uint32_t location, const fs::path &dev) {
    UsbDevice device;
    device.vendor = static_cast<uint16_t>(numberIn(folder, "idVendor", 16));
    device.product = static_cast<uint16_t>(numberIn(folder, "idProduct", 16));
    device.location = location;
    device.folder = folder;
    device.manufacturer = attribute(folder, "manufacturer");
    device.name = attribute(folder, "product");
    device.serialNumber = attribute(folder, "serial");
    std::string bus = fmt::format("{:03}", numberIn(folder, "busnum"));
    device.node = dev / "bus/usb" / bus / fmt::format("{:03}", numberIn(folder, "devnum"));
    device.isPlotter = isPlotter(contents(folder / "descriptors"), device.vendor);
    if (fs::path interface = firstInterface(folder); !interface.empty()) {
        std::error_code ignored;
        device.interface = interface.filename();
        device.isPrinter = attribute(interface, "bInterfaceClass") == "07";
        device.driver = fs::read_symlink(interface / "driver", ignored).filename();
        device.printerNode = printerNodeOf(interface);
    }
    return device;
}

} // namespace

std::string UsbDevice::id() const { return fmt::format("{:04x}:{:04x}@{:08x}", vendor, product, location); }

std::string UsbDevice::title() const {
    return shown(manufacturer.empty() || name.empty() ? manufacturer + name : manufacturer + " " + name);
}

bool isPlotterVendor(uint16_t vendor) {
    return std::find(std::begin(kPlotterVendors), std::end(kPlotterVendors), vendor) != std::end(kPlotterVendors);
}

std::optional<uint32_t> usbLocation(std::string_view name) {
    bool isBus = name.substr(0, 3) == "usb";
    if (isBus) name.remove_prefix(3);
    auto bus = takeNumber(name);
    if (!bus || (isBus ? !name.empty() : name.empty())) return {};
    uint32_t location = *bus << 24;
    // 5 bits for the root port, 4 for each hub below; the deepest level gets what is left.
    int bit = 24;
    for (char before = '-'; !name.empty(); before = '.') {
        if (name.front() != before) return {};
        name.remove_prefix(1);
        auto port = takeNumber(name);
        if (!port) return {};
        int width = std::min(before == '-' ? 5 : 4, bit);
        bit -= width;
        location |= (*port & ((1U << width) - 1)) << bit;
    }
    return location;
}

std::vector<UsbDevice> usbDevices(const fs::path &sysfs, const fs::path &dev) {
    std::vector<UsbDevice> devices;
    std::error_code ignored;
    for (fs::directory_iterator entry(sysfs / "bus/usb/devices", ignored), end; entry != end; entry.increment(ignored)) {
        auto location = usbLocation(entry->path().filename().string());
        if (location) devices.push_back(readDevice(entry->path(), *location, dev));
    }
    std::sort(devices.begin(), devices.end(),
              [](const UsbDevice &a, const UsbDevice &b) { return a.location < b.location; });
    return devices;
}

} // namespace host
