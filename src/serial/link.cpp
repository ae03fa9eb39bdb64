// The open sequence, the start-up bytes, the write and the close, and the services made of them.
#include "serial/link.h"

#include "emulations/emulations.h"
#include "platform/corefoundation/corefoundation.h"
#include "platform/posix/clock.h"
#include "platform/posix/console.h"
#include "platform/posix/stop.h"
#include "platform/posix/terminal.h"
#include "record/state.h"
#include "record/status_text.h"
#include "serial/open_ports.h"

#include <cerrno>
#include <cstring>
#include <string_view>

namespace {

CFStringRef handshakeText(int32_t lines) {
    auto state = [lines](int line) { return (lines & line) != 0 ? "ON" : "OFF"; };
    return CFStringCreateWithFormat("Handshake lines currently set to %d, DTR : %s DSR : %s RTS : %s CTS : %s CAR : %s",
                                    lines, state(TIOCM_DTR), state(TIOCM_DSR), state(TIOCM_RTS), state(TIOCM_CTS),
                                    state(TIOCM_CAR));
}

CFStringRef handshakeErrorText(int32_t error) {
    return CFStringCreateWithFormat("[Vectorix Foundation] :error getting handshake line %s - %s(%d)", gORB_bsdPath,
                                    strerror(error), error);
}

/// What every call on a line gives once it has hung up or its device was pulled out. There is no way back from these.
constexpr bool meansGone(int error) { return error == EIO || error == ENXIO || error == ENODEV; }

/// The outcome of a write of size bytes. taken is what write() returned; error is its errno when that is -1.
LinkWrite outcomeOf(ssize_t taken, size_t size, int error) {
    if (taken == -1) return {.taken = 0, .status = error, .portWasGone = meansGone(error)};
    return {.taken = taken, .status = static_cast<size_t>(taken) < size ? EAGAIN : 0};
}

CFStringRef writeErrorText(int32_t error) { return CFStringCreateWithFormat("write returned errno %d", error); }

// Deferred like every status text of a write: a job makes one for each piece, and only the last can be seen.
void reportHandshake(int fd) {
    int lines = 0;
    if (posix::ioctl(fd, TIOCMGET, &lines) != -1) {
        deferStatus(handshakeText, lines);
    } else {
        deferStatus(handshakeErrorText, errno);
    }
}

/// failed takes the result as its only argument.
void reportStep(int32_t result, const char *done, const char *failed) {
    if (result == 0) {
        setStatus(done);
    } else {
        setStatusFormat(failed, result);
    }
}

} // namespace

int32_t ORB_SerialopenPort() {
    answer().ORB_portFD = -1;
    answer().ORB_errorID = kORB_NoError;
    gORB_FoundationStruct.startWrite = {};
    const CFStringRef path = answer().ORB_CFSTR_bsdIn_VectorixDevice;
    if (CFGetTypeID(path) != CFStringGetTypeID()) {
        answer().ORB_errorID = kORB_SerialTools_errorNoBSDIn;
        return -1;
    }
    if (!CFStringGetCString(path, gORB_bsdPath, sizeof gORB_bsdPath, kCFStringEncodingASCII)) return 0;

    ORB_Serialopen_Keyspan2Write();
    if (answer().ORB_errorID == kORB_NoError) {
        ORB_Serial_initPlotter();
        return 0;
    }
    if (portIsOpen()) serial::closePort(answer().ORB_portFD);
    answer().ORB_portFD = -1;
    return 0;
}

void ORB_Serial_initPlotter() {
    const std::string_view start = emulations::of(answer().ORB_EmulationID).serialStart;
    if (start.empty()) return;
    const ssize_t taken = posix::write(answer().ORB_portFD, start.data(), start.size());
    gORB_FoundationStruct.startWrite = outcomeOf(taken, start.size(), errno);
    if (taken == -1) {
        answer().ORB_errorID = kORB_ErrorUnvalidPort;
        setStatus("kORB_Serial_initPlotter=>ORB_ErrorWritingPort : numBytes == -1");
    } else {
        answer().ORB_errorID = kORB_NoError;
    }
}

int32_t ORB_SerialwritePlotter() {
    LinkWrite &outcome = gORB_FoundationStruct.lastWrite;
    errno = 0;
    if (!portIsOpen()) {
        posix::printf("ORB_SerialwritePlotter kORB_ErrorUnvalidPort, kernResult = %d \n", 0);
        answer().ORB_errorID = kORB_ErrorUnvalidPort;
        outcome = {0, EBADF};
        return 0;
    }
    const int fd = answer().ORB_portFD;
    reportHandshake(fd);

    // A host may fill the whole buffer and leave no room for the NUL.
    const size_t size = strnlen(answer().ORB_writeBuffer, sizeof answer().ORB_writeBuffer);
    const ssize_t taken = posix::write(fd, answer().ORB_writeBuffer, size);
    int error = errno;
    outcome = outcomeOf(taken, size, error);
    if (taken == -1) deferStatus(writeErrorText, error);
    if (posix::tcdrain(fd) == -1) {
        error = errno;
        // Kept out of ORB_errorID. After a stop the close finds out how many bytes were still queued; otherwise nobody can
        // tell how many left, and none of them counts as sent.
        if (platform::stopRequested()) {
            outcome.isPending = true;
        } else if (taken != -1) {
            outcome = {.taken = 0, .status = error};
        }
        setStatus("[Vectorix Foundation] : tcdrain error at writing on serial port !");
    }
    answer().ORB_errorID = taken == -1 ? kORB_ErrorUnvalidPort : kORB_NoError;
    errno = error; // callers put it into their texts
    return 0;
}

int32_t ORB_SerialclosePort() {
    LinkClose &outcome = gORB_FoundationStruct.lastClose;
    outcome = {};
    if (portIsOpen()) {
        const int fd = answer().ORB_portFD;
        if (posix::tcdrain(fd) == -1) {
            const int error = errno;
            setStatusFormat("Error waiting for drain - %s(%d)", strerror(error), error);
            if (!platform::stopRequested()) outcome.status = error;
        }
        posix::sleep(2);
        // A drain or a pause during which the line hangs up still succeeds: only a later call on the line tells.
        if (posix::ioctl(fd, TIOCNXCL) == -1 && meansGone(errno) && outcome.status == 0) outcome.status = errno;
        outcome.discarded = serial::closePort(fd);
        answer().ORB_errorID = kORB_NoError;
    }
    answer().ORB_portFD = -1;
    return 0;
}

int32_t ORB_VectorixService4() {
    answer().ORB_lastService = 4;
    const int32_t result = ORB_SerialopenPort();
    reportStep(result, "Service 4 : ORB_SerialopenPort() done, no error",
               "Service 4 : ORB_SerialopenPort done but kernResult =%d");
    return result;
}

int32_t ORB_VectorixService5() {
    answer().ORB_lastService = 4;
    int32_t result = ORB_SerialopenPort();
    reportStep(result, "Service 5 : ORB_SerialopenPort() done, no error",
               "Service 5 : ORB_SerialopenPort() done but kernResult =%d");
    if (!portIsOpen()) return result;
    // Start-up bytes that could not be written leave the port open: the write is tried all the same.
    if (answer().ORB_errorID == kORB_NoError) answer().ORB_lastService = 5;
    result = ORB_SerialwritePlotter();
    reportStep(result, "Service 5 : ORB_SerialwritePlotter() done, no error",
               "Service 5 : ORB_SerialwritePlotter() done but kernResult =%d");
    return result;
}

int32_t ORB_VectorixService6() {
    answer().ORB_lastService = 6;
    answer().ORB_errorID = kORB_NoError;
    return portIsOpen() ? ORB_SerialclosePort() : 0;
}
