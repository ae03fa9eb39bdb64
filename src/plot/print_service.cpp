#include "plot/print_service.h"

#include "platform/corefoundation/corefoundation.h"
#include "platform/posix/console.h"
#include "plot/job_report.h"
#include "plot/plot_sender.h"
#include "record/state.h"
#include "serial/link.h"
#include "usb/device.h"
#include "usb/interface.h"

namespace {

using plot::noteFailure;
using plot::noteStop;

bool failed(int32_t result) { return result != 0 || answer().ORB_errorID != kORB_NoError; }

int32_t printOverSerial() {
    ORB_ServiceRecord &record = answer();
    int32_t result = ORB_SerialopenPort();
    if (failed(result)) {
        posix::printf("[ORB_SerialopenPort] returns an error %d\n", result);
        posix::printf("[main] & ORB_error ID %d\n", record.ORB_errorID);
        noteFailure(record.ORB_errorID, result);
        noteStop(kORB_StopNoLink);
        return result;
    }
    CFStringGetCString(record.ORB_CFSTR_bsdIn_VectorixDevice, gORB_bsdPath, sizeof gORB_bsdPath, kCFStringEncodingASCII);
    if (!portIsOpen()) {
        // The path is not ASCII. The record shows no error for that; the report does.
        noteFailure(kORB_ErrorPathNameTooLong, 0);
        noteStop(kORB_StopUnconvertible);
        return 0;
    }
    result = ORB_readPlotFile2Write();
    if (failed(result)) {
        posix::printf("[ORB_VectorixService17] [ORB_readPlotFile2Write] returns an error %d\n", result);
        posix::printf("[[ORB_VectorixService17] ] & ORB_error ID %d\n", record.ORB_errorID);
    }
    result = ORB_VectorixService6();
    plot::noteClose(gORB_FoundationStruct.lastClose);
    if (failed(result)) {
        posix::printf("[ORB_VectorixService17] [ORB_VectorixService6] returns an error %d\n", result);
        posix::printf("[[ORB_VectorixService17] ] & ORB_error ID %d\n", record.ORB_errorID);
        return result;
    }
    return 0;
}

/// Prints the two lines of a step that failed; true when it did.
bool showFailure(const char *step, int32_t result) {
    if (!failed(result)) return false;
    posix::printf("[ORB_VectorixService17] %s returns an error %d\n", step, result);
    posix::printf("[ORB_VectorixService17] & ORB_error ID %d\n", answer().ORB_errorID);
    return true;
}

int32_t printOverUSB() {
    ORB_ServiceRecord &record = answer();
    int32_t result = ORB_VectorixService8();
    if (showFailure("ORB_VectorixService8", result)) {
        // When a plotter was found, and a later device could not be examined, only the result tells of that.
        const int32_t errorID = record.ORB_errorID;
        noteFailure(errorID == kORB_NoError ? kORB_ErrorPlugIn : errorID, result);
        noteStop(kORB_StopNoLink);
        return result;
    }
    record.ORB_errorID = kORB_NoError;
    record.ORB_deviceCount = 0;
    record.ORB_interfaceOpen = 0;
    gORB_interfaceInterface.reset();
    result = ORB_readPlotFile2Write();
    showFailure("ORB_readPlotFile2Write", result);
    return result;
}

} // namespace

extern "C" int32_t ORB_VectorixService17() {
    plot::beginReport();
    if (answer().ORB_OutputMethode == kORB_OSX_METHOD_SERIAL) return printOverSerial();
    return printOverUSB();
}
