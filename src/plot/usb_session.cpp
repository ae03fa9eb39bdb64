#include "plot/usb_session.h"

#include "link/usb_start.h"
#include "platform/posix/clock.h"
#include "platform/posix/console.h"
#include "plot/job_report.h"
#include "record/state.h"
#include "usb/interface.h"
#include "usb/link.h"

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

void noteUnsent(int32_t status) { noteFailure(answer().ORB_errorID, status); }

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
    return sendUsbStart({.service = "S18", .reset = "[S18] first attempt", .afterFailure = noteUnsent}, status);
}

} // namespace plot
