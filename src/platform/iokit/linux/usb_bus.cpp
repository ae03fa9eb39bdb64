#include "platform/iokit/linux/usb_bus.h"

#include "platform/iokit/linux/return_codes.h"
#include "platform/iokit/linux/udev_handle.h"

#include <algorithm>
#include <unistd.h>

namespace platform {

namespace {

constexpr int kMaxDepth = 7; // as far down as USB goes

struct Ports {
    uint8_t numbers[kMaxDepth];
    int count;
};

Ports portsOf(libusb_device *device) noexcept {
    Ports ports{};
    ports.count = std::max(0, libusb_get_port_numbers(device, ports.numbers, kMaxDepth));
    return ports;
}

/// The bus in the top byte, then 5 bits for the root port and 4 for each hub level; the deepest level gets what is left.
uint32_t locationOf(libusb_device *device) noexcept {
    const Ports ports = portsOf(device);
    uint32_t location = uint32_t{libusb_get_bus_number(device)} << 24;
    int bit = 24;
    for (int i = 0; i < ports.count && bit > 0; ++i) {
        const int width = std::min(i == 0 ? 5 : 4, bit);
        bit -= width;
        location |= (ports.numbers[i] & ((1U << width) - 1)) << bit;
    }
    return location;
}

UsbDevice deviceOf(const UsbContext &context, libusb_device *device) {
    UsbDevice made{context, {libusb_ref_device(device), libusb_unref_device}, {}, locationOf(device)};
    libusb_get_device_descriptor(device, &made.descriptor); // cannot fail: it is kept since the device was found
    return made;
}

UsbAlternateSetting alternateSettingOf(const libusb_interface_descriptor &descriptor) {
    UsbAlternateSetting setting{descriptor.bAlternateSetting, {}};
    for (int i = 0; i < descriptor.bNumEndpoints; ++i) {
        const libusb_endpoint_descriptor &endpoint = descriptor.endpoint[i];
        // Above the size are the transactions of a microframe (USB 2.0, table 9-13).
        setting.endpoints.push_back({endpoint.bEndpointAddress,
                                     static_cast<uint8_t>(endpoint.bmAttributes & LIBUSB_TRANSFER_TYPE_MASK),
                                     static_cast<uint16_t>(endpoint.wMaxPacketSize & 0x7FF), endpoint.bInterval});
    }
    return setting;
}

struct ListDeleter {
    void operator()(libusb_device **list) const noexcept { libusb_free_device_list(list, 1); }
    void operator()(libusb_config_descriptor *descriptor) const noexcept { libusb_free_config_descriptor(descriptor); }
};

} // namespace

UsbContext makeUsbContext() {
    libusb_context *context = nullptr;
    return libusb_init(&context) == 0 ? UsbContext(context, libusb_exit) : UsbContext();
}

IOReturn listUsbDevices(const UsbContext &context, std::vector<UsbDevice> *devices) {
    libusb_device **found = nullptr;
    const ssize_t count = libusb_get_device_list(context.get(), &found);
    if (count < 0) return codeOfUsb(static_cast<int>(count));
    const std::unique_ptr<libusb_device *, ListDeleter> list(found);
    std::for_each(found, found + count, [&](libusb_device *device) { devices->push_back(deviceOf(context, device)); });
    std::stable_sort(devices->begin(), devices->end(),
                     [](const UsbDevice &a, const UsbDevice &b) { return a.locationID < b.locationID; });
    return kIOReturnSuccess;
}

std::vector<UsbInterface> interfacesOf(const UsbDevice &device) {
    std::vector<UsbInterface> interfaces;
    libusb_config_descriptor *found = nullptr;
    if (libusb_get_active_config_descriptor(device.device.get(), &found) != 0) return interfaces;
    const std::unique_ptr<libusb_config_descriptor, ListDeleter> configuration(found);
    for (int i = 0; i < configuration->bNumInterfaces; ++i) {
        const libusb_interface &described = configuration->interface[i];
        if (described.num_altsetting <= 0) continue;
        const libusb_interface_descriptor &first = described.altsetting[0];
        UsbInterface made{device,
                          configuration->bConfigurationValue,
                          first.bInterfaceNumber,
                          first.bInterfaceClass == LIBUSB_CLASS_PRINTER,
                          {}};
        std::transform(described.altsetting, described.altsetting + described.num_altsetting,
                       std::back_inserter(made.settings),
                       [](const libusb_interface_descriptor &descriptor) { return alternateSettingOf(descriptor); });
        interfaces.push_back(std::move(made));
    }
    return interfaces;
}

bool hasPrinterDriver() noexcept { return ::access("/sys/bus/usb/drivers/usblp", F_OK) == 0; }

std::string kernelDriverOf(const UsbInterface &interface) {
    libusb_device *device = interface.device.device.get();
    const Ports ports = portsOf(device);
    // The name that the kernel gives an interface: 1-2.3:1.0.
    std::string name = std::to_string(libusb_get_bus_number(device));
    for (int i = 0; i < ports.count; ++i)
        name.append(i == 0 ? "-" : ".").append(std::to_string(ports.numbers[i]));
    name.append(":").append(std::to_string(interface.configuration));
    name.append(".").append(std::to_string(interface.number));

    const UdevHandle<udev> context(udev_new());
    if (!context) return {};
    const UdevHandle<udev_device> found(udev_device_new_from_subsystem_sysname(context.get(), "usb", name.c_str()));
    const char *driver = found ? udev_device_get_driver(found.get()) : nullptr;
    return driver != nullptr ? driver : "";
}

IOReturn openUsbDevice(const UsbDevice &device, UsbHandle *handle) noexcept {
    libusb_device_handle *opened = nullptr;
    const int result = libusb_open(device.device.get(), &opened);
    handle->reset(opened);
    return codeOfUsb(result);
}

} // namespace platform
