// What a failed call on a USB plotter came to, in words and with a remedy. Prints and queries for limits fail alike on USB,
// with IOKit's codes, so that both explain them from these tables.
#pragma once

#include "host/print/verdict.h"

namespace host {

struct UsbFault {
    ExitCode code;
    std::string text; ///< what happened, and the remedy
};

/// True for the IOKit status of a piece behind which no other can arrive.
bool endsAnyUsbJob(int32_t status);

/// Explains a failure by the call's error identifier and IOKit status. isGone: the plotter is not there any more, which is
/// then the explanation. outPipe is named where the pipe is at fault.
UsbFault explainUsb(const UsbDevice &usb, bool isGone, int32_t errorID, int32_t ioStatus, uint8_t outPipe);

/// The verdict on a print to a USB plotter whose report has a failure of the link.
Verdict judgeUsbLink(const PrintPlan &plan, const PrintReport &report);

} // namespace host
