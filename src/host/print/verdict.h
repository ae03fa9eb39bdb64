// What a print came to: its exit code, and what to tell. The plug-in's error identifier is not enough for that: a call
// without an error may have left a part of the plot unsent. So its job report is weighed together with the examination of
// the file, what arrived, and whether the device is still there.
#pragma once

#include "host/devices/usb_devices.h"
#include "host/examination/examination.h"
#include "host/terminal/failure.h"
#include "host/terminal/manual.h"

#include <optional>
#include <orb/vectorix.h>
#include <string>
#include <vector>

namespace host {

/// A print that is over.
struct PrintOutcome {
    ORB_JobReport report;
    int32_t recordErrorID; ///< as the record came back
    bool stopped;          ///< by the user
    double seconds;
    std::string plotFile;
    std::string jobFile;     ///< empty when the command made one
    std::string destination; ///< the port, the USB plotter, or the capture file
    std::string terminator;
    int32_t emulation;
    std::optional<int64_t> arrivedBytes; ///< at the file, or at the plotter when it is one in software
    std::optional<UsbDevice> usb;        ///< when it went to one
    uint8_t usbOutPipe;                  ///< the pipe reference that the plug-in wrote to
    bool isGone;                         ///< the port or the plotter is not there any more
    PlotRules rules;
    Examination examination; ///< of the plot file before the job
    PlotChange change;       ///< of the plot file during the job
};

struct Verdict {
    ExitCode code = ExitCode::Done;
    std::string message;            ///< why it is not done; empty when it is
    std::vector<std::string> notes; ///< what is worth knowing all the same
};

/// True when the plug-in itself reports a failure. False does not mean that all of the plot was sent.
bool callFailed(const PrintOutcome &outcome);

/// True for the status of a piece behind which no other can arrive: the device is gone, or its pipe is none or is halted.
bool endsAnyJob(int32_t status);

/// True when less arrived than was sent.
bool isShort(const PrintOutcome &outcome);

Verdict judge(const PrintOutcome &outcome);

/// "sent 123 456 bytes in 2 034 pieces to /dev/ttyUSB0 in 128.6 s".
std::string summary(const PrintOutcome &outcome);

/// The report as a JSON object, on one line.
std::string json(const PrintOutcome &outcome, const Verdict &verdict);

/// The JSON object's fields.
std::vector<JsonFields> printFields();

/// A failure before there was a report, as a JSON object on one line.
std::string json(const Failure &failure);

} // namespace host
