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
        {"5 bits, 134.5 bit/s", 134, 0, 0, 0, 0, B134 | CS5},
        {"hang-up speed", 0, 768, 0, 0, 0, B0 | CS8},
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
        const char *what;
        scripted::Outcome first, second; ///< of the two final settings
        const char *status;
        int32_t errorID, timesRaised;
    } cases[] = {
        {"none", gives(0), gives(0), "", kORB_NoError, 2},
        {"first", gives(1), gives(0), "ioctl - TIOCSETA (called by tcsetattr) returned 1 (errno 22)",
         kORB_ErrorSetAttributes, 1},
        {"second", gives(0), fails(EIO), "", kORB_ErrorSetAttributes, 1},
        {"second, but not with -1", gives(0), gives(1), "", kORB_NoError, 2},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.what);
        reset();
        givenPort();
        terminal.modemWord = 0x20;
        platform.script("tcsetattr", fails(EINVAL)); // the raw mode's result does not count
        platform.script("tcsetattr", c.first);
        platform.script("tcsetattr", c.second);
        ORB_Serialsetc_cflag();
        EXPECT_EQ(answer().ORB_errorID, c.errorID);
        EXPECT_EQ(statusText(), c.status);
        EXPECT_EQ(std::count(platform.log.begin(), platform.log.end(), "TIOCMSET 5 0x22"), c.timesRaised);
    }
}

TEST_F(LineSetup, AppliesNothingWithoutTheOldAttributes) {
    givenPort();
    gORB_Termios.c_cflag = CS7 | PARENB;
    platform.script("tcgetattr", fails(EIO));
    ORB_Serialsetc_cflag();
    EXPECT_EQ(answer().ORB_errorID, kORB_ErrorGetAttributes);
    EXPECT_EQ(platform.log, Log{"tcgetattr 5"});
    ORB_SerialsetParity(); // none asked for: what is set stays
    EXPECT_EQ(gORB_Termios.c_cflag, tcflag_t{CS7 | PARENB});
}

TEST_F(LineSetup, ModemLineOperations) {
    const struct {
        const char *request;
        int32_t (*operation)();
        const char *log;
        int32_t result, failed, errorID;
        const char *status, *failedStatus;
    } cases[] = {
        {"TIOCEXCL", ORB_Serialset_OpenExclusive, "TIOCEXCL 5", 1, 0, kORB_ErrorSetExclusive, "", ""},
        {"TIOCNXCL", ORB_Serialset_OpenAuthorised, "TIOCNXCL 5", 1, 0, kORB_ErrorClearExclusive, "", ""},
        {"TIOCMBIS", ORB_SerialsetDTR, "TIOCMBIS 5 0x2", 0, -1, kORB_NoError, "", ""},
        {"TIOCMBIC", ORB_SerialclearDTR, "TIOCMBIC 5 0x2", 0, -1, kORB_NoError, "", ""},
        {"TIOCMGET", ORB_SerialgetDTR, "TIOCMGET 5", 0x160, 0x2, kORB_NoError, "", ""},
        {"TIOCMGET", ORB_SerialgetDCD, "TIOCMGET 5", 0x160, 0x40, kORB_NoError, "", ""},
        {"TIOCMGET", ORB_SerialgetCurrentHandshake, "TIOCMGET 5", 0x160, 0x126, kORB_NoError,
         "Handshake lines currently set to 352", "Error getting DTR lines /dev/ttyUSB0 - Input/output error(5)"},
    };
    terminal.modemWord = 0x160;
    for (const auto &c : cases) {
        SCOPED_TRACE(c.log);
        reset();
        givenPort();
        EXPECT_EQ(c.operation(), c.result);
        EXPECT_EQ(platform.log, Log{c.log});
        EXPECT_EQ(answer().ORB_errorID, kORB_NoError);
        EXPECT_EQ(statusText(), c.status);
        platform.script(c.request, fails(EIO));
        EXPECT_EQ(c.operation(), c.failed);
        EXPECT_EQ(answer().ORB_errorID, c.errorID);
        EXPECT_EQ(statusText(), c.failedStatus);
    }
}

TEST_F(LineSetup, WaitForClearToSend) {
    struct : scripted::Terminal {
        using scripted::Terminal::Terminal;
        int requests = 0, clearAt = 3;
        int ioctl(int, unsigned long, int *lines) override {
            if (++requests > 3) return -1;
            *lines = requests == clearAt ? 0x26 : 0x6;
            return 0;
        }
    } line{platform};
    platform::backends().terminal = &line;
    EXPECT_EQ(ORB_SerialgetCTS(), 0x26);
    EXPECT_EQ(line.requests, 3);
    line.requests = line.clearAt = 0;
    EXPECT_EQ(ORB_SerialgetCTS(), 0x6); // the last word that was read
    EXPECT_EQ(line.requests, 10'000'000);
    platform::backends().terminal = &terminal;
}

} // namespace
