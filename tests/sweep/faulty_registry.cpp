#include "sweep/faulty_registry.h"

#include "platform/posix/stop.h"

#include <algorithm>
#include <cstring>

namespace sweep {

namespace {

/// The Release of an object around another one.
template <typename Outer, typename Inner> uint32_t releaseBoth(const Surroundings &around, Outer *outer, Inner &inner) {
    const Step step(around.faults, "Release");
    inner.Release();
    delete outer;
    return 0;
}

class FaultyDevice final : public IOUSBDeviceInterface245 {
    using Inner = IOUSBDeviceInterface245;

public:
    FaultyDevice(const Surroundings &around, Inner &inner) : around_(around), inner_(inner) {}

    uint32_t Release() override { return releaseBoth(around_, this, inner_); }
    IOReturn GetDeviceVendor(uint16_t *vendor) override {
        return around_.passValue("GetDeviceVendor", inner_, &Inner::GetDeviceVendor, vendor);
    }
    IOReturn GetDeviceProduct(uint16_t *product) override {
        return around_.passValue("GetDeviceProduct", inner_, &Inner::GetDeviceProduct, product);
    }
    IOReturn GetNumberOfConfigurations(uint8_t *count) override {
        return around_.passValue("GetNumberOfConfigurations", inner_, &Inner::GetNumberOfConfigurations, count);
    }
    IOReturn GetLocationID(uint32_t *location) override {
        return around_.passValue("GetLocationID", inner_, &Inner::GetLocationID, location);
    }
    IOReturn USBDeviceOpen() override { return around_.pass("USBDeviceOpen", inner_, &Inner::USBDeviceOpen); }
    IOReturn USBDeviceClose() override { return around_.pass("USBDeviceClose", inner_, &Inner::USBDeviceClose); }
    IOReturn GetConfigurationDescriptorPtr(uint8_t index, IOUSBConfigurationDescriptorPtr *descriptor) override {
        const Step step(around_.faults, "GetConfigurationDescriptorPtr");
        if (step.fails()) return step.code<IOReturn>();
        const IOReturn result = inner_.GetConfigurationDescriptorPtr(index, descriptor);
        if (step.gives()) *descriptor = nullptr;
        return result;
    }
    IOReturn SetConfiguration(uint8_t value) override {
        return around_.pass("SetConfiguration", inner_, &Inner::SetConfiguration, value);
    }

private:
    const Surroundings around_;
    Inner &inner_;
};

class FaultyInterface final : public IOUSBInterfaceInterface245 {
    using Inner = IOUSBInterfaceInterface245;

public:
    FaultyInterface(const Surroundings &around, Inner &inner) : around_(around), inner_(inner) {}

    uint32_t Release() override { return releaseBoth(around_, this, inner_); }
    IOReturn USBInterfaceOpen() override { return around_.pass("USBInterfaceOpen", inner_, &Inner::USBInterfaceOpen); }
    IOReturn USBInterfaceClose() override { return around_.pass("USBInterfaceClose", inner_, &Inner::USBInterfaceClose); }
    IOReturn GetLocationID(uint32_t *location) override {
        return around_.passValue("GetLocationID", inner_, &Inner::GetLocationID, location);
    }
    IOReturn SetAlternateInterface(uint8_t setting) override {
        return around_.pass("SetAlternateInterface", inner_, &Inner::SetAlternateInterface, setting);
    }
    IOReturn GetNumEndpoints(uint8_t *count) override {
        return around_.passValue("GetNumEndpoints", inner_, &Inner::GetNumEndpoints, count);
    }
    IOReturn GetPipeProperties(uint8_t pipe, uint8_t *direction, uint8_t *number, uint8_t *transferType,
                               uint16_t *maxPacketSize, uint8_t *interval) override {
        return around_.pass("GetPipeProperties", inner_, &Inner::GetPipeProperties, pipe, direction, number, transferType,
                            maxPacketSize, interval);
    }
    IOReturn GetPipeStatus(uint8_t pipe) override {
        return around_.pass("GetPipeStatus", inner_, &Inner::GetPipeStatus, pipe);
    }
    IOReturn ClearPipeStallBothEnds(uint8_t pipe) override {
        return around_.pass("ClearPipeStallBothEnds", inner_, &Inner::ClearPipeStallBothEnds, pipe);
    }
    IOReturn WritePipe(uint8_t pipe, const void *bytes, uint32_t size, uint32_t *taken) override;
    IOReturn ReadPipe(uint8_t pipe, void *buffer, uint32_t *size) override;

private:
    /// What a transfer meets: a fault, or a stop that came before it.
    static IOReturn failureOf(const Step &step) {
        if (step.fails()) return step.code<IOReturn>();
        return platform::stopRequested() && !step.stops() ? kIOReturnAborted : kIOReturnSuccess;
    }

    const Surroundings around_;
    Inner &inner_;
};

IOReturn FaultyInterface::WritePipe(uint8_t pipe, const void *bytes, uint32_t size, uint32_t *taken) {
    const Step step(around_.faults, "WritePipe");
    uint32_t count = 0;
    IOReturn result = failureOf(step);
    if (result == kIOReturnSuccess) {
        result = inner_.WritePipe(pipe, bytes, step.failsAfter() ? size / 2 : size, &count);
        if (step.failsAfter()) result = step.code<IOReturn>();
    }
    if (taken != nullptr) *taken = count;
    around_.ledger.wrote(size, count, result == kIOReturnSuccess);
    return result;
}

IOReturn FaultyInterface::ReadPipe(uint8_t pipe, void *buffer, uint32_t *size) {
    const Step step(around_.faults, "ReadPipe");
    ++around_.ledger.reads;
    if (const IOReturn failure = failureOf(step); failure != kIOReturnSuccess) return failure;
    const uint32_t room = *size;
    const IOReturn result = inner_.ReadPipe(pipe, buffer, size);
    if (step.gives()) {
        const uint32_t real = result == kIOReturnSuccess ? *size : 0;
        *size = std::min(step.code<uint32_t>(), room);
        if (*size > real) memset(static_cast<char *>(buffer) + real, ';', *size - real);
    } else if (result != kIOReturnSuccess) {
        return result;
    }
    if (*size != 0) around_.ledger.reply.assign(static_cast<const char *>(buffer), *size);
    return kIOReturnSuccess;
}

class FaultyPlugIn final : public IOCFPlugInInterface {
public:
    FaultyPlugIn(const Surroundings &around, IOCFPlugInInterface &wrapped) : inner(wrapped), around_(around) {}

    int32_t QueryInterface(const UUIDBytes &id, IOUnknown **interface) override {
        const Step step(around_.faults, "QueryInterface");
        if (step.fails()) return step.code<int32_t>();
        if (step.gives()) return kIOReturnSuccess; // and no interface
        IOUnknown *made = nullptr;
        const int32_t result = inner.QueryInterface(id, &made);
        if (result != kIOReturnSuccess) return result;
        if (id == kIOUSBInterfaceInterfaceID245) {
            *interface = new FaultyInterface(around_, static_cast<IOUSBInterfaceInterface245 &>(*made));
        } else {
            *interface = new FaultyDevice(around_, static_cast<IOUSBDeviceInterface245 &>(*made));
        }
        return step.failsAfter() ? step.code<int32_t>() : result;
    }

    IOCFPlugInInterface &inner;

private:
    const Surroundings around_;
};

} // namespace

CFTypeRef FaultyRegistry::createProperty(io_object_t service, const char *key) {
    const Step step(around_.faults, "IORegistryEntryCreateCFProperty");
    if (step.fails()) return 0;
    if (!step.gives()) return inner_.createProperty(service, key);
    const auto length = step.code<size_t>();
    return length == 0 ? CFNumberCreateInt64(0) : CFStringCreateWithUTF8(std::string(length, 'x'));
}

IOReturn FaultyRegistry::createPlugIn(io_object_t service, const UUIDBytes &type, IOCFPlugInInterface **plugIn) {
    const Step step(around_.faults, "IOCreatePlugIn");
    if (step.fails()) return step.code<IOReturn>();
    if (step.gives()) return kIOReturnSuccess; // and no plug-in
    IOCFPlugInInterface *made = nullptr;
    const IOReturn result = inner_.createPlugIn(service, type, &made);
    if (result != kIOReturnSuccess) return result;
    *plugIn = new FaultyPlugIn(around_, *made);
    return step.failsAfter() ? step.code<IOReturn>() : result;
}

IOReturn FaultyRegistry::destroyPlugIn(IOCFPlugInInterface *plugIn) {
    const Step step(around_.faults, "IODestroyPlugIn");
    auto *outer = static_cast<FaultyPlugIn *>(plugIn);
    const IOReturn result = inner_.destroyPlugIn(&outer->inner);
    delete outer;
    return step.failsAfter() ? step.code<IOReturn>() : result;
}

} // namespace sweep
