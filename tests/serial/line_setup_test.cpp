#include "serial/line_setup.h"

#include "serial_fixture.h"

#include <algorithm>

namespace {

using LineSetup = SerialTest;

TEST_F(LineSetup, BuildsTheLineFromTheRecordAlone) {
    constexpr struct {
        const char *what;
        int32_t baudRate, dataBits, parity, stopBits, flowControl;
        tcflag_t flags;
    } kLines[] = {
        {"8 bits, no parity, 1 stop bit, XON/XOFF", 9600, 768, 0, 0, 0, B9600 | CS8},
        {"7 bits, even, 2 stop bits, hardware", 2400, 512, 4096, 1024, 1, B2400 | CS7 | PARENB | CSTOPB | CRTSCTS},
        {"6 bits, odd", 38400, 256, 8192, 0, 0, B38400 | CS6 | PARENB | PARODD},
        {"5 bits, hang-up speed", 0, 0, 0, 0, 0, B0 | CS5},
        {"115200 is not a classic rate", 115200, 768, 0, 0, 0, B9600 | CS8},
        {"numbers that are no codes", B38400, 8, 2, 2, 2, B9600 | CS5},
    };
    constexpr tcflag_t kEarlier = 037777 & ~IUCLC; // all that an earlier program may have left of the input's flags
    for (const auto &line : kLines) {
        SCOPED_TRACE(line.what);
        givenPort();
        termios &port = terminal.attributes[5] = {};
        port.c_cflag = ~tcflag_t{0}; // a split speed among them
        port.c_iflag = kEarlier;
        port.c_lflag = ICANON | ECHO;
        port.c_cc[VSTART] = port.c_cc[VSTOP] = 1;
        answer().ORB_baudRate = line.baudRate;
        answer().ORB_dataBits = line.dataBits;
        answer().ORB_parity = line.parity;
        answer().ORB_stopBits = line.stopBits;
        answer().ORB_flowControl = line.flowControl;
        ORB_Serialsetc_cflag();

        const bool hardware = line.flowControl == 1;
        EXPECT_EQ(port.c_cflag, line.flags | CREAD | CLOCAL);
        EXPECT_EQ(port.c_iflag & kEarlier, IGNBRK | (hardware ? 0U : IXON | IXOFF));
        EXPECT_EQ(port.c_lflag, 0U);
        EXPECT_EQ(port.c_cc[VSTART], hardware ? 1 : 0x11);
        EXPECT_EQ(port.c_cc[VSTOP], hardware ? 1 : 0x13);
    }
}

TEST_F(LineSetup, ReportsRefusedAttributes) {
    const struct {
        scripted::Outcome first, second; ///< of the two final settings
        const char *status;
        int32_t errorID, timesRaised;
    } cases[] = {
        {gives(1), gives(0), "ioctl - TIOCSETA (called by tcsetattr) returned 1 (errno 22)", kORB_ErrorSetAttributes, 1},
        {gives(0), fails(EIO), "", kORB_ErrorSetAttributes, 1},
        {gives(0), gives(1), "", kORB_NoError, 2}, // only -1 counts there
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(testing::Message() << c.first.result << " " << c.second.result);
        reset();
        givenPort();
        terminal.modemWord = 0x20;
        for (const auto &outcome : {fails(EINVAL), c.first, c.second}) // the raw mode's result does not count
            platform.script("tcsetattr", outcome);
        ORB_Serialsetc_cflag();
        EXPECT_EQ(answer().ORB_errorID, c.errorID);
        EXPECT_EQ(statusText(), c.status);
        EXPECT_EQ(std::count(platform.log.begin(), platform.log.end(), "TIOCMSET 5 0x22"), c.timesRaised);
    }
}

TEST_F(LineSetup, AppliesNothingWithoutTheOldAttributes) {
    givenPort();
    platform.script("tcgetattr", fails(EIO));
    ORB_Serialsetc_cflag();
    EXPECT_EQ(answer().ORB_errorID, kORB_ErrorGetAttributes);
    EXPECT_EQ(platform.log, Log{"tcgetattr 5"});
}

} // namespace
