// The modem lines and the exclusive use of the port in ORB_portFD.
#include "platform/posix/terminal.h"
#include "record/state.h"
#include "record/status_text.h"
#include "serial/line_setup.h"

#include <cerrno>
#include <cstring>

namespace {

constexpr int kCTSRounds = 10'000'000;

/// False, with lines untouched, when the request fails.
bool readLines(int *lines) { return posix::ioctl(answer().ORB_portFD, TIOCMGET, lines) != -1; }

/// The modem-line word; unknown when it cannot be read.
int32_t linesOr(int32_t unknown) {
    int lines = unknown;
    readLines(&lines);
    return lines;
}

int32_t requestOr(unsigned long request, int32_t failure) {
    if (posix::ioctl(answer().ORB_portFD, request) != -1) return 1;
    answer().ORB_errorID = failure;
    return 0;
}

int32_t changeDTR(unsigned long request) {
    int line = TIOCM_DTR;
    return posix::ioctl(answer().ORB_portFD, request, &line);
}

} // namespace

int32_t ORB_Serialset_OpenExclusive() { return requestOr(TIOCEXCL, kORB_ErrorSetExclusive); }
int32_t ORB_Serialset_OpenAuthorised() { return requestOr(TIOCNXCL, kORB_ErrorClearExclusive); }

int32_t ORB_SerialsetDTR() { return changeDTR(TIOCMBIS); }
int32_t ORB_SerialclearDTR() { return changeDTR(TIOCMBIC); }

int32_t ORB_SerialgetCurrentHandshake() {
    int lines = TIOCM_DTR | TIOCM_RTS | TIOCM_CTS | TIOCM_DSR;
    if (readLines(&lines)) {
        setStatusFormat("Handshake lines currently set to %d", lines);
    } else {
        const int error = errno;
        setStatusFormat("Error getting DTR lines %s - %s(%d)", gORB_bsdPath, strerror(error), error);
    }
    return lines;
}

int32_t ORB_SerialgetDTR() { return linesOr(TIOCM_DTR); }
int32_t ORB_SerialgetDCD() { return linesOr(TIOCM_CAR); }

int32_t ORB_SerialgetCTS() {
    int lines = 0;
    for (int round = 0; round < kCTSRounds; ++round)
        if (readLines(&lines) && (lines & TIOCM_CTS) != 0) break;
    return lines;
}
