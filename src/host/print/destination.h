// Where a print goes: a serial port, a USB plotter, a file, or a plotter in software. The four differ in what must be
// checked and held before the job and in what is known after it; the print asks for it here. To the plug-in a file
// and a plotter in software are serial ports.
#pragma once

#include "host/devices/port_lock.h"
#include "host/devices/usb_devices.h"
#include "host/plugin/progress.h"
#include "host/print/capture.h"
#include "host/print/print.h"
#include "host/print/verdict.h"
#include "host/print/virtual_line.h"

#include <optional>
#include <string>

namespace host {

/// Throws Failure (usage) when the file that an option names is one that the print reads.
void requireOutput(const char *option, const std::string &file, const PrintOptions &options);

/// Once made, the destination is there, the user may write to it, and nobody else has it; it stays ours until the end.
class Destination {
public:
    /// Throws Failure.
    explicit Destination(const PrintOptions &options);

    /// The serial port to be printed to; for a USB plotter empty.
    const std::string &port() const;
    const std::optional<UsbDevice> &usb() const { return usb_; }
    /// As people call it: the port, the plotter's identifier, or the file.
    std::string name() const;
    /// Where the progress of a job can be seen.
    WatchedLine line() const;

    /// After the call: the outcome learns what became of the device, and what arrived at a file or a plotter in software.
    void settle(PrintOutcome &outcome);
    /// What a plotter in software found in what arrived.
    void addNotes(Verdict &verdict) const;
    /// Completes the file or the picture. Throws Failure when it could not be written.
    void finish();

private:
    const PrintOptions &options_;
    std::optional<UsbDevice> usb_;
    std::optional<PortLock> lock_;
    std::optional<VirtualLine> plotter_;
    std::optional<Capture> capture_;
};

} // namespace host
