#include "memory_bus.h"

#include "platform/backends.h"

#include <cstring>
#include <sys/syscall.h>
#include <unistd.h>
#include <utility>

namespace bench {

namespace {

constexpr uint32_t kLocation = 0x01100000;

} // namespace

IOReturn MemoryInterface::WritePipe(uint8_t, const void *bytes, uint32_t size, uint32_t *taken) {
    const std::string_view text(static_cast<const char *>(bytes), size);
    if (heard_ == 0 && text == "IN;") return kIOReturnSuccess; // the start of the job, not of the plot
    for (int i = 0; i < systemCalls_; ++i)
        syscall(SYS_getppid);
    memcpy(buffer_, bytes, size);
    same_ = same_ && plot_.has(heard_, text);
    heard_ += size;
    if (taken != nullptr) *taken = size;
    return kIOReturnSuccess;
}

IOReturn MemoryInterface::GetLocationID(uint32_t *location) {
    *location = kLocation;
    return kIOReturnSuccess;
}

class MemoryBus::Device final : public IOUSBDeviceInterface245 {
public:
    uint32_t Release() override { return 0; }
    IOReturn GetDeviceVendor(uint16_t *vendor) override { return give<uint16_t>(vendor, 0x0B75); }
    IOReturn GetDeviceProduct(uint16_t *product) override { return give<uint16_t>(product, 7); }
    IOReturn GetNumberOfConfigurations(uint8_t *count) override { return give<uint8_t>(count, 0); }
    IOReturn GetLocationID(uint32_t *location) override { return give(location, kLocation); }
    IOReturn USBDeviceOpen() override { return kIOReturnSuccess; }
    IOReturn USBDeviceClose() override { return kIOReturnSuccess; }
    IOReturn GetConfigurationDescriptorPtr(uint8_t, IOUSBConfigurationDescriptorPtr *) override {
        return kIOReturnUnsupported;
    }
    IOReturn SetConfiguration(uint8_t) override { return kIOReturnSuccess; }

private:
    template <class T> static IOReturn give(T *out, T value) {
        *out = value;
        return kIOReturnSuccess;
    }
};

class MemoryBus::PlugIn final : public IOCFPlugInInterface {
public:
    PlugIn(Device &device, MemoryInterface &interface) : device_(device), interface_(interface) {}
    int32_t QueryInterface(const UUIDBytes &id, IOUnknown **object) override {
        *object = id == kIOUSBInterfaceInterfaceID245 ? static_cast<IOUnknown *>(&interface_) : &device_;
        return 0;
    }

private:
    Device &device_;
    MemoryInterface &interface_;
};

MemoryBus::MemoryBus(MemoryInterface &interface)
    : before_(std::exchange(platform::backends().registry, this)), device_(new Device),
      plugIn_(new PlugIn(*device_, interface)) {}

MemoryBus::~MemoryBus() {
    platform::backends().registry = before_;
    delete plugIn_;
    delete device_;
}

IOReturn MemoryBus::masterPort(mach_port_t *port) {
    *port = 1;
    return kIOReturnSuccess;
}

bool MemoryBus::matching(const char *className, MatchingDictionary *dictionary) {
    (*dictionary)["class"] = className;
    return true;
}

IOReturn MemoryBus::matchingServices(mach_port_t, const MatchingDictionary &, io_object_t *iterator) {
    *iterator = 2;
    left_ = 1;
    return kIOReturnSuccess;
}

io_object_t MemoryBus::next(io_object_t) { return left_-- > 0 ? 3 : 0; }

CFTypeRef MemoryBus::createProperty(io_object_t, const char *) { return CFStringCreateWithUTF8("present"); }

IOReturn MemoryBus::createPlugIn(io_object_t, const UUIDBytes &, IOCFPlugInInterface **plugIn) {
    *plugIn = plugIn_;
    return kIOReturnSuccess;
}

} // namespace bench
