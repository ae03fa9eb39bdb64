// Devices that the system believes to have: sysfs entries and nodes in a directory, served to this process and to its
// children by umockdev's preload library. For tests of what the stand-ins replace, udev and libusb, and of the
// command as a process.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

using UMockdevTestbed = struct _UMockdevTestbed;

namespace bed {

/// Why there can be no devices here; nullptr when there can. Asked while there is no DeviceBed.
const char *whyNot();

/// One at a time.
class DeviceBed {
public:
    DeviceBed();
    ~DeviceBed();
    DeviceBed(const DeviceBed &) = delete;
    DeviceBed &operator=(const DeviceBed &) = delete;

    /// Devices in umockdev's text form.
    void add(const std::string &records);

    /// A USB device at a place such as "1-2.3"; the bus and the hubs above it are added when they are missing. Returns its
    /// node, "/dev/bus/usb/001/004".
    std::string addUsb(const std::string &place, const std::vector<uint8_t> &descriptors, int activeConfiguration);

    /// The sysfs path of a USB device or interface ("1-2.3:1.0").
    static std::string usbPath(const std::string &place);
    /// Of a node: where it is in truth.
    std::string fileOf(const std::string &node) const;

    UMockdevTestbed *get() const { return bed_; }

private:
    UMockdevTestbed *bed_;
    std::vector<std::string> places_;
};

} // namespace bed
