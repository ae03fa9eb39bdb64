// What a failed call on a USB plotter came to.
#pragma once

#include "host/print/verdict.h"

namespace host {

struct UsbFault {
    ExitCode code;
    std::string text; ///< what happened, and the remedy
};

/// True for the IOKit status of a piece behind which no other can arrive.
bool endsAnyUsbJob(int32_t status);

/// By a call's identifier and its IOKit status; isGone says that the plotter is not there any more.
UsbFault explainUsb(const UsbDevice &usb, bool isGone, int32_t errorID, int32_t ioStatus, uint8_t outPipe);

/// For a report with a failure of the link, in an outcome whose usb is set.
Verdict judgeUsbLink(const PrintOutcome &outcome);

} // namespace host
