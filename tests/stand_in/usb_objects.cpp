#include "stand_in/usb_objects.h"

#include "platform/posix/stop.h"

#include <algorithm>
#include <cstring>

namespace stand_in {

namespace {

class Device final : public IOUSBDeviceInterface245 {
public:
    Device(Registry &registry, const UsbDevice &device) : registry_(registry), device_(device) {}

    uint32_t Release() override {
        const Step step = begin("Release");
        if (open_) registry_.fate.misuse("a device was released open");
        --registry_.outstanding;
        delete this;
        return 0;
    }
    IOReturn GetDeviceVendor(uint16_t *vendor) override { return store("GetDeviceVendor", vendor, device_.vendor); }
    IOReturn GetDeviceProduct(uint16_t *product) override { return store("GetDeviceProduct", product, device_.product); }
    IOReturn GetNumberOfConfigurations(uint8_t *count) override {
        return store("GetNumberOfConfigurations", count, static_cast<uint8_t>(device_.configurations.size()));
    }
    IOReturn GetLocationID(uint32_t *location) override { return store("GetLocationID", location, device_.location); }
    IOReturn USBDeviceOpen() override {
        const Step step = begin("USBDeviceOpen");
        step.log();
        open_ = !step.fails();
        return step.result<IOReturn>();
    }
    IOReturn USBDeviceClose() override {
        const Step step = begin("USBDeviceClose");
        step.log();
        open_ = false;
        return step.result<IOReturn>();
    }
    IOReturn GetConfigurationDescriptorPtr(uint8_t index, IOUSBConfigurationDescriptorPtr *descriptor) override {
        const Step step = begin("GetConfigurationDescriptorPtr");
        step.log(index);
        if (step.fails()) return step.code<IOReturn>();
        descriptor_.bConfigurationValue = device_.configurations.at(index);
        *descriptor = step.gives() ? nullptr : &descriptor_;
        return kIOReturnSuccess;
    }
    IOReturn SetConfiguration(uint8_t value) override {
        const Step step = begin("SetConfiguration");
        step.log(value);
        return step.result<IOReturn>();
    }

private:
    Step begin(const char *call) { return {registry_.fate, Seam::registry, call}; }
    template <typename T> IOReturn store(const char *call, T *out, T value) {
        return begin(call).store<IOReturn>(out, value);
    }

    Registry &registry_;
    const UsbDevice &device_;
    IOUSBConfigurationDescriptor descriptor_ = {};
    bool open_ = false;
};

class Interface final : public IOUSBInterfaceInterface245 {
public:
    Interface(Registry &registry, uint32_t location) : registry_(registry), location_(location) {}

    uint32_t Release() override {
        const Step step = begin("Release");
        if (open_) registry_.fate.log.push_back("released open");
        --registry_.outstanding;
        delete this;
        return 0;
    }
    IOReturn USBInterfaceOpen() override {
        const Step step = begin("USBInterfaceOpen");
        step.log();
        open_ |= !step.fails();
        return step.result<IOReturn>();
    }
    IOReturn USBInterfaceClose() override {
        const Step step = begin("USBInterfaceClose");
        step.log();
        open_ = false;
        return step.result<IOReturn>();
    }
    IOReturn GetLocationID(uint32_t *location) override {
        return begin("GetLocationID").store<IOReturn>(location, location_);
    }
    IOReturn SetAlternateInterface(uint8_t setting) override {
        const Step step = begin("SetAlternateInterface");
        step.log(setting);
        return open_ ? step.result<IOReturn>() : kIOReturnNotOpen;
    }
    IOReturn GetNumEndpoints(uint8_t *count) override {
        return begin("GetNumEndpoints").store<IOReturn>(count, static_cast<uint8_t>(registry_.endpoints.size()));
    }
    IOReturn GetPipeProperties(uint8_t pipe, uint8_t *direction, uint8_t *number, uint8_t *transferType,
                               uint16_t *maxPacketSize, uint8_t *interval) override {
        const Step step = begin("GetPipeProperties");
        if (const IOReturn result = onPipe(step, pipe); result != kIOReturnSuccess) return result;
        const Endpoint &endpoint = registry_.endpoints[pipe - 1U];
        *direction = endpoint.direction;
        *number = endpoint.number;
        *transferType = endpoint.transferType;
        *maxPacketSize = 64;
        *interval = 0;
        return kIOReturnSuccess;
    }
    IOReturn GetPipeStatus(uint8_t pipe) override {
        const Step step = begin("GetPipeStatus");
        step.log(pipe);
        return onPipe(step, pipe);
    }
    IOReturn ClearPipeStallBothEnds(uint8_t pipe) override {
        const Step step = begin("ClearPipeStallBothEnds");
        step.log(pipe);
        return onPipe(step, pipe);
    }
    IOReturn WritePipe(uint8_t pipe, const void *bytes, uint32_t size, uint32_t *taken) override;
    IOReturn ReadPipe(uint8_t pipe, void *buffer, uint32_t *size) override;

private:
    Step begin(const char *call) { return {registry_.fate, Seam::registry, call}; }

    IOReturn onPipe(const Step &step, uint8_t pipe) const {
        if (!open_) return kIOReturnNotOpen;
        return pipe == 0 || pipe > registry_.endpoints.size() ? IOReturn{kIOUSBUnknownPipeErr} : step.result<IOReturn>();
    }
    /// The result of a transfer. stopped: a stop was requested before it began.
    IOReturn onTransfer(const Step &step, uint8_t pipe, bool stopped) const {
        const IOReturn result = onPipe(step, pipe);
        return stopped && result == kIOReturnSuccess ? kIOReturnAborted : result;
    }

    Registry &registry_;
    const uint32_t location_;
    bool open_ = false;
};

IOReturn Interface::WritePipe(uint8_t pipe, const void *bytes, uint32_t size, uint32_t *taken) {
    const bool stopped = platform::stopRequested();
    const Step step = begin("WritePipe");
    const std::string_view text(static_cast<const char *>(bytes), size);
    step.log(pipe, Quoted{text});
    if (registry_.onWrite) registry_.onWrite(text);
    const IOReturn result = onTransfer(step, pipe, stopped);
    const uint32_t count = result == kIOReturnSuccess ? size : open_ && !stopped && step.failsAfter() ? (size + 1) / 2 : 0;
    registry_.written += text.substr(0, count);
    if (taken != nullptr) *taken = count;
    registry_.fate.wrote(size, count, result == kIOReturnSuccess);
    return result;
}

IOReturn Interface::ReadPipe(uint8_t pipe, void *buffer, uint32_t *size) {
    const bool stopped = platform::stopRequested();
    const Step step = begin("ReadPipe");
    step.log(pipe);
    if (const IOReturn result = onTransfer(step, pipe, stopped); result != kIOReturnSuccess) return result;
    if (registry_.replies.empty() && !step.gives()) return kIOReturnNotResponding;
    const uint32_t room = *size;
    *size = registry_.replies.empty() ? 0 : static_cast<uint32_t>(registry_.say(buffer, room));
    if (step.gives()) {
        const uint32_t said = std::min(step.code<uint32_t>(), room);
        if (said > *size) memset(static_cast<char *>(buffer) + *size, ';', said - *size);
        *size = said;
    }
    registry_.fate.said({static_cast<const char *>(buffer), *size});
    return kIOReturnSuccess;
}

} // namespace

int32_t PlugIn::QueryInterface(const UUIDBytes &id, IOUnknown **interface) {
    const Step step(registry_.fate, Seam::registry, "QueryInterface");
    if (step.fails()) return step.code<int32_t>();
    if (step.gives()) return kIOReturnSuccess; // but hands out no interface
    if (id == kIOUSBInterfaceInterfaceID245) {
        *interface = new Interface(registry_, device_.location);
    } else {
        if (registry_.fate.keepsLog)
            registry_.fate.log.push_back(id == kIOUSBDeviceInterfaceID245 ? "device 245" : "device");
        *interface = new Device(registry_, device_);
    }
    ++registry_.outstanding;
    return step.result<int32_t>();
}

} // namespace stand_in
