// A USB bus in memory with one plotter on it.
#pragma once

#include "platform/iokit/registry.h"
#include "plots.h"

#include <cstdint>
#include <string_view>

namespace bench {

/// The plotter's interface. Takes what it is sent and compares it with the plot.
class MemoryInterface final : public IOUSBInterfaceInterface245 {
public:
    /// systemCalls: how many each transfer makes, as cheap ones as there are.
    MemoryInterface(const Plot &plot, int systemCalls) : plot_(plot), systemCalls_(systemCalls) {}

    void begin() {
        heard_ = 0;
        same_ = true;
    }
    bool heardPlot() const { return heard_ == plot_.size() && same_; }

    IOReturn WritePipe(uint8_t pipe, const void *bytes, uint32_t size, uint32_t *taken) override;
    uint32_t Release() override { return 0; }
    IOReturn USBInterfaceOpen() override { return kIOReturnSuccess; }
    IOReturn USBInterfaceClose() override { return kIOReturnSuccess; }
    IOReturn GetLocationID(uint32_t *location) override;
    IOReturn SetAlternateInterface(uint8_t) override { return kIOReturnSuccess; }
    IOReturn GetNumEndpoints(uint8_t *) override { return kIOReturnUnsupported; }
    IOReturn GetPipeProperties(uint8_t, uint8_t *, uint8_t *, uint8_t *, uint16_t *, uint8_t *) override {
        return kIOReturnUnsupported;
    }
    IOReturn GetPipeStatus(uint8_t) override { return kIOReturnSuccess; }
    IOReturn ClearPipeStallBothEnds(uint8_t) override { return kIOReturnSuccess; }
    IOReturn ReadPipe(uint8_t, void *, uint32_t *) override { return kIOReturnNotResponding; }

private:
    const Plot &plot_;
    int systemCalls_;
    char buffer_[512];
    int64_t heard_ = 0;
    bool same_ = true;
};

/// The registry in use while it lives; it knows one plotter, 0B75:0007, and its interface.
class MemoryBus final : public platform::IORegistry {
public:
    explicit MemoryBus(MemoryInterface &interface);
    MemoryBus(const MemoryBus &) = delete;
    MemoryBus &operator=(const MemoryBus &) = delete;
    ~MemoryBus() override;

    IOReturn masterPort(mach_port_t *port) override;
    IOReturn deallocatePort(mach_port_t) override { return kIOReturnSuccess; }
    bool matching(const char *className, MatchingDictionary *dictionary) override;
    IOReturn matchingServices(mach_port_t port, const MatchingDictionary &dictionary, io_object_t *iterator) override;
    io_object_t next(io_object_t iterator) override;
    IOReturn release(io_object_t) override { return kIOReturnSuccess; }
    CFTypeRef createProperty(io_object_t service, const char *key) override;
    IOReturn createPlugIn(io_object_t service, const UUIDBytes &type, IOCFPlugInInterface **plugIn) override;
    IOReturn destroyPlugIn(IOCFPlugInInterface *) override { return kIOReturnSuccess; }

private:
    class Device;
    class PlugIn;
    platform::IORegistry *before_;
    Device *device_;
    PlugIn *plugIn_;
    int left_ = 0; // services that the search has not given yet
};

} // namespace bench
