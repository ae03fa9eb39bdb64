#include "host/print/usb_verdict.h"

#include "host/obstacles/usb_obstacles.h"
#include "host/terminal/text.h"

#include <algorithm>
#include <fmt/format.h>

namespace host {

namespace {

struct Row {
    int32_t code;
    ExitCode exitCode;
    const char *text; ///< {0} the out pipe
};

constexpr Row kByStatus[] = {
    {kORB_USBNoDevice, ExitCode::Lost, "the plotter is gone; check cable and power, then try again"},
    {kORB_USBNotAttached, ExitCode::Lost, "the plotter is gone; check cable and power, then try again"},
    {kORB_USBExclusiveAccess, ExitCode::Busy,
     "busy: another program has claimed it; wait until it is done, or end it ('vectorix plotters' shows who it is)"},
    {kORB_USBUnknownPipe, ExitCode::Failed,
     "the out pipe {0} of this plotter is not an out endpoint; it cannot be used over USB"},
    {kORB_USBNotWritable, ExitCode::Failed,
     "the out pipe {0} of this plotter is not an out endpoint; it cannot be used over USB"},
    {kORB_USBPipeStalled, ExitCode::Failed,
     "the plotter refuses what it is sent and has halted its pipe, which the next print clears: try again, and if that does "
     "not help, switch it off and on"},
    {kORB_USBIOError, ExitCode::Failed, "a transfer failed; check the cable, then try again"},
    {kORB_USBNotResponding, ExitCode::Lost, "the plotter does not answer; switch it off and on, then try again"},
    {kORB_USBAborted, ExitCode::Failed, "the transfer was broken off; try again"},
};

constexpr Row kByIdentifier[] = {
    {kORB_ErrorPlotterGone, ExitCode::Lost, "the plotter is gone; check cable and power, then try again"},
    {kORB_ErrorNoPlotter, ExitCode::Missing, "no such plotter any more; check cable and power, then try again"},
    {kORB_ErrorInterfaceNotFound, ExitCode::Failed, "the plotter shows no interface; switch it off and on, then try again"},
    {kORB_ErrorDeviceNotOpened, ExitCode::Failed, "the plotter cannot be opened; plug it in again, then try again"},
};

template <size_t N> const Row *find(const Row (&rows)[N], int32_t code) {
    const Row *row = std::find_if(std::begin(rows), std::end(rows), [&](const Row &r) { return r.code == code; });
    return row == std::end(rows) ? nullptr : row;
}

} // namespace

bool endsAnyUsbJob(int32_t status) {
    constexpr int32_t kEnds[] = {kORB_USBNoDevice, kORB_USBNotAttached, kORB_USBPipeStalled, kORB_USBUnknownPipe,
                                 kORB_USBNotWritable};
    return std::find(std::begin(kEnds), std::end(kEnds), status) != std::end(kEnds);
}

UsbFault explainUsb(const UsbDevice &usb, bool isGone, int32_t errorID, int32_t ioStatus, uint8_t outPipe) {
    // Once the plotter is gone, that explains whatever else was reported.
    const int32_t status = isGone ? int32_t{kORB_USBNoDevice} : ioStatus;
    if (status == kORB_USBNotPermitted) return {ExitCode::Permission, permissionRefusal(usb)};
    const Row *row = find(kByStatus, status);
    if (!row) row = find(kByIdentifier, errorID);
    if (row) return {row->exitCode, fmt::format(fmt::runtime(row->text), outPipe)};
    return {ExitCode::Failed,
            errorText(errorID) + (status == 0 ? "" : fmt::format(" (code 0x{:08X})", static_cast<uint32_t>(status)))};
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
