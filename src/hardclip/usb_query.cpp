#include "hardclip/usb_query.h"

#include "hardclip/query_report.h"
#include "hardclip/reply.h"
#include "hardclip/requests.h"
#include "hardclip/usb_pipes.h"
#include "hardclip/values.h"
#include "link/usb_start.h"
#include "link/write_buffer.h"
#include "platform/corefoundation/corefoundation.h"
#include "platform/posix/clock.h"
#include "platform/posix/console.h"
#include "record/io_error.h"
#include "record/state.h"
#include "usb/interface.h"
#include "usb/link.h"

#include <algorithm>

namespace {

using namespace hardclip;
using emulations::Emulation;

constexpr int kWriteAttempts = 6;
constexpr int kFailureLimit = 10; // a failure ends the query from this pass counter on
constexpr int kPassLimit = 100;   // the pass counter starts at 1 and is raised before each pass

constexpr usb::OpenManner kOpenManner = {
    .alreadyOpen = " [S11 ORB_readPlotFile2Write] USBInterfaceOpen was already open",
    .opened =
        " [S11 ORB_readPlotFile2Write] USBInterfaceOpen is successfull, as kernResult == NULL : no error at this stage "};

void showResetResult(IOReturn result) {
    posix::printf(" [S11] initialisation : ORB_writePlotter (kernResult == %d\n", result);
}

void showResetOutcome(int32_t status) {
    switch (status) {
    case kIOReturnSuccess:
        posix::puts(" [S11 initialisation] after first attempt to ORB_writePlotter (kernResult == (kern_return_t) "
                    "kIOReturnSuccess");
        break;
    case kIOReturnNoDevice:
        posix::puts(" [S11 initialisation] ORB_writePlotter (kernResult == (kern_return_t) kIOReturnNoDevice");
        break;
    case kIOReturnNotOpen:
        posix::puts(" [S11 initialisation] ORB_writePlotter (kernResult == (kern_return_t) kIOReturnNotOpen");
        break;
    default: break;
    }
}

constexpr plot::UsbStartSteps kStartSteps = {.service = "S11",
                                             .reset = "[S11] initialisation",
                                             .beforeReset = showPipeStatus,
                                             .afterReset = showResetResult,
                                             .afterResetLine = showResetOutcome};

/// Sends the request, with up to six attempts; that none went well does not end the query.
void sendRequest() {
    ORB_ServiceRecord &record = answer();
    noteRequest();
    record.ORB_errorID = kORB_NoError;
    storeValues({});
    posix::puts("[VectorixFoundation] S11 : starting write hardclip command ");
    for (int attempt = 0; attempt < kWriteAttempts; ++attempt) {
        IOReturn result = usb::writeOnce().status;
        posix::printf("[ S 11] WritePipe returns kernResult = %08x\n", static_cast<unsigned>(result));
        noteUnsent(result);
        if (result == kIOReturnSuccess) break;
        posix::printf("[S11] Unable to write on this pipe  %d\n", record.ORB_USB_PIPEOUT);
        ORB_logIOError(result);
        record.ORB_errorID = kORB_ErrorPipe;
    }
    record.ORB_errorID = kORB_NoError;
}

IOReturn readPipe(char (&buffer)[256], std::string_view *reply) {
    uint32_t size = sizeof buffer;
    IOReturn result = usb::plotterInterface().ReadPipe(answer().ORB_USB_PIPEIN, buffer, &size);
    *reply = {buffer, result == kIOReturnSuccess ? std::min<size_t>(size, sizeof buffer) : 0};
    noteRead(*reply);
    return result;
}

/// What a failed read of the first reply does. True when the query ends, with *status as its result.
bool failedRead(IOReturn result, int pass, int32_t *status) {
    constexpr const char *kSilent = "\n=>ReadPipe error : => kIOReturnNotResponding more than 10 time";
    constexpr const char *kGone = "[VectorixFoundation S11] ReadPipe returns kernResult = kIOReturnNoDevice)";
    const bool ends = pass >= kFailureLimit;
    *status = result;
    switch (result) {
    case kIOReturnNotResponding:
        answer().ORB_errorID = kORB_ErrorPipe;
        if (ends) posix::puts(kSilent);
        return ends;
    case kIOReturnNoDevice:
        answer().ORB_errorID = kORB_ErrorPlotterGone;
        posix::puts(kGone);
        if (ends) posix::puts(kSilent);
        return ends;
    default:
        posix::puts(kGone);
        answer().ORB_errorID = kORB_ErrorUSBNotOpen;
        *status = ORB_logIOError(result);
        if (ends) {
            posix::puts("[VectorixFoundation S11] ReadPipe returns kernResult = kIOReturnNoDevice after more than 10 times");
        }
        return ends;
    }
}

/// Reads until the first reply is complete. False when the query ends before, with *status as its result.
bool readFirst(const Emulation &emulation, Reading &reading, int32_t *status) {
    ORB_ServiceRecord &record = answer();
    char buffer[256];
    std::string_view reply;
    for (int pass = 2;; ++pass) {
        record.ORB_errorID = kORB_NoError;
        reading.complete = false;
        if (emulation.announcesReads) posix::puts("[S11] sleep just before ReadPipe;");
        posix::sleep(static_cast<unsigned>(pass));
        IOReturn result = readPipe(buffer, &reply);
        posix::printf("[S11] do : ReadPipe, kernResult = %08x\n", static_cast<unsigned>(result));
        if (result != kIOReturnSuccess) {
            if (failedRead(result, pass, status)) return false;
        } else {
            posix::puts("[VectorixFoundation S11] ReadPipe returns kernResult = kIOReturnSuccess");
            if (reply.empty()) {
                record.ORB_errorID = kORB_ErrorReadingReply;
            } else {
                readReply(reply, emulation.reply, Link::Usb, ReplyPart::First, reading);
            }
        }
        if (reading.complete || pass >= kPassLimit) {
            storeValues(reading);
            record.ORB_errorID = kORB_NoError;
            *status = 0;
            return true;
        }
    }
}

/// Asks for the second pair in each pass and reads it. Returns the query's result.
int32_t readSecond(Reading &reading) {
    ORB_ServiceRecord &record = answer();
    record.ORB_errorID = kORB_NoError;
    plot::loadText(platform::constantString(kSecondUsbRequest));
    noteRequest();
    char buffer[256];
    std::string_view reply;
    for (int pass = 2;; ++pass) {
        const bool ends = pass >= kFailureLimit;
        record.ORB_errorID = kORB_NoError;
        if (IOReturn result = usb::writeOnce().status; result == kIOReturnNotResponding) {
            record.ORB_errorID = kORB_ErrorPipe;
            if (ends) return result;
        } else if (result != kIOReturnSuccess) {
            int32_t logged = ORB_logIOError(result);
            if (ends) return logged;
        }
        posix::sleep(static_cast<unsigned>(pass));
        IOReturn result = readPipe(buffer, &reply);
        if (result == kIOReturnSuccess && reply.empty()) {
            record.ORB_errorID = kORB_ErrorReadingReply;
        } else if (result == kIOReturnSuccess && holdsDigit(reply, '1')) {
            readReply(reply, ReplyForm::Pairs, Link::Usb, ReplyPart::Second, reading);
            storeValues(reading);
            record.ORB_errorID = kORB_NoError;
            return 0;
        } else if (result == kIOReturnNotResponding) {
            record.ORB_errorID = kORB_ErrorPipe;
            if (ends) return result;
        } else if (result != kIOReturnSuccess) {
            record.ORB_errorID = kORB_ErrorReadingReply;
            int32_t logged = ORB_logIOError(result);
            if (ends) return logged;
        }
        if (pass >= kPassLimit) {
            reading.values[2] = reading.values[3] = 0;
            storeValues(reading);
            record.ORB_errorID = kORB_NoError;
            return 0;
        }
    }
}

} // namespace

extern "C" int32_t ORB_VectorixService11() {
    beginQueryReport();
    answer().ORB_errorID = 0;
    ORB_VectorixService12();
    answer().ORB_lastService = 11;
    noteOutcome(ORB_USBreadHardClip());
    return ORB_VectorixService10();
}

extern "C" int32_t ORB_USBreadHardClip() {
    ORB_ServiceRecord &record = answer();
    record.ORB_errorID = kORB_NoError;
    record.ORB_PlotterEmulationID = record.ORB_queryEmulationID;
    record.ORB_PlotterID = record.ORB_queryPlotterID;
    int32_t status = ORB_USBloadORB_pipe_inANDout();
    if (record.ORB_OutputMethode != kORB_OSX_METHOD_USB) {
        posix::puts("gORB_FoundationStruct.Answer.ORB_OutputMethode <> kORB_OSX_METHOD_USB");
        record.ORB_errorID = kORB_ErrorInterfaceNotOpened;
        return kIOReturnNotOpen;
    }
    if (!usb::openInterface(kOpenManner, &status)) return status;
    preparePipes();
    record.ORB_errorID = kORB_NoError;
    posix::sleep(2);
    if (!plot::sendUsbStart(kStartSteps, &status)) {
        record.ORB_errorID = kORB_ErrorPathNameTooLong;
        return status;
    }
    buildUsbRequest();
    sendRequest();
    const Emulation &emulation = emulations::of(record.ORB_EmulationID);
    Reading reading = readingOf(emulation.reply);
    if (!readFirst(emulation, reading, &status)) return status;
    return emulation.reply == ReplyForm::Pairs ? readSecond(reading) : 0;
}
