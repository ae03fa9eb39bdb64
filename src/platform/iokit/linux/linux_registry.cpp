#include "platform/iokit/linux/linux_registry.h"

#include "platform/iokit/linux/counted_object.h"
#include "platform/iokit/linux/object_table.h"
#include "platform/iokit/linux/return_codes.h"
#include "platform/iokit/linux/serial_ports.h"
#include "platform/iokit/linux/udev_handle.h"
#include "platform/iokit/linux/usb_objects.h"

#include <algorithm>
#include <string_view>
#include <variant>

namespace platform {

namespace {

constexpr auto kNoInterface = static_cast<int32_t>(0x80000004U); // COM's E_NOINTERFACE
constexpr char kClassKey[] = "IOProviderClass";

struct Service {
    std::map<std::string, std::string> texts; // its properties, by type
    std::map<std::string, int64_t> numbers;
    std::variant<std::monostate, UsbDevice, UsbInterface> usb;

    bool fits(const MatchingDictionary &dictionary) const {
        return std::all_of(dictionary.begin(), dictionary.end(), [&](const auto &wanted) {
            const auto found = texts.find(wanted.first);
            return found != texts.end() && found->second == wanted.second;
        });
    }
};

using Services = std::vector<std::shared_ptr<const Service>>;

struct Port {
    UdevHandle<udev> serial;
    UsbContext usb; // made at the first need
};

struct Iterator {
    Services services;
    size_t next = 0;
};

using Object = std::variant<Port, Iterator, std::shared_ptr<const Service>>;

std::shared_ptr<const Service> serviceOf(const SerialPort &port) {
    return std::make_shared<Service>(Service{{{kClassKey, "IOSerialBSDClient"},
                                              {"IOSerialBSDClientType", "IORS232SerialStream"},
                                              {"IOTTYDevice", port.name},
                                              {"IOCalloutDevice", port.path},
                                              {"IODialinDevice", port.path}},
                                             {},
                                             {}});
}

template <typename Usb>
std::shared_ptr<const Service> serviceOf(const char *className, const UsbDevice &device, const Usb &usb) {
    return std::make_shared<Service>(Service{{{kClassKey, className}},
                                             {{"idVendor", device.descriptor.idVendor},
                                              {"idProduct", device.descriptor.idProduct},
                                              {"locationID", device.locationID}},
                                             usb});
}

IOReturn listSerial(Port &port, Services *services) {
    std::vector<SerialPort> ports;
    const IOReturn code = listSerialPorts(port.serial.get(), &ports);
    for (const SerialPort &found : ports)
        services->push_back(serviceOf(found));
    return code;
}

IOReturn listUsb(Port &port, std::vector<UsbDevice> *devices) {
    if (!port.usb) port.usb = makeUsbContext();
    return port.usb ? listUsbDevices(port.usb, devices) : kIOReturnNoResources;
}

IOReturn listDevices(Port &port, Services *services) {
    std::vector<UsbDevice> devices;
    const IOReturn code = listUsb(port, &devices);
    for (const UsbDevice &device : devices)
        services->push_back(serviceOf("IOUSBDevice", device, device));
    return code;
}

IOReturn listInterfaces(Port &port, Services *services) {
    std::vector<UsbDevice> devices;
    const IOReturn code = listUsb(port, &devices);
    for (const UsbDevice &device : devices) {
        for (const UsbInterface &interface : interfacesOf(device))
            services->push_back(serviceOf("IOUSBInterface", device, interface));
    }
    return code;
}

struct Source {
    std::string_view className;
    IOReturn (*list)(Port &port, Services *services);
};

constexpr Source kSources[] = {
    {"IOSerialBSDClient", listSerial},
    {"IOUSBDevice", listDevices},
    {"IOUSBInterface", listInterfaces},
};

/// The plug-in of a USB service. It is made for every device, a plotter or not: it opens nothing.
class PlugIn final : public IOCFPlugInInterface, CountedObject {
public:
    explicit PlugIn(std::shared_ptr<const Service> service) : service_(std::move(service)) {}

    int32_t QueryInterface(const UUIDBytes &interfaceID, IOUnknown **interface) override {
        *interface = nullptr;
        return guarded([&] {
            const auto *device = std::get_if<UsbDevice>(&service_->usb);
            const auto *usbInterface = std::get_if<UsbInterface>(&service_->usb);
            if (device && (interfaceID == kIOUSBDeviceInterfaceID || interfaceID == kIOUSBDeviceInterfaceID245))
                *interface = makeUsbDeviceObject(*device);
            if (usbInterface && interfaceID == kIOUSBInterfaceInterfaceID245)
                *interface = makeUsbInterfaceObject(*usbInterface);
            return *interface != nullptr ? 0 : kNoInterface;
        });
    }

private:
    std::shared_ptr<const Service> service_;
};

class LinuxRegistry final : public IORegistry {
public:
    IOReturn masterPort(mach_port_t *port) override {
        *port = 0;
        return guarded([&] {
            UdevHandle<udev> serial(udev_new());
            if (!serial) return +kIOReturnNoResources;
            *port = objects_.insert(Port{std::move(serial), {}});
            return +kIOReturnSuccess;
        });
    }

    IOReturn deallocatePort(mach_port_t port) override { return release(port); }

    bool matching(const char *className, MatchingDictionary *dictionary) override {
        return guarded([&] {
                   *dictionary = {{kClassKey, className}};
                   return +kIOReturnSuccess;
               }) == kIOReturnSuccess;
    }

    IOReturn matchingServices(mach_port_t port, const MatchingDictionary &dictionary, io_object_t *iterator) override {
        *iterator = 0;
        Port *const found = find<Port>(port);
        const auto className = dictionary.find(kClassKey);
        if (found == nullptr || className == dictionary.end()) return kIOReturnBadArgument;
        return guarded([&] {
            Services services;
            for (const Source &source : kSources) {
                if (source.className != className->second) continue;
                if (const IOReturn code = source.list(*found, &services); code != kIOReturnSuccess) return code;
            }
            std::erase_if(services, [&](const auto &service) { return !service->fits(dictionary); });
            *iterator = objects_.insert(Iterator{std::move(services)});
            return +kIOReturnSuccess;
        });
    }

    io_object_t next(io_object_t iterator) override {
        io_object_t handle = 0;
        guarded([&] {
            Iterator *const found = find<Iterator>(iterator);
            if (found != nullptr && found->next < found->services.size()) {
                std::shared_ptr<const Service> service = found->services[found->next++];
                handle = objects_.insert(std::move(service));
            }
            return +kIOReturnSuccess;
        });
        return handle;
    }

    IOReturn release(io_object_t object) override {
        return objects_.erase(object) ? kIOReturnSuccess : kIOReturnBadArgument;
    }

    CFTypeRef createProperty(io_object_t service, const char *key) override {
        CFTypeRef made = 0;
        guarded([&] {
            const auto *found = find<std::shared_ptr<const Service>>(service);
            if (found == nullptr) return +kIOReturnBadArgument;
            const auto text = (*found)->texts.find(key);
            const auto number = (*found)->numbers.find(key);
            if (text != (*found)->texts.end()) made = CFStringCreateWithUTF8(text->second);
            if (number != (*found)->numbers.end()) made = CFNumberCreateInt64(number->second);
            return +kIOReturnSuccess;
        });
        return made;
    }

    IOReturn createPlugIn(io_object_t service, const UUIDBytes &type, IOCFPlugInInterface **plugIn) override {
        *plugIn = nullptr;
        const auto *found = find<std::shared_ptr<const Service>>(service);
        if (found == nullptr) return kIOReturnBadArgument;
        const bool fits = (std::holds_alternative<UsbDevice>((*found)->usb) && type == kIOUSBDeviceUserClientTypeID) ||
                          (std::holds_alternative<UsbInterface>((*found)->usb) && type == kIOUSBInterfaceUserClientTypeID);
        if (!fits) return kIOReturnUnsupported;
        return guarded([&] {
            *plugIn = new PlugIn(*found);
            return +kIOReturnSuccess;
        });
    }

    IOReturn destroyPlugIn(IOCFPlugInInterface *plugIn) override {
        if (plugIn == nullptr) return kIOReturnBadArgument;
        delete plugIn;
        return kIOReturnSuccess;
    }

    unsigned live() const noexcept { return objects_.live(); }

private:
    template <typename T> T *find(uint32_t handle) noexcept {
        Object *const object = objects_.find(handle);
        return object == nullptr ? nullptr : std::get_if<T>(object);
    }

    ObjectTable<Object> objects_;
};

LinuxRegistry &registry() noexcept {
    // Never destroyed: owners in static objects may release after this file's own are gone.
    alignas(LinuxRegistry) static unsigned char storage[sizeof(LinuxRegistry)];
    static LinuxRegistry *const made = new (storage) LinuxRegistry;
    return *made;
}

} // namespace

IORegistry &linuxRegistry() noexcept { return registry(); }

unsigned liveRegistryObjects() noexcept { return registry().live() + CountedObject::live(); }

} // namespace platform
