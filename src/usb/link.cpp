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

LinkWrite usb::writeOnce() {
    const ORB_ServiceRecord &record = answer();
    // A host may fill the whole buffer and leave no room for the NUL.
    const auto size = static_cast<uint32_t>(strnlen(record.ORB_writeBuffer, sizeof record.ORB_writeBuffer));
    uint32_t taken = 0;
    const IOReturn result = plotterInterface().WritePipe(record.ORB_USB_PIPEOUT, record.ORB_writeBuffer, size, &taken);
    return {result == kIOReturnSuccess ? size : taken, result};
}

extern "C" int32_t ORB_USBwritePlotter() {
    ORB_ServiceRecord &record = answer();
    LinkWrite &outcome = gORB_FoundationStruct.lastWrite;
    outcome = {};
    int32_t status = kIOReturnSuccess;
    for (int attempt = 0; attempt < kWriteAttempts; ++attempt) {
        const LinkWrite write = usb::writeOnce();
        outcome = {std::max(outcome.taken, write.taken), write.status};
        if (write.status == kIOReturnSuccess) {
            record.ORB_errorID = kORB_NoError;
            return 0;
        }
        posix::printf("[S9] Unable to write on this pipe  %d\n", record.ORB_USB_PIPEOUT);
        status = ORB_logIOError(write.status);
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
