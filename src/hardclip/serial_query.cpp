#include "hardclip/serial_query.h"

#include "hardclip/query_report.h"
#include "hardclip/reply.h"
#include "hardclip/requests.h"
#include "hardclip/values.h"
#include "link/link_switch.h"
#include "link/write_buffer.h"
#include "platform/corefoundation/corefoundation.h"
#include "platform/posix/clock.h"
#include "platform/posix/console.h"
#include "platform/posix/stop.h"
#include "platform/posix/terminal.h"
#include "record/state.h"
#include "record/status_text.h"
#include "serial/link.h"
#include "usb/interface.h"
#include "usb/link.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>

namespace {

using namespace hardclip;

constexpr int kPollLimit = 10;  // polls of the first reply go on up to this count
constexpr int kReplyPolls = 11; // what a reply of any bytes adds to it
constexpr int kSecondPolls = 9; // polls of the second reply go on up to this count

constexpr usb::OpenManner kOpenManner = {.waitsForOthers = true, .choosesAlternateSetting = false};

/// Opens the serial port anew; false when there is none to be had.
bool openSerial(int32_t *status) {
    ORB_ServiceRecord &record = answer();
    *status = ORB_SerialopenPort();
    if (*status == 0 && portIsOpen() &&
        CFStringGetCString(record.ORB_CFSTR_bsdIn_VectorixDevice, gORB_bsdPath, sizeof gORB_bsdPath,
                           kCFStringEncodingASCII)) {
        return true;
    }
    record.ORB_errorID = kORB_ErrorUnvalidPort;
    return false;
}

/// Sends the request; false when the query ends here.
bool sendRequest(int32_t *status) {
    ORB_ServiceRecord &record = answer();
    buildSerialRequest();
    noteRequest();
    *status = ORB_writePlotter();
    const int error = errno;
    if (*status == 0 && record.ORB_errorID == kORB_NoError) return true;
    if (record.ORB_errorID == kORB_ErrorUnvalidPort) {
        setStatusFormat("Service 7 : ORB_ReadserialReadHardClip : error getting handshake line %s - %s(%d)", gORB_bsdPath,
                        strerror(error), error);
        return false;
    }
    setStatus("Service 7 : ORB_ReadserialReadHardClip ORB_SerialopenPort() done, no error");
    record.ORB_errorID = kORB_NoError;
    return true;
}

void makeNonBlocking() {
    if (portIsOpen()) posix::setStatusFlags(answer().ORB_portFD, O_NONBLOCK);
}

/// One read of up to 256 bytes and its pause. Positive when bytes came: they are in reply.
ssize_t poll(int fd, char (&buffer)[256], std::string_view *reply) {
    ssize_t count = posix::read(fd, buffer, sizeof buffer);
    *reply = {buffer, count > 0 ? static_cast<size_t>(count) : 0};
    noteRead(*reply);
    posix::sleep(1);
    return count;
}

void showValues(const ORB_ServiceRecord &record) {
    posix::puts("end phase 1 : isDone == kCFBooleanTrue");
    posix::printf("ORB_HARDC_1 : %lf\n", record.ORB_HARDC_1);
    posix::printf("ORB_HARDC_2 : %lf\n", record.ORB_HARDC_2);
    posix::printf("ORB_HARDC_3 : %lf\n", record.ORB_HARDC_3);
    posix::printf("ORB_HARDC_4 : %lf\n", record.ORB_HARDC_4);
    setStatusFormat("ORB_HARDC_1 = ORB_Double : %lf,ORB_HARDC_2 = ORB_Double : %lf,ORB_HARDC_3 = ORB_Double : "
                    "%lf,ORB_HARDC_4 = ORB_Double : %lf",
                    record.ORB_HARDC_1, record.ORB_HARDC_2, record.ORB_HARDC_3, record.ORB_HARDC_4);
}

/// Polls for the first reply: any bytes end the polling, as does the line's end. False, with 27005, when it is incomplete; a
/// line that ends counts as no failure.
bool readFirst(int fd, ReplyForm form, Reading &reading) {
    ORB_ServiceRecord &record = answer();
    char buffer[256];
    std::string_view reply;
    for (int polls = 0;;) {
        const ssize_t count = poll(fd, buffer, &reply);
        if (count > 0) {
            polls += kReplyPolls;
            record.ORB_errorID = kORB_NoError;
            readReply(reply, form, Link::Serial, ReplyPart::First, reading);
            if (reading.complete) {
                storeValues(reading);
                showValues(record);
            }
        } else {
            ++polls;
        }
        const bool again = count != 0 && reading.values[3] == 0;
        if (polls <= kPollLimit && again) continue;
        if (polls <= kPollLimit || reading.complete) return true;
        record.ORB_errorID = kORB_ErrorNoReply;
        setStatus("Service 7 : ORB_SerialradHardClip, ORB_test > 10");
        return false;
    }
}

/// Asks for the second pair and polls for it. Returns the query's result.
int32_t readSecond(Reading &reading) {
    ORB_ServiceRecord &record = answer();
    plot::loadText(platform::constantString(kSecondSerialRequest));
    noteRequest();
    const int32_t status = ORB_SerialwritePlotter();
    if (record.ORB_errorID == kORB_ErrorUnvalidPort) return status;
    posix::sleep(1);
    makeNonBlocking();
    posix::sleep(1);
    record.ORB_errorID = kORB_NoError;
    record.ORB_HARDC_1 = reading.values[0];
    record.ORB_HARDC_2 = reading.values[1];
    record.ORB_HARDC_3 = 0;
    record.ORB_HARDC_4 = 0;
    reading.complete = false;

    char buffer[256];
    std::string_view reply;
    for (int polls = 0;;) {
        const ssize_t count = poll(record.ORB_portFD, buffer, &reply);
        if (count > 0) {
            polls += kReplyPolls;
            record.ORB_errorID = kORB_NoError;
            readReply(reply, ReplyForm::Pairs, Link::Serial, ReplyPart::Second, reading);
            record.ORB_HARDC_3 = reading.values[2];
            record.ORB_HARDC_4 = reading.values[3];
        } else {
            ++polls;
        }
        if (reading.complete) return 0;
        if (count == 0 || polls > kSecondPolls) {
            record.ORB_errorID = kORB_ErrorNoReply;
            return 0;
        }
    }
}

/// The dialogue on the open link.
int32_t askAndRead() {
    ORB_ServiceRecord &record = answer();
    int32_t status = 0;
    if (!sendRequest(&status) || platform::stopRequested()) return status;

    memset(record.ORB_writeBuffer, 0, sizeof record.ORB_writeBuffer);
    posix::sleep(1);
    makeNonBlocking();
    posix::sleep(1);
    record.ORB_errorID = kORB_NoError;
    const ReplyForm form = emulations::of(record.ORB_EmulationID).reply;
    Reading reading = readingOf(form);
    storeValues(reading);
    posix::sleep(1);

    const int fd = record.ORB_portFD;
    if (!readFirst(fd, form, reading)) return 0;
    if (portIsOpen()) posix::setStatusFlags(fd, 0);
    if (!portIsOpen()) {
        record.ORB_errorID = kORB_ErrorUnvalidPort;
        return 0;
    }
    return form == ReplyForm::Pairs ? readSecond(reading) : 0;
}

} // namespace

extern "C" int32_t ORB_VectorixService7() {
    ORB_ServiceRecord &record = answer();
    beginQueryReport();
    record.ORB_errorID = kORB_NoError;
    int32_t result = ORB_SerialopenPort();
    noteOutcome(result);
    if (result != 0) {
        clearStatus();
        if (record.ORB_errorID == kORB_SerialTools_errorNoBSDIn) {
            setStatus("Service 7 : ORB_SerialopenPort : kORB_SerialTools_errorNoBSDIn");
            posix::puts("\nNo ORB_CFSTR_bsdIn_VectorixDevice");
            return result;
        }
    } else {
        setStatus("Service 7 : ORB_SerialopenPort() done, no error");
    }
    if (portIsOpen()) {
        if (record.ORB_errorID != kORB_NoError) return result;
        record.ORB_lastService = 7;
        result = ORB_SerialreadHardClip();
        noteOutcome(result);
        if (result != 0) {
            setStatusFormat("Service 7 : ORB_SerialreadHardClip done but kernResult =%d", result);
        } else {
            setStatus("Service 7 : ORB_SerialreadHardClip() done, no error");
        }
    }
    result = ORB_VectorixService6();
    if (result != 0 || record.ORB_errorID != kORB_NoError) {
        posix::printf("[ORB_VectorixService7] [ORB_VectorixService6] returns an error %d\n", result);
        posix::printf("[[ORB_VectorixService7] ] & ORB_error ID %d\n", record.ORB_errorID);
    }
    return result;
}

extern "C" int32_t ORB_SerialreadHardClip() {
    ORB_ServiceRecord &record = answer();
    errno = 0;
    memset(record.ORB_writeBuffer, 0, sizeof record.ORB_writeBuffer);
    record.ORB_errorID = kORB_NoError;
    int32_t status = 0;
    if (record.ORB_OutputMethode == kORB_OSX_METHOD_USB && !usb::openInterface(kOpenManner, &status)) return status;
    if (record.ORB_OutputMethode == kORB_OSX_METHOD_SERIAL && !openSerial(&status)) return status;
    status = askAndRead();
    if (record.ORB_OutputMethode == kORB_OSX_METHOD_USB && gORB_interfaceInterface) ORB_USBclose_Plotterinterface();
    return status;
}
