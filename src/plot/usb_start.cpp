#include "plot/usb_start.h"

#include "emulations/emulations.h"
#include "link/link_switch.h"
#include "link/write_buffer.h"
#include "platform/corefoundation/corefoundation.h"
#include "platform/posix/clock.h"
#include "platform/posix/console.h"
#include "plot/job_report.h"
#include "record/io_error.h"
#include "record/state.h"
#include "usb/interface.h"
#include "usb/link.h"

#include <cstring>

namespace plot {

namespace {

void clearOutPipe() {
    ORB_ServiceRecord &record = answer();
    IOReturn result = usb::plotterInterface().ClearPipeStallBothEnds(record.ORB_USB_PIPEOUT);
    if (result == kIOReturnSuccess) {
        record.ORB_errorID = kORB_NoError;
        return;
    }
    posix::printf(
        "S18 : ORBTARGET_API_MAC_OSX_VERSION >=  ORBTARGET_API_MAC_OSX_PANTHER  : ClearPipeStallBothEnds returns an "
        "error : %d",
        result);
    record.ORB_errorID = kORB_ErrorPipe;
    noteFailure(kORB_ErrorPipe, result);
}

bool reset(const emulations::UsbStart &start, int32_t *status) {
    ORB_ServiceRecord &record = answer();
    if (!loadText(platform::constantString(start.text))) {
        posix::printf("[ORB_readPlotFile2Write] kORB_ErrorPathNameTooLong => ORB_error ID %d\n", record.ORB_errorID);
        return false;
    }
    IOReturn result = usb::plotterInterface().WritePipe(record.ORB_USB_PIPEOUT, record.ORB_writeBuffer,
                                                        static_cast<uint32_t>(strlen(record.ORB_writeBuffer)));
    if (result == kIOReturnSuccess) return true;
    posix::printf("[S18] first attempt : unable to write on this pipe  %d\n", record.ORB_USB_PIPEOUT);
    *status = ORB_logIOError(result);
    record.ORB_errorID = kORB_ErrorPipe;
    noteFailure(kORB_ErrorPipe, result);
    return true;
}

bool startLine(const emulations::UsbStart &start) {
    ORB_ServiceRecord &record = answer();
    if (!loadText(platform::constantString(start.text))) return false;
    for (int time = 0; time < start.times; ++time) {
        int32_t result = ORB_writePlotter();
        if (result != 0 || record.ORB_errorID != kORB_NoError) {
            posix::printf("[S18 : ORB_readPlotFile2Write] & ORB_error ID %d\n", record.ORB_errorID);
            noteFailure(record.ORB_errorID, gORB_FoundationStruct.lastWrite.status);
        } else {
            record.ORB_errorID = kORB_NoError;
        }
    }
    return true;
}

} // namespace

UsbSession::~UsbSession() {
    if (answer().ORB_OutputMethode == kORB_OSX_METHOD_USB && gORB_interfaceInterface) ORB_USBclose_Plotterinterface();
}

bool UsbSession::open(int32_t *status) {
    if (usb::openInterface({}, status)) return true;
    int32_t errorID = answer().ORB_errorID;
    noteFailure(errorID == kORB_NoError ? kORB_ErrorInterfaceNotFound : errorID, *status);
    noteStop(kORB_StopNoLink);
    return false;
}

bool UsbSession::sendStart(int32_t *status) {
    clearOutPipe();
    posix::sleep(2);
    const emulations::UsbStart &start = emulations::of(answer().ORB_PlotterEmulationID).usbStart;
    if (*start.text == '\0') return true;
    return start.isReset ? reset(start, status) : startLine(start);
}

} // namespace plot
