#include "support/registry.h"

#include "support/input.h"

#include <cstring>
#include <string>

namespace fuzz {

namespace {

class Device final : public IOUSBDeviceInterface245 {
public:
    Device(Registry &registry, uint32_t location) : registry_(registry), location_(location) {}

    uint32_t Release() override {
        require(!open_, "a device is closed before it is released");
        --registry_.outstanding;
        delete this;
        return 0;
    }
    IOReturn GetDeviceVendor(uint16_t *vendor) override { return give(vendor, registry_.vendor); }
    IOReturn GetDeviceProduct(uint16_t *product) override { return give(product, registry_.product); }
    IOReturn GetNumberOfConfigurations(uint8_t *count) override { return give(count, uint8_t{2}); }
    IOReturn GetLocationID(uint32_t *location) override { return give(location, location_); }
    IOReturn USBDeviceOpen() override {
        const IOReturn result = registry_.outcome();
        open_ = result == kIOReturnSuccess;
        return result;
    }
    IOReturn USBDeviceClose() override {
        open_ = false;
        return registry_.outcome();
    }
    IOReturn GetConfigurationDescriptorPtr(uint8_t, IOUSBConfigurationDescriptorPtr *descriptor) override {
        static constexpr IOUSBConfigurationDescriptor kDescriptor = {};
        return give(descriptor, &kDescriptor);
    }
    IOReturn SetConfiguration(uint8_t) override { return registry_.outcome(); }

private:
    template <typename T> IOReturn give(T *out, T value) {
        *out = value;
        return registry_.outcome();
    }

    Registry &registry_;
    uint32_t location_;
    bool open_ = false;
};

class Interface final : public IOUSBInterfaceInterface245 {
public:
    Interface(Registry &registry, uint32_t location) : registry_(registry), location_(location) {}

    uint32_t Release() override {
        --registry_.outstanding;
        delete this;
        return 0;
    }
    IOReturn USBInterfaceOpen() override {
        const IOReturn result = registry_.outcome();
        open_ = result == kIOReturnSuccess;
        return result;
    }
    IOReturn USBInterfaceClose() override {
        open_ = false;
        return registry_.outcome();
    }
    IOReturn GetLocationID(uint32_t *location) override {
        *location = location_;
        return registry_.outcome();
    }
    IOReturn SetAlternateInterface(uint8_t) override { return registry_.outcome(); }
    IOReturn GetNumEndpoints(uint8_t *count) override {
        *count = registry_.endpoints;
        return registry_.outcome();
    }
    IOReturn GetPipeProperties(uint8_t pipe, uint8_t *direction, uint8_t *number, uint8_t *type, uint16_t *size,
                               uint8_t *interval) override {
        *direction = pipe % 2 == 0;
        *number = pipe;
        *type = 2;
        *size = 64;
        *interval = 0;
        return onPipe(pipe);
    }
    IOReturn GetPipeStatus(uint8_t pipe) override { return onPipe(pipe); }
    IOReturn ClearPipeStallBothEnds(uint8_t pipe) override { return onPipe(pipe); }
    IOReturn WritePipe(uint8_t pipe, const void *bytes, uint32_t size, uint32_t *taken) override {
        if (taken != nullptr) *taken = 0;
        if (IOReturn result = onPipe(pipe); result != kIOReturnSuccess) return result;
        if (registry_.wire.onWrite) registry_.wire.onWrite();
        registry_.wire.arrived.append(static_cast<const char *>(bytes), size);
        if (taken != nullptr) *taken = size;
        return kIOReturnSuccess;
    }
    IOReturn ReadPipe(uint8_t pipe, void *buffer, uint32_t *size) override {
        if (IOReturn result = onPipe(pipe); result != kIOReturnSuccess) return result;
        if (registry_.wire.replies.empty()) return kIOReturnNotResponding;
        const std::string_view reply = registry_.wire.nextReply(*size);
        memcpy(buffer, reply.data(), reply.size());
        *size = static_cast<uint32_t>(reply.size());
        return kIOReturnSuccess;
    }

private:
    IOReturn onPipe(uint8_t pipe) {
        if (!open_) return kIOReturnNotOpen;
        return pipe == 0 || pipe > registry_.endpoints ? IOReturn{kIOUSBUnknownPipeErr} : registry_.outcome();
    }

    Registry &registry_;
    uint32_t location_;
    bool open_ = false;
};

class PlugIn final : public IOCFPlugInInterface {
public:
    PlugIn(Registry &registry, uint32_t location) : registry_(registry), location_(location) {}
    int32_t QueryInterface(const UUIDBytes &id, IOUnknown **interface) override {
        if (IOReturn result = registry_.outcome(); result != kIOReturnSuccess) return result;
        ++registry_.outstanding;
        if (id == kIOUSBInterfaceInterfaceID245) {
            *interface = new Interface(registry_, location_);
        } else {
            *interface = new Device(registry_, location_);
        }
        return 0;
    }

private:
    Registry &registry_;
    uint32_t location_;
};

} // namespace

IOReturn Registry::outcome() {
    static constexpr IOReturn kCodes[] = {kIOReturnError,       kIOReturnNoDevice,     kIOReturnExclusiveAccess,
                                          kIOReturnAborted,     kIOReturnNotOpen,      kIOUSBPipeStalled,
                                          kIOReturnNoResources, kIOReturnNotResponding};
    IOReturn result = kIOReturnSuccess;
    wire.fails(kCodes, &result);
    return result;
}

IOReturn Registry::masterPort(mach_port_t *port) {
    const IOReturn result = outcome();
    *port = result == kIOReturnSuccess;
    outstanding += result == kIOReturnSuccess;
    return result;
}

IOReturn Registry::deallocatePort(mach_port_t) {
    --outstanding;
    return kIOReturnSuccess;
}

bool Registry::matching(const char *className, MatchingDictionary *dictionary) {
    if (outcome() != kIOReturnSuccess) return false;
    (*dictionary)["class"] = className;
    return true;
}

IOReturn Registry::matchingServices(mach_port_t, const MatchingDictionary &dictionary, io_object_t *iterator) {
    if (IOReturn result = outcome(); result != kIOReturnSuccess) return result;
    *iterator = nextIterator_++;
    iterators_[*iterator] = {0, dictionary.at("class") == "IOSerialBSDClient" ? ports : plotters};
    ++outstanding;
    return kIOReturnSuccess;
}

io_object_t Registry::next(io_object_t iterator) {
    Iterator &place = iterators_.at(iterator);
    if (place.next == place.end) return 0;
    ++outstanding;
    return static_cast<io_object_t>(++place.next);
}

IOReturn Registry::release(io_object_t object) {
    iterators_.erase(object);
    require(--outstanding >= 0, "nothing is released twice");
    return kIOReturnSuccess;
}

CFTypeRef Registry::createProperty(io_object_t service, const char *key) {
    return outcome() == kIOReturnSuccess ? CFStringCreateWithUTF8(key + std::to_string(service)) : 0;
}

IOReturn Registry::createPlugIn(io_object_t service, const UUIDBytes &, IOCFPlugInInterface **plugIn) {
    if (IOReturn result = outcome(); result != kIOReturnSuccess) return result;
    ++outstanding;
    *plugIn = new PlugIn(*this, locationOf(service));
    return kIOReturnSuccess;
}

IOReturn Registry::destroyPlugIn(IOCFPlugInInterface *plugIn) {
    --outstanding;
    delete plugIn;
    return kIOReturnSuccess;
}

} // namespace fuzz
