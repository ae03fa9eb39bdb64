// A print's target, taken: a serial port, a USB plotter, a file, or a plotter in software. The four differ in what must be
// held during the job and in what is known after it; the print asks for it here. To the plug-in a file and a plotter in
// software are serial ports.
#pragma once

#include "host/files/unique_fd.h"
#include "host/obstacles/port_lock.h"
#include "host/plugin/progress.h"
#include "host/print/capture.h"
#include "host/print/plan.h"
#include "host/print/verdict.h"
#include "host/print/virtual_line.h"

#include <optional>
#include <string>

namespace host {

/// Looks at a target as a print would, and leaves it as it is. Throws Failure when it could not be taken.
void requireFree(const Target &target);

/// Once made, the target is there, the user may write to it, and nobody else has it; it stays ours until the end.
class Destination {
public:
    /// target must outlive it. Throws Failure.
    explicit Destination(const Target &target);

    /// The serial port to be printed to; for a USB plotter empty.
    const std::string &port() const;
    /// Where the progress of a job can be seen.
    WatchedLine line() const;

    /// The port or the plotter is not there any more.
    bool isGone() const;
    /// After the call: the report learns what became of the device, and what arrived at a file or a plotter in software.
    void settle(PrintReport &report);
    /// What a plotter in software found in what arrived.
    void addNotes(Verdict &verdict) const;
    /// Completes the file or the picture. Throws Failure when it could not be written.
    void finish();

private:
    const Target &target_;
    std::optional<PortLock> lock_;
    UniqueFd usbLock_;
    std::optional<VirtualLine> plotter_;
    std::optional<Capture> capture_;
};

} // namespace host
