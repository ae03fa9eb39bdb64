#include "host/devices/serial_ports.h"

#include "host/terminal/failure.h"
#include "host/terminal/text.h"

#include <algorithm>
#include <cstring>
#include <fmt/format.h>
#include <fstream>
#include <libudev.h>
#include <memory>
#include <sstream>
#include <sys/stat.h>
#include <sys/sysmacros.h>

namespace host {

namespace {

struct Release {
    void operator()(udev *context) const { udev_unref(context); }
    void operator()(udev_enumerate *list) const { udev_enumerate_unref(list); }
    void operator()(udev_device *device) const { udev_device_unref(device); }
};
template <class Object> using Owned = std::unique_ptr<Object, Release>;

constexpr const char *kNoChip = "0"; // what the attribute "type" says of an empty slot

std::string textOrNone(const char *text) { return text ? text : ""; }

PortParent parentOf(udev_device *device) {
    PortParent parent;
    parent.subsystem = textOrNone(udev_device_get_subsystem(device));
    parent.driver = textOrNone(udev_device_get_driver(device));
    if (textOrNone(udev_device_get_devtype(device)) == "usb_device") {
        parent.vendor = textOrNone(udev_device_get_sysattr_value(device, "idVendor"));
        parent.product = textOrNone(udev_device_get_sysattr_value(device, "idProduct"));
        parent.manufacturer = textOrNone(udev_device_get_sysattr_value(device, "manufacturer"));
        parent.text = textOrNone(udev_device_get_sysattr_value(device, "product"));
    }
    return parent;
}

void addModemMarks(udev_device *device, std::set<std::string> &marks) {
    udev_list_entry *entry;
    udev_list_entry_foreach(entry, udev_device_get_properties_list_entry(device)) {
        std::string key = udev_list_entry_get_name(entry);
        if (key.rfind("ID_MM_", 0) == 0 && textOrNone(udev_list_entry_get_value(entry)) == "1") marks.insert(std::move(key));
    }
}

TerminalFacts factsOf(udev_device *device) {
    TerminalFacts facts;
    facts.name = textOrNone(udev_device_get_sysname(device));
    facts.node = textOrNone(udev_device_get_devnode(device));
    facts.links = textOrNone(udev_device_get_property_value(device, "DEVLINKS"));
    if (const char *type = udev_device_get_sysattr_value(device, "type")) facts.type = type;
    addModemMarks(device, facts.modemMarks);
    for (udev_device *above = udev_device_get_parent(device); above; above = udev_device_get_parent(above)) {
        facts.parents.push_back(parentOf(above)); // a parent belongs to its child
        addModemMarks(above, facts.modemMarks);
    }
    return facts;
}

std::string stableNameAmong(const std::string &links) {
    std::istringstream words(links);
    for (std::string link; words >> link;) {
        if (link.rfind("/dev/serial/by-id/", 0) == 0) return link;
    }
    return {};
}

} // namespace

std::string SerialPort::hardware() const {
    if (vendor.empty()) return shown(bus);
    const std::string &text = productText.empty() ? manufacturer : productText;
    return fmt::format("{}:{}{}{}", shown(vendor), shown(product), text.empty() ? "" : " ", shown(text));
}

std::optional<SerialPort> portOf(const TerminalFacts &facts) {
    // Pseudo-terminals and consoles have no device above them, and a board's unused 8250 ports are of type 0. The plug-in
    // leaves out the same ones.
    if (facts.parents.empty() || facts.type == kNoChip || facts.name.empty() || facts.node.empty()) return {};
    SerialPort port;
    port.name = facts.name;
    port.path = facts.node;
    port.stableName = stableNameAmong(facts.links);
    port.modemMarks = facts.modemMarks;
    for (const PortParent &parent : facts.parents) {
        // The kernel's own layers between a port and its hardware have a bus and drivers without meaning to people.
        if (parent.subsystem == "serial-base") continue;
        if (port.bus.empty()) port.bus = parent.subsystem;
        if (port.driver.empty()) port.driver = parent.driver;
        if (parent.vendor.empty()) continue;
        port.bus = "usb";
        port.vendor = parent.vendor;
        port.product = parent.product;
        port.manufacturer = parent.manufacturer;
        port.productText = parent.text;
        break;
    }
    return port;
}

std::vector<SerialPort> serialPorts() {
    Owned<udev> context(udev_new());
    Owned<udev_enumerate> list(context ? udev_enumerate_new(context.get()) : nullptr);
    if (!list || udev_enumerate_add_match_subsystem(list.get(), "tty") < 0 || udev_enumerate_scan_devices(list.get()) < 0) {
        throw Failure(ExitCode::Failed, "the system does not list its serial ports; is /sys mounted?");
    }
    std::vector<SerialPort> ports;
    udev_list_entry *entry;
    udev_list_entry_foreach(entry, udev_enumerate_get_list_entry(list.get())) {
        Owned<udev_device> device(udev_device_new_from_syspath(context.get(), udev_list_entry_get_name(entry)));
        if (!device) continue; // gone while the list was read
        if (auto port = portOf(factsOf(device.get()))) ports.push_back(std::move(*port));
    }
    std::sort(ports.begin(), ports.end(),
              [](const SerialPort &a, const SerialPort &b) { return strverscmp(a.name.c_str(), b.name.c_str()) < 0; });
    return ports;
}

SerialPort portAt(const std::string &path) {
    std::error_code ignored;
    const std::string target = std::filesystem::weakly_canonical(path, ignored);
    SerialPort found;
    found.name = std::filesystem::path(target.empty() ? path : target).filename();
    Owned<udev> context(udev_new());
    struct stat node;
    const bool isThere = stat(path.c_str(), &node) == 0;
    // The system may know a port that has no node.
    Owned<udev_device> device(!context ? nullptr
                              : isThere
                                  ? udev_device_new_from_devnum(context.get(), 'c', S_ISCHR(node.st_mode) ? node.st_rdev : 0)
                                  : udev_device_new_from_subsystem_sysname(context.get(), "tty", found.name.c_str()));
    if (device && textOrNone(udev_device_get_subsystem(device.get())) == "tty") {
        auto port = portOf(factsOf(device.get()));
        if (port && (isThere || port->path == target)) found = std::move(*port);
    }
    found.path = path;
    return found;
}

bool isEmptySlot(dev_t terminal, const std::filesystem::path &sysfs) {
    std::ifstream file(sysfs / "dev/char" / fmt::format("{}:{}", major(terminal), minor(terminal)) / "type");
    std::string type;
    return file >> type && type == kNoChip;
}

} // namespace host
