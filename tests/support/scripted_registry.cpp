#include "support/scripted_registry.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>

namespace scripted {

namespace {

class Device final : public IOUSBDeviceInterface245 {
public:
    Device(Registry &registry, const UsbDevice &device) : registry_(registry), device_(device) {}

    uint32_t Release() override {
        if (open_) ADD_FAILURE() << "a device was released open";
        --registry_.outstanding;
        delete this;
        return 0;
    }
    IOReturn GetDeviceVendor(uint16_t *vendor) override { return give("GetDeviceVendor", vendor, device_.vendor); }
    IOReturn GetDeviceProduct(uint16_t *product) override { return give("GetDeviceProduct", product, device_.product); }
    IOReturn GetNumberOfConfigurations(uint8_t *count) override {
        return give("GetNumberOfConfigurations", count, static_cast<uint8_t>(device_.configurations.size()));
    }
    IOReturn GetLocationID(uint32_t *location) override { return give("GetLocationID", location, device_.location); }
    IOReturn USBDeviceOpen() override {
        registry_.log.push_back("USBDeviceOpen");
        IOReturn result = registry_.outcomeOf("USBDeviceOpen");
        open_ = result == kIOReturnSuccess;
        return result;
    }
    IOReturn USBDeviceClose() override {
        registry_.log.push_back("USBDeviceClose");
        open_ = false;
        return registry_.outcomeOf("USBDeviceClose");
    }
    IOReturn GetConfigurationDescriptorPtr(uint8_t index, IOUSBConfigurationDescriptorPtr *descriptor) override {
        registry_.log.push_back("GetConfigurationDescriptorPtr " + std::to_string(index));
        descriptor_.bConfigurationValue = device_.configurations.at(index);
        *descriptor = &descriptor_;
        return registry_.outcomeOf("GetConfigurationDescriptorPtr");
    }
    IOReturn SetConfiguration(uint8_t value) override {
        registry_.log.push_back("SetConfiguration " + std::to_string(value));
        return registry_.outcomeOf("SetConfiguration");
    }

private:
    template <typename T> IOReturn give(const char *call, T *out, T value) {
        *out = value;
        return registry_.outcomeOf(call);
    }

    Registry &registry_;
    UsbDevice device_;
    IOUSBConfigurationDescriptor descriptor_ = {};
    bool open_ = false;
};

class Interface final : public IOUSBInterfaceInterface245 {
public:
    Interface(Registry &registry, uint32_t location) : registry_(registry), location_(location) {}

    uint32_t Release() override {
        if (open_) registry_.log.push_back("released open");
        --registry_.outstanding;
        delete this;
        return 0;
    }
    IOReturn USBInterfaceOpen() override {
        registry_.log.push_back("USBInterfaceOpen");
        IOReturn result = registry_.outcomeOf("USBInterfaceOpen");
        if (result == kIOReturnSuccess) open_ = true;
        return result;
    }
    IOReturn USBInterfaceClose() override {
        registry_.log.push_back("USBInterfaceClose");
        open_ = false;
        return registry_.outcomeOf("USBInterfaceClose");
    }
    IOReturn GetLocationID(uint32_t *location) override {
        *location = location_;
        return registry_.outcomeOf("GetLocationID");
    }
    IOReturn SetAlternateInterface(uint8_t setting) override { return call("SetAlternateInterface", setting); }
    IOReturn GetNumEndpoints(uint8_t *count) override {
        *count = static_cast<uint8_t>(registry_.endpoints.size());
        return registry_.outcomeOf("GetNumEndpoints");
    }
    IOReturn GetPipeProperties(uint8_t pipe, uint8_t *direction, uint8_t *number, uint8_t *transferType,
                               uint16_t *maxPacketSize, uint8_t *interval) override {
        const Endpoint &endpoint = registry_.endpoints.at(pipe - 1U);
        *direction = endpoint.direction;
        *number = endpoint.number;
        *transferType = endpoint.transferType;
        *maxPacketSize = 64;
        *interval = 0;
        return registry_.outcomeOf("GetPipeProperties");
    }
    IOReturn GetPipeStatus(uint8_t pipe) override { return call("GetPipeStatus", pipe); }
    IOReturn ClearPipeStallBothEnds(uint8_t pipe) override { return call("ClearPipeStallBothEnds", pipe); }
    IOReturn WritePipe(uint8_t pipe, const void *bytes, uint32_t size, uint32_t *taken) override {
        std::string_view text(static_cast<const char *>(bytes), size);
        registry_.log.push_back("WritePipe " + std::to_string(pipe) + " " + quoted(text));
        if (registry_.onWrite) registry_.onWrite(text);
        IOReturn result = open_ ? registry_.outcomeOf("WritePipe") : kIOReturnNotOpen;
        if (result == kIOReturnSuccess) registry_.written += text;
        if (taken) *taken = result == kIOReturnSuccess ? size : 0;
        return result;
    }
    IOReturn ReadPipe(uint8_t pipe, void *buffer, uint32_t *size) override {
        IOReturn result = call("ReadPipe", pipe);
        if (result != kIOReturnSuccess) return result;
        if (registry_.replies.empty()) return kIOReturnNotResponding;
        std::string reply = registry_.replies.front();
        registry_.replies.pop_front();
        *size = static_cast<uint32_t>(std::min<size_t>(*size, reply.size()));
        memcpy(buffer, reply.data(), *size);
        return kIOReturnSuccess;
    }

private:
    IOReturn call(const std::string &name, uint8_t argument) {
        registry_.log.push_back(name + " " + std::to_string(argument));
        if (!open_) return kIOReturnNotOpen;
        return registry_.outcomeOf(name);
    }

    Registry &registry_;
    uint32_t location_;
    bool open_ = false;
};

class PlugIn final : public IOCFPlugInInterface {
public:
    PlugIn(Registry &registry, const UsbDevice &device) : registry_(registry), device_(device) {}
    int32_t QueryInterface(const UUIDBytes &id, IOUnknown **interface) override {
        IOReturn result = registry_.outcomeOf("QueryInterface");
        if (result != kIOReturnSuccess) return result;
        if (id == kIOUSBInterfaceInterfaceID245) {
            *interface = new Interface(registry_, device_.location);
        } else {
            registry_.log.push_back(id == kIOUSBDeviceInterfaceID245 ? "device 245" : "device");
            *interface = new Device(registry_, device_);
        }
        ++registry_.outstanding;
        return 0;
    }

private:
    Registry &registry_;
    const UsbDevice &device_;
};

} // namespace

Registry::~Registry() {
    if (outstanding != 0) ADD_FAILURE() << outstanding << " registry object(s) not released";
}

IOReturn Registry::outcomeOf(const std::string &call) {
    long result = kIOReturnSuccess;
    scriptedOutcome(call, &result);
    return static_cast<IOReturn>(result);
}

IOReturn Registry::masterPort(mach_port_t *port) {
    IOReturn result = outcomeOf("IOMasterPort");
    if (result != kIOReturnSuccess) return result;
    *port = 77;
    ++outstanding;
    return kIOReturnSuccess;
}

IOReturn Registry::deallocatePort(mach_port_t port) {
    EXPECT_EQ(port, 77U);
    --outstanding;
    return kIOReturnSuccess;
}

bool Registry::matching(const char *className, MatchingDictionary *dictionary) {
    if (outcomeOf("IOServiceMatching") != kIOReturnSuccess) return false;
    (*dictionary)["class"] = className;
    return true;
}

IOReturn Registry::matchingServices(mach_port_t, const MatchingDictionary &dictionary, io_object_t *iterator) {
    IOReturn result = outcomeOf("IOServiceGetMatchingServices");
    if (result != kIOReturnSuccess) return result;
    const std::string &className = dictionary.at("class");
    std::deque<Service> found;
    if (className == "IOSerialBSDClient") {
        EXPECT_EQ(dictionary.at("IOSerialBSDClientType"), "IORS232SerialStream");
        for (const auto &port : serialPorts)
            found.push_back({nullptr, &port});
    } else {
        for (const UsbDevice &device : devices)
            found.insert(found.end(), static_cast<size_t>(className == "IOUSBDevice" ? 1 : device.interfaces), {&device});
    }
    *iterator = nextObject_++;
    iterators_[*iterator] = std::move(found);
    ++outstanding;
    return kIOReturnSuccess;
}

io_object_t Registry::next(io_object_t iterator) {
    auto &left = iterators_.at(iterator);
    if (left.empty()) return 0;
    services_[nextObject_] = left.front();
    left.pop_front();
    ++outstanding;
    return nextObject_++;
}

IOReturn Registry::release(io_object_t object) {
    if (iterators_.erase(object) + services_.erase(object) == 0) ADD_FAILURE() << "object " << object << " released twice";
    --outstanding;
    return kIOReturnSuccess;
}

CFTypeRef Registry::createProperty(io_object_t service, const char *key) {
    const Service &found = services_.at(service);
    if (found.device) return found.device->hasProperties ? CFStringCreateWithUTF8("present") : 0;
    auto property = found.port->find(key);
    return property == found.port->end() ? 0 : CFStringCreateWithUTF8(property->second);
}

IOReturn Registry::createPlugIn(io_object_t service, const UUIDBytes &, IOCFPlugInInterface **plugIn) {
    IOReturn result = outcomeOf("IOCreatePlugIn");
    if (result != kIOReturnSuccess) return result;
    *plugIn = new PlugIn(*this, *services_.at(service).device);
    ++outstanding;
    return kIOReturnSuccess;
}

IOReturn Registry::destroyPlugIn(IOCFPlugInInterface *plugIn) {
    delete plugIn;
    --outstanding;
    return outcomeOf("IODestroyPlugIn");
}

} // namespace scripted
