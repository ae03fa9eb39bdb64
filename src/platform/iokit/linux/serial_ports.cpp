#include "platform/iokit/linux/serial_ports.h"

#include "platform/iokit/linux/return_codes.h"
#include "platform/iokit/linux/udev_handle.h"

#include <algorithm>
#include <cstring>
#include <string_view>

namespace platform {

namespace {

/// Pseudo-terminals and consoles hang on no device. A board's 8250 driver makes nodes for as many ports as a board may have:
/// those that it found no chip for are of type 0 (serial_core.h: PORT_UNKNOWN).
bool hasHardware(udev_device *device) noexcept {
    if (udev_device_get_parent(device) == nullptr) return false;
    const char *type = udev_device_get_sysattr_value(device, "type");
    return type == nullptr || std::string_view(type) != "0";
}

bool naturallyBefore(const SerialPort &a, const SerialPort &b) noexcept {
    return ::strverscmp(a.name.c_str(), b.name.c_str()) < 0;
}

} // namespace

IOReturn listSerialPorts(udev *context, std::vector<SerialPort> *ports) {
    const UdevHandle<udev_enumerate> enumerate(udev_enumerate_new(context));
    if (!enumerate) return kIOReturnNoMemory;
    int result = udev_enumerate_add_match_subsystem(enumerate.get(), "tty");
    if (result >= 0) result = udev_enumerate_scan_devices(enumerate.get());
    if (result < 0) return codeOfErrno(-result);

    udev_list_entry *entry;
    udev_list_entry_foreach(entry, udev_enumerate_get_list_entry(enumerate.get())) {
        const UdevHandle<udev_device> device(udev_device_new_from_syspath(context, udev_list_entry_get_name(entry)));
        if (!device || !hasHardware(device.get())) continue; // a device may go while the list is read
        const char *name = udev_device_get_sysname(device.get()), *path = udev_device_get_devnode(device.get());
        if (name != nullptr && path != nullptr) ports->push_back({name, path});
    }
    std::sort(ports->begin(), ports->end(), naturallyBefore);
    return kIOReturnSuccess;
}

} // namespace platform
