// The line's attributes: rate, size, parity, stop bits and handshake.
#include "serial/line_setup.h"

#include "platform/posix/terminal.h"
#include "record/state.h"
#include "record/status_text.h"

#include <cerrno>

namespace {

struct Rate {
    int32_t bitsPerSecond;
    speed_t speed;
};

// B134 stands for 134.5 bit/s.
constexpr Rate kRates[] = {
    {0, B0},     {50, B50},     {75, B75},     {110, B110},   {134, B134},   {150, B150},   {200, B200},     {300, B300},
    {600, B600}, {1200, B1200}, {1800, B1800}, {2400, B2400}, {4800, B4800}, {9600, B9600}, {19200, B19200}, {38400, B38400},
};

struct CharacterSize {
    int32_t code;
    tcflag_t bits;
};

constexpr CharacterSize kSizes[] = {
    {kORB_DataBits5, CS5}, {kORB_DataBits6, CS6}, {kORB_DataBits7, CS7}, {kORB_DataBits8, CS8}};

// The speed lives inside c_cflag on Linux: clearing it with the other bits would hang the line up.
constexpr tcflag_t kSpeedBits = CBAUD | CBAUDEX | CIBAUD;

constexpr cc_t kDC1 = 0x11;
constexpr cc_t kDC3 = 0x13;

void raiseDTR(int fd) {
    int lines = 0;
    if (posix::ioctl(fd, TIOCMGET, &lines) == -1) return;
    lines |= TIOCM_DTR;
    posix::ioctl(fd, TIOCMSET, &lines);
}

} // namespace

int32_t ORB_Serialsetc_cflag() {
    const int fd = answer().ORB_portFD;
    int32_t result = ORB_SerialgetgOriginalTTYAttrs();
    if (answer().ORB_errorID == kORB_ErrorGetAttributes) return result;

    posix::cfmakeraw(&gORB_Termios);
    posix::tcsetattr(fd, TCSADRAIN, &gORB_Termios);
    posix::cfsetspeed(&gORB_Termios, B9600);
    posix::setStatusFlags(fd, 0); // from here on reads and writes block
    ORB_SerialsetBaudrate();
    gORB_Termios.c_cflag = (gORB_Termios.c_cflag & kSpeedBits) | CREAD | CLOCAL;
    ORB_SerialsetDatabits();
    ORB_SerialsetParity();
    ORB_SerialsetStopbits();
    ORB_SerialsetFlowControl();
    posix::setStatusFlags(fd, 0);

    result = posix::tcsetattr(fd, TCSADRAIN, &gORB_Termios);
    if (result == 0) {
        raiseDTR(fd);
    } else {
        setStatusFormat("ioctl - TIOCSETA (called by tcsetattr) returned %d (errno %d)", result, errno);
        answer().ORB_errorID = kORB_ErrorSetAttributes;
    }
    result = posix::tcsetattr(fd, TCSADRAIN, &gORB_Termios);
    if (result == -1) {
        answer().ORB_errorID = kORB_ErrorSetAttributes;
    } else {
        raiseDTR(fd);
    }
    return result;
}

int32_t ORB_SerialgetgOriginalTTYAttrs() {
    int32_t result = posix::tcgetattr(answer().ORB_portFD, &gOriginalTTYAttrs);
    if (result < 0) {
        answer().ORB_errorID = kORB_ErrorGetAttributes;
    } else {
        gORB_Termios = gOriginalTTYAttrs;
    }
    return result;
}

void ORB_SerialsetBaudrate() {
    speed_t speed = B9600;
    for (const Rate &rate : kRates)
        if (rate.bitsPerSecond == answer().ORB_baudRate) speed = rate.speed;
    posix::cfsetspeed(&gORB_Termios, speed);
}

void ORB_SerialsetDatabits() {
    gORB_Termios.c_cflag &= ~static_cast<tcflag_t>(CSIZE);
    for (const CharacterSize &size : kSizes)
        if (size.code == answer().ORB_dataBits) gORB_Termios.c_cflag |= size.bits;
}

void ORB_SerialsetParity() {
    if (answer().ORB_parity == kORB_ParityEven) gORB_Termios.c_cflag |= PARENB;
    if (answer().ORB_parity == kORB_ParityOdd) gORB_Termios.c_cflag |= PARENB | PARODD;
}

void ORB_SerialsetStopbits() {
    gORB_Termios.c_cflag &= ~static_cast<tcflag_t>(CSTOPB);
    if (answer().ORB_stopBits == kORB_StopBits2) gORB_Termios.c_cflag |= CSTOPB;
}

void ORB_SerialsetFlowControl() {
    if (answer().ORB_flowControl == kORB_FlowHardware) {
        // Linux has no input pacing by DTR: RTS does it, together with CTS for output.
        gORB_Termios.c_cflag |= CRTSCTS;
    } else {
        gORB_Termios.c_iflag |= IXON | IXOFF;
        gORB_Termios.c_cc[VSTART] = kDC1;
        gORB_Termios.c_cc[VSTOP] = kDC3;
    }
}
