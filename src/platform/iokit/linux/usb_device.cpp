#include "platform/iokit/linux/counted_object.h"
#include "platform/iokit/linux/return_codes.h"
#include "platform/iokit/linux/usb_objects.h"
#include "platform/iokit/linux/usb_transfer.h"

#include <map>

namespace platform {

namespace {

class DeviceObject final : public IOUSBDeviceInterface245, CountedObject {
public:
    explicit DeviceObject(const UsbDevice &device) : device_(device) {}

    uint32_t Release() override {
        delete this;
        return 0;
    }

    IOReturn GetDeviceVendor(uint16_t *vendor) override {
        *vendor = device_.descriptor.idVendor;
        return kIOReturnSuccess;
    }

    IOReturn GetDeviceProduct(uint16_t *product) override {
        *product = device_.descriptor.idProduct;
        return kIOReturnSuccess;
    }

    IOReturn GetNumberOfConfigurations(uint8_t *count) override {
        *count = device_.descriptor.bNumConfigurations;
        return kIOReturnSuccess;
    }

    IOReturn GetLocationID(uint32_t *locationID) override {
        *locationID = device_.locationID;
        return kIOReturnSuccess;
    }

    IOReturn USBDeviceOpen() override { return handle_ ? kIOReturnSuccess : openUsbDevice(device_, &handle_); }

    IOReturn USBDeviceClose() override {
        if (!handle_) return kIOReturnNotOpen;
        handle_.reset();
        return kIOReturnSuccess;
    }

    IOReturn GetConfigurationDescriptorPtr(uint8_t index, IOUSBConfigurationDescriptorPtr *descriptor) override {
        return guarded([&] {
            libusb_config_descriptor *found = nullptr;
            const int result = libusb_get_config_descriptor(device_.device.get(), index, &found);
            if (result != 0) return codeOfUsb(result);
            const std::unique_ptr<libusb_config_descriptor, decltype(&libusb_free_config_descriptor)> owner(
                found, libusb_free_config_descriptor);
            heads_[index] = {found->bLength,
                             found->bDescriptorType,
                             {static_cast<uint8_t>(found->wTotalLength), static_cast<uint8_t>(found->wTotalLength >> 8)},
                             found->bNumInterfaces,
                             found->bConfigurationValue,
                             found->iConfiguration,
                             found->bmAttributes,
                             found->MaxPower};
            *descriptor = &heads_[index];
            return +kIOReturnSuccess;
        });
    }

    IOReturn SetConfiguration(uint8_t value) override {
        if (!handle_) return kIOReturnNotOpen;
        // Setting the active one again would be refused while a driver is bound to an interface, and otherwise resets the
        // device's data toggles.
        int active = 0;
        if (libusb_get_configuration(handle_.get(), &active) == 0 && active == value) return kIOReturnSuccess;
        return codeOnDevice(handle_.get(), libusb_set_configuration(handle_.get(), value));
    }

private:
    UsbDevice device_;
    UsbHandle handle_;
    std::map<uint8_t, IOUSBConfigurationDescriptor> heads_; // by index; elements stay where they are
};

} // namespace

IOUSBDeviceInterface245 *makeUsbDeviceObject(const UsbDevice &device) { return new DeviceObject(device); }

} // namespace platform
