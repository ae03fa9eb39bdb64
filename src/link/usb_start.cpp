#include "link/usb_start.h"

#include "emulations/emulations.h"
#include "link/link_switch.h"
#include "link/write_buffer.h"
#include "platform/corefoundation/corefoundation.h"
#include "platform/posix/console.h"
#include "record/io_error.h"
#include "record/state.h"
#include "usb/link.h"

namespace plot {

namespace {

void writeReset(const UsbStartSteps &steps, int32_t *status) {
    ORB_ServiceRecord &record = answer();
    steps.beforeReset();
    const IOReturn result = usb::writeOnce().status;
    steps.afterReset(result);
    if (result != kIOReturnSuccess) {
        posix::printf("%s : unable to write on this pipe  %d\n", steps.reset, record.ORB_USB_PIPEOUT);
        *status = ORB_logIOError(result);
        record.ORB_errorID = kORB_ErrorPipe;
        steps.afterFailure(result);
    }
    steps.afterResetLine(result == kIOReturnSuccess ? 0 : *status);
}

void writeLine(const UsbStartSteps &steps) {
    ORB_ServiceRecord &record = answer();
    if (ORB_writePlotter() == 0 && record.ORB_errorID == kORB_NoError) return;
    posix::printf("[%s : ORB_readPlotFile2Write] & ORB_error ID %d\n", steps.service, record.ORB_errorID);
    steps.afterFailure(gORB_FoundationStruct.lastWrite.status);
}

} // namespace

bool sendUsbStart(const UsbStartSteps &steps, int32_t *status) {
    const emulations::UsbStart &start = emulations::of(answer().ORB_PlotterEmulationID).usbStart;
    if (*start.text == '\0') return true;
    if (!loadText(platform::constantString(start.text))) {
        if (start.isReset) {
            posix::printf("[ORB_readPlotFile2Write] kORB_ErrorPathNameTooLong => ORB_error ID %d\n", answer().ORB_errorID);
        }
        return false;
    }
    for (int time = 0; time < start.times; ++time)
        start.isReset ? writeReset(steps, status) : writeLine(steps);
    return true;
}

} // namespace plot
