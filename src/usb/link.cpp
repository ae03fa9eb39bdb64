#include "usb/link.h"

#include "platform/posix/console.h"
#include "record/io_error.h"
#include "record/state.h"
#include "usb/interface.h"

#include <algorithm>
#include <cstring>

namespace {

constexpr int kWriteAttempts = 6;

} // namespace

extern "C" int32_t ORB_USBwritePlotter() {
    ORB_ServiceRecord &record = answer();
    LinkWrite &outcome = gORB_FoundationStruct.lastWrite;
    outcome = {};
    int32_t status = kIOReturnSuccess;
    for (int attempt = 0; attempt < kWriteAttempts; ++attempt) {
        // A host may fill the whole buffer and leave no room for the NUL.
        auto size = static_cast<uint32_t>(strnlen(record.ORB_writeBuffer, sizeof record.ORB_writeBuffer));
        uint32_t taken = 0;
        IOReturn result = usb::plotterInterface().WritePipe(record.ORB_USB_PIPEOUT, record.ORB_writeBuffer, size, &taken);
        if (result == kIOReturnSuccess) {
            outcome = {size, 0};
            record.ORB_errorID = kORB_NoError;
            return 0;
        }
        outcome = {std::max<int64_t>(outcome.taken, taken), result};
        posix::printf("[S9] Unable to write on this pipe  %d\n", record.ORB_USB_PIPEOUT);
        status = ORB_logIOError(result);
        record.ORB_errorID = kORB_ErrorPipe;
    }
    return status;
}

extern "C" int32_t ORB_USBclose_Plotterinterface() {
    if (answer().ORB_interfaceOpen != 1) return 0;
    usb::plotterInterface().USBInterfaceClose();
    gORB_interfaceInterface.reset();
    answer().ORB_interfaceOpen = 0;
    return 0;
}

extern "C" int32_t ORB_VectorixService9() {
    answer().ORB_lastService = 9;
    ORB_USBwritePlotter();
    return ORB_USBclose_Plotterinterface();
}

extern "C" int32_t ORB_VectorixService10() {
    answer().ORB_lastService = 10;
    if (answer().ORB_errorID == kORB_ErrorIgnoredByClose) answer().ORB_errorID = kORB_NoError;
    return ORB_USBclose_Plotterinterface();
}
