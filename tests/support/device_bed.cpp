#include "support/device_bed.h"

#include <algorithm>
#include <cstdio>
#include <stdexcept>
#include <umockdev.h>

namespace bed {

namespace {

// A root hub or hub: a device descriptor of the hub class, and a configuration with its one interface and endpoint.
const std::vector<uint8_t> kHub = {18, 1, 0, 2,    9, 0, 0, 64, 0x6B, 0x1D, 2, 0, 0, 1, 0, 0, 0,    1, 9, 2, 25, 0,
                                   1,  1, 0, 0xE0, 0, 9, 4, 0,  0,    1,    9, 0, 0, 0, 7, 5, 0x81, 3, 4, 0, 12};

std::string busOf(const std::string &place) { return place.substr(0, place.find_first_of("-:")); }

} // namespace

const char *whyNot() {
    static const bool works = (DeviceBed(), umockdev_in_mock_environment() != FALSE);
    return works ? nullptr : "no virtual devices: umockdev's preload library is not at work in this process";
}

DeviceBed::DeviceBed() : bed_(umockdev_testbed_new()) {}

DeviceBed::~DeviceBed() { g_object_unref(bed_); }

void DeviceBed::add(const std::string &records) {
    if (!umockdev_testbed_add_from_string(bed_, records.c_str(), nullptr)) throw std::runtime_error(records);
}

std::string DeviceBed::usbPath(const std::string &place) {
    std::string path = "/devices/pci0000:00/0000:00:14.0/usb" + busOf(place);
    const size_t interface = place.find(':');
    for (size_t at = place.find('-'); at != std::string::npos && at < interface; at = place.find('.', at + 1)) {
        const size_t end = std::min({place.find('.', at + 1), interface, place.size()});
        path.append("/").append(place, 0, end);
    }
    return interface == std::string::npos ? path : path + "/" + place;
}

std::string DeviceBed::addUsb(const std::string &place, const std::vector<uint8_t> &descriptors, int activeConfiguration) {
    const std::string above = place.substr(0, place.find_last_of("-."));
    if (above != place && std::find(places_.begin(), places_.end(), above) == places_.end()) addUsb(above, kHub, 1);
    places_.push_back(place);
    const int number = static_cast<int>(places_.size());
    char node[32], ids[64], byte[3];
    snprintf(node, sizeof node, "bus/usb/%03d/%03d", std::stoi(busOf(place)), number);
    snprintf(ids, sizeof ids, "A: idVendor=%02x%02x\\n\nA: idProduct=%02x%02x\\n\n", descriptors[9], descriptors[8],
             descriptors[11], descriptors[10]);
    std::string records = "P: " + usbPath(place) + "\nN: " + node + "\nE: DEVNAME=/dev/" + node +
                          "\nE: DEVTYPE=usb_device\nE: DRIVER=usb\nE: SUBSYSTEM=usb\nA: busnum=" + busOf(place) +
                          "\\n\nA: devnum=" + std::to_string(number) +
                          "\\n\nA: bConfigurationValue=" + std::to_string(activeConfiguration) + "\\n\nA: speed=12\\n\n" +
                          ids + "H: descriptors=";
    for (const uint8_t value : descriptors) {
        snprintf(byte, sizeof byte, "%02X", value);
        records += byte;
    }
    add(records + "\n\n");
    return std::string("/dev/") + node;
}

std::string DeviceBed::fileOf(const std::string &node) const {
    gchar *root = umockdev_testbed_get_root_dir(bed_);
    std::string path = root + node;
    g_free(root);
    return path;
}

} // namespace bed
