#include "platform/posix/stop.h"
#include "stand_in/registry.h"

#include <algorithm>
#include <cstring>

namespace stand_in {

namespace {

/// A device or an interface, as which it was asked for.
class Object final : public IOUSBDeviceInterface245, public IOUSBInterfaceInterface245 {
public:
    Object(Registry &registry, const UsbDevice &device, bool isDevice)
        : registry_(registry), device_(device), isDevice_(isDevice) {}

    uint32_t Release() override {
        const Step step(Seam::Other, "Release");
        if (open_ && isDevice_) fate().misuse("a device was released open");
        if (open_ && !isDevice_) fate().log.push_back("released open");
        --registry_.outstanding;
        delete this;
        return 0;
    }
    IOReturn GetLocationID(uint32_t *location) override { return store("GetLocationID", location, device_.location); }
    IOReturn GetDeviceVendor(uint16_t *vendor) override { return store("GetDeviceVendor", vendor, device_.vendor); }
    IOReturn GetDeviceProduct(uint16_t *product) override { return store("GetDeviceProduct", product, device_.product); }
    IOReturn GetNumberOfConfigurations(uint8_t *count) override {
        return store("GetNumberOfConfigurations", count, static_cast<uint8_t>(device_.configurations.size()));
    }
    IOReturn USBDeviceOpen() override { return change("USBDeviceOpen", true); }
    IOReturn USBDeviceClose() override { return change("USBDeviceClose", false); }
    IOReturn GetConfigurationDescriptorPtr(uint8_t index, IOUSBConfigurationDescriptorPtr *descriptor) override {
        const Step step = begin("GetConfigurationDescriptorPtr");
        step.log(index);
        descriptor_.bConfigurationValue = device_.configurations.at(index);
        if (!step.fails()) *descriptor = step.gives() ? nullptr : &descriptor_;
        return step.result<IOReturn>();
    }
    IOReturn SetConfiguration(uint8_t value) override { return set("SetConfiguration", value); }

    IOReturn USBInterfaceOpen() override { return change("USBInterfaceOpen", true); }
    IOReturn USBInterfaceClose() override { return change("USBInterfaceClose", false); }
    IOReturn SetAlternateInterface(uint8_t setting) override {
        const IOReturn result = set("SetAlternateInterface", setting);
        return open_ ? result : kIOReturnNotOpen;
    }
    IOReturn GetNumEndpoints(uint8_t *count) override {
        return store("GetNumEndpoints", count, static_cast<uint8_t>(registry_.endpoints.size()));
    }
    IOReturn GetPipeProperties(uint8_t pipe, uint8_t *direction, uint8_t *number, uint8_t *transferType,
                               uint16_t *maxPacketSize, uint8_t *) override {
        const IOReturn result = onPipe(pipe, begin("GetPipeProperties").result<IOReturn>());
        if (result != kIOReturnSuccess) return result;
        const Endpoint &endpoint = registry_.endpoints[pipe - 1U];
        *direction = endpoint.direction;
        *number = endpoint.number;
        *transferType = endpoint.transferType;
        *maxPacketSize = 64;
        return kIOReturnSuccess;
    }
    IOReturn GetPipeStatus(uint8_t pipe) override { return onPipe(pipe, set("GetPipeStatus", pipe)); }
    IOReturn ClearPipeStallBothEnds(uint8_t pipe) override { return onPipe(pipe, set("ClearPipeStallBothEnds", pipe)); }
    IOReturn WritePipe(uint8_t pipe, const void *bytes, uint32_t size, uint32_t *taken) override {
        const bool stopped = platform::stopRequested();
        const Step step = begin("WritePipe");
        const std::string_view text(static_cast<const char *>(bytes), size);
        if (fate().keepsLog) step.log(pipe, quoted(text));
        if (registry_.onWrite) registry_.onWrite(text);
        const IOReturn result = onTransfer(pipe, step, stopped);
        const bool isHalf = open_ && !stopped && step.failsAfter();
        const uint32_t count = result == kIOReturnSuccess ? size : isHalf ? (size + 1) / 2 : 0;
        registry_.written += text.substr(0, count);
        if (taken != nullptr) *taken = count;
        fate().wrote(size, count, result == kIOReturnSuccess);
        return result;
    }
    IOReturn ReadPipe(uint8_t pipe, void *buffer, uint32_t *size) override {
        const bool stopped = platform::stopRequested();
        const Step step = begin("ReadPipe");
        step.log(pipe);
        if (const IOReturn result = onTransfer(pipe, step, stopped); result != kIOReturnSuccess) return result;
        if (registry_.replies.empty() && !step.gives()) return kIOReturnNotResponding;
        const uint32_t room = step.gives() ? std::min(step.code<uint32_t>(), *size) : *size;
        *size = static_cast<uint32_t>(registry_.say(buffer, room));
        if (step.gives() && *size < room) { // all that it is to give
            memset(static_cast<char *>(buffer) + *size, ';', room - *size);
            registry_.said.assign(static_cast<const char *>(buffer), *size = room);
        }
        return kIOReturnSuccess;
    }

private:
    static Step begin(const char *call) { return {Seam::Registry, call}; }
    template <typename T> static IOReturn store(const char *call, T *out, T value) {
        return begin(call).store<IOReturn>(out, value);
    }
    static IOReturn set(const char *call, uint8_t value) {
        const Step step = begin(call);
        step.log(value);
        return step.result<IOReturn>();
    }
    IOReturn change(const char *call, bool opens) {
        const Step step = begin(call);
        step.log();
        open_ = opens && (open_ || !step.fails());
        return step.result<IOReturn>();
    }
    IOReturn onPipe(uint8_t pipe, IOReturn result) const {
        if (!open_) return kIOReturnNotOpen;
        return pipe == 0 || pipe > registry_.endpoints.size() ? IOReturn{kIOUSBUnknownPipeErr} : result;
    }
    /// The result of a transfer, which a stop that was requested before it began aborts.
    IOReturn onTransfer(uint8_t pipe, const Step &step, bool stopped) const {
        const IOReturn result = onPipe(pipe, step.result<IOReturn>());
        return stopped && result == kIOReturnSuccess ? kIOReturnAborted : result;
    }

    Registry &registry_;
    const UsbDevice &device_;
    const bool isDevice_;
    IOUSBConfigurationDescriptor descriptor_ = {};
    bool open_ = false;
};

struct PlugIn final : IOCFPlugInInterface {
    PlugIn(Registry &registry, const UsbDevice &device) : registry_(registry), device_(device) {}

    int32_t QueryInterface(const UUIDBytes &id, IOUnknown **interface) override {
        return registry_.handOut("QueryInterface", [&] {
            const bool isDevice = id != kIOUSBInterfaceInterfaceID245;
            if (isDevice) fate().log.push_back(id == kIOUSBDeviceInterfaceID245 ? "device 245" : "device");
            auto *made = new Object(registry_, device_, isDevice);
            *interface = static_cast<IOUSBInterfaceInterface245 *>(made);
            if (isDevice) *interface = static_cast<IOUSBDeviceInterface245 *>(made);
        });
    }

    Registry &registry_;
    const UsbDevice &device_;
};

} // namespace

IOCFPlugInInterface *makePlugIn(Registry &registry, const UsbDevice &device) { return new PlugIn(registry, device); }

} // namespace stand_in
