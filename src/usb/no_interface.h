// What a call on the plotter's interface meets when there is none: so that callers need no case for it, and report it as
// they do any failed call.
#pragma once

#include "platform/iokit/usb_interfaces.h"

namespace usb {

/// Answers kIOReturnNotOpen to everything.
class NoInterface final : public IOUSBInterfaceInterface245 {
public:
    uint32_t Release() override { return 0; }
    IOReturn USBInterfaceOpen() override { return kIOReturnNotOpen; }
    IOReturn USBInterfaceClose() override { return kIOReturnNotOpen; }
    IOReturn GetLocationID(uint32_t *) override { return kIOReturnNotOpen; }
    IOReturn SetAlternateInterface(uint8_t) override { return kIOReturnNotOpen; }
    IOReturn GetNumEndpoints(uint8_t *) override { return kIOReturnNotOpen; }
    IOReturn GetPipeProperties(uint8_t, uint8_t *, uint8_t *, uint8_t *, uint16_t *, uint8_t *) override {
        return kIOReturnNotOpen;
    }
    IOReturn GetPipeStatus(uint8_t) override { return kIOReturnNotOpen; }
    IOReturn ClearPipeStallBothEnds(uint8_t) override { return kIOReturnNotOpen; }
    IOReturn WritePipe(uint8_t, const void *, uint32_t, uint32_t *taken) override {
        if (taken) *taken = 0;
        return kIOReturnNotOpen;
    }
    IOReturn ReadPipe(uint8_t, void *, uint32_t *) override { return kIOReturnNotOpen; }
};

} // namespace usb
