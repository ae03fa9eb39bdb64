#include "host/print/usb_verdict.h"

#include "host/devices/usb_access.h"
#include "host/terminal/text.h"

#include <algorithm>
#include <fmt/format.h>

namespace host {

namespace {

// IOKit's published codes.
enum : uint32_t {
    kNoError = 0,
    kNoDevice = 0xE00002C0,
    kExclusiveAccess = 0xE00002C5,
    kIOError = 0xE00002CA,
    kNotWritable = 0xE00002CF,
    kNotAttached = 0xE00002D9,
    kNotPermitted = 0xE00002E2,
    kAborted = 0xE00002EB,
    kNotResponding = 0xE00002ED,
    kPipeStalled = 0xE000404F,
    kUnknownPipe = 0xE0004061
};

struct Row {
    uint32_t code;
    ExitCode exitCode;
    const char *text; ///< {0} the out pipe
};

constexpr Row kByStatus[] = {
    {kNoDevice, ExitCode::Lost, "the plotter is gone; check cable and power, then try again"},
    {kNotAttached, ExitCode::Lost, "the plotter is gone; check cable and power, then try again"},
    {kExclusiveAccess, ExitCode::Busy,
     "busy: another program has claimed it; wait until it is done, or end it ('vectorix plotters' shows who it is)"},
    {kUnknownPipe, ExitCode::Failed, "the out pipe {0} of this plotter is not an out endpoint; it cannot be used over USB"},
    {kNotWritable, ExitCode::Failed, "the out pipe {0} of this plotter is not an out endpoint; it cannot be used over USB"},
    {kPipeStalled, ExitCode::Failed,
     "the plotter refuses what it is sent and has halted its pipe, which the next print clears: try again, and if that does "
     "not help, switch it off and on"},
    {kIOError, ExitCode::Failed, "a transfer failed; check the cable, then try again"},
    {kNotResponding, ExitCode::Lost, "the plotter does not answer; switch it off and on, then try again"},
    {kAborted, ExitCode::Failed, "the transfer was broken off; try again"},
};

constexpr Row kByIdentifier[] = {
    {kORB_ErrorPlotterGone, ExitCode::Lost, "the plotter is gone; check cable and power, then try again"},
    {kORB_ErrorNoPlotter, ExitCode::Missing, "no such plotter any more; check cable and power, then try again"},
    {kORB_ErrorInterfaceNotFound, ExitCode::Failed, "the plotter shows no interface; switch it off and on, then try again"},
    {kORB_ErrorDeviceNotOpened, ExitCode::Failed, "the plotter cannot be opened; plug it in again, then try again"},
};

template <size_t N> const Row *find(const Row (&rows)[N], uint32_t code) {
    const Row *row = std::find_if(std::begin(rows), std::end(rows), [&](const Row &r) { return r.code == code; });
    return row == std::end(rows) ? nullptr : row;
}

} // namespace

bool endsAnyUsbJob(int32_t status) {
    constexpr uint32_t kEnds[] = {kNoDevice, kNotAttached, kPipeStalled, kUnknownPipe, kNotWritable};
    return std::find(std::begin(kEnds), std::end(kEnds), static_cast<uint32_t>(status)) != std::end(kEnds);
}

UsbFault explainUsb(const UsbDevice &usb, bool isGone, int32_t errorID, int32_t ioStatus, uint8_t outPipe) {
    // Once the plotter is gone, that explains whatever else was reported.
    uint32_t status = isGone ? uint32_t{kNoDevice} : static_cast<uint32_t>(ioStatus);
    if (status == kNotPermitted) return {ExitCode::Permission, "permission denied; " + permissionRemedy(usb)};
    const Row *row = find(kByStatus, status);
    if (!row) row = find(kByIdentifier, static_cast<uint32_t>(errorID));
    if (row) return {row->exitCode, fmt::format(fmt::runtime(row->text), outPipe)};
    return {ExitCode::Failed, errorText(errorID) + (status == kNoError ? "" : fmt::format(" (code 0x{:08X})", status))};
}

Verdict judgeUsbLink(const PrintPlan &plan, const PrintReport &report) {
    const ORB_JobReport &job = report.job;
    int32_t errorID = job.firstErrorID != kORB_NoError ? job.firstErrorID : report.recordErrorID;
    int32_t status = endsAnyUsbJob(job.lastStatus) ? job.lastStatus : job.firstStatus; // by what it ended with
    UsbFault fault = explainUsb(*plan.target.usb, report.isGone, errorID, status, report.usbOutPipe);
    std::string sent = job.sentBytes == 0
                           ? "sent nothing"
                           : fmt::format("sent {} of {}", grouped(job.sentBytes), counted(job.fileBytes, "byte"));
    return {fault.code, fmt::format("{}: {}; {}", shown(plan.target.name()), sent, fault.text), {}};
}

} // namespace host
