// The codes of libusb and of the system as IOKit's, translated here and nowhere else: what the plug-in prints and returns
// depends on them.
#pragma once

#include "platform/iokit/io_return.h"

#include <exception>
#include <libusb-1.0/libusb.h>

namespace platform {

/// Of what a libusb call returned; success for 0 and above.
IOReturn codeOfUsb(int result) noexcept;
IOReturn codeOfTransfer(libusb_transfer_status status) noexcept;
IOReturn codeOfErrno(int error) noexcept;

/// Runs a call that returns a code; memory that runs out in it becomes a code as well.
template <typename Call> IOReturn guarded(Call call) noexcept {
    try {
        return call();
    } catch (const std::exception &) { // of the containers: no memory, or longer than any memory
        return kIOReturnNoMemory;
    }
}

} // namespace platform
