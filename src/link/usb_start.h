// What an emulation wants to hear first over USB, ahead of a print and of a query alike.
//
// Both send the same texts in the same way, but hosts know the two by their console lines, and only a print has a report:
// what is shown and kept on the way is the caller's.
#pragma once

#include "platform/iokit/io_return.h"

#include <cstdint>

namespace plot {

/// A caller's part in the start.
struct UsbStartSteps {
    const char *service;                                     ///< "S18", in the line on a text that was not sent
    const char *reset;                                       ///< the reset, in the line that it could not be written
    void (*beforeReset)() = [] {};                           ///< the text is in the buffer
    void (*afterReset)(IOReturn result) = [](IOReturn) {};   ///< ahead of that line
    void (*afterResetLine)(int32_t status) = [](int32_t) {}; ///< 0, or what ORB_logIOError made of the result
    void (*afterFailure)(int32_t status) = [](int32_t) {};   ///< of any write; ORB_errorID tells which
};

/// Sends what ORB_PlotterEmulationID wants to hear first, if anything. A failed write does not end the start; that of a
/// reset is put into *status. False when the text does not convert.
bool sendUsbStart(const UsbStartSteps &steps, int32_t *status);

} // namespace plot
