// Writing, closing, the other ways to open a port, and the ports that a call leaves open.
#include "serial/link.h"

#include "serial/line_setup.h"
#include "serial_fixture.h"
#include "support/steps.h"

#include <fcntl.h>

namespace {

using Link = SerialTest;

const scripted::Steps kNone, kDrainFails{{"tcdrain", fails(EIO)}};

// What a write took, and how it failed, is in the report of a print.
TEST_F(Link, WritesLeaveAStatus) {
    const scripted::Steps hasNoLines{{"TIOCMGET", fails(ENOTTY)}}, isRefused{{"write", fails(EIO)}};
    const struct {
        scripted::Steps steps;
        int32_t lines, errorID;
        const char *status;
    } cases[] = {
        {kNone, 0x102, kORB_NoError,
         "Handshake lines currently set to 258, DTR : ON DSR : ON RTS : OFF CTS : OFF CAR : OFF"},
        {kNone, 0x64, kORB_NoError, "Handshake lines currently set to 100, DTR : OFF DSR : OFF RTS : ON CTS : ON CAR : ON"},
        {hasNoLines, 0, kORB_NoError,
         "[Vectorix Foundation] :error getting handshake line /dev/ttyUSB0 - Inappropriate ioctl for device(25)"},
        {isRefused, 0, kORB_ErrorUnvalidPort, "write returned errno 5"},
        {kDrainFails, 0, kORB_NoError, "[Vectorix Foundation] : tcdrain error at writing on serial port !"},
    };
    for (const auto &c : cases) {
        reset();
        givenPort();
        terminal.modemWord = c.lines;
        script(platform, c.steps);
        EXPECT_EQ(ORB_SerialwritePlotter(), 0);
        EXPECT_EQ(answer().ORB_errorID, c.errorID) << c.status;
        EXPECT_EQ(statusText(), c.status);
    }
}

template <auto operation> int32_t returning() { return operation(), 0; }

TEST_F(Link, CallsInOrder) {
    constexpr auto kRead = ORB_Serialopen_Keyspan2Read, kWrite = ORB_SerialwritePlotter, k6 = ORB_VectorixService6;
    constexpr auto kStandard = returning<ORB_Serialopen_std>, kHangUp = returning<ORB_Serial_forcePlotterHangUp>;
    const scripted::Steps isHeld{{"TIOCEXCL", fails(EIO)}}, firstIs0{{"open", gives(0)}};
    const std::string full(256, 'x'); // no room for a NUL
    const struct {
        const char *what;
        int32_t (*operation)();
        int16_t port; ///< before
        std::string text;
        scripted::Steps steps;
        int32_t errorID;
        int16_t portAfter;
        std::string calls;
    } cases[] = {
        {"a port before is forgotten", ORB_VectorixService5, 9, "IN;", kNone, 22007, 5,
         "open /dev/ttyUSB0 rw|nonblock|append, tcgetattr 5, tcsetattr 5 TCSADRAIN, fcntl 5 F_SETFL 0, fcntl 5 F_SETFL 0, "
         "tcsetattr 5 TCSADRAIN, TIOCMGET 5, TIOCMSET 5 0x126, tcsetattr 5 TCSADRAIN, TIOCMGET 5, TIOCMSET 5 0x126, "
         "TIOCMGET 5, write 5 \"IN;\", tcdrain 5, "},
        {"exclusive use refused", kRead, -1, "", isHeld, 24003, -1,
         "open /dev/ttyUSB0 rw|append, fcntl 5 F_SETFL 0, TIOCEXCL 5, close 5, "},
        {"without settings", kStandard, -1, "", firstIs0, 0, 5,
         "open /dev/ttyUSB0 rw, fcntl 0 F_SETFL 0, open /dev/ttyUSB0 rw, fcntl 5 F_SETFL 0, "},
        {"hang-up", kHangUp, -1, "", kNone, 0, -1,
         "open /dev/ttyUSB0 rw, tcgetattr 5, tcgetattr 5, tcsetattr 5 TCSANOW, sleep 1, tcsetattr 5 TCSANOW, close 5, "},
        {"no text", kWrite, 5, std::string(1, '\0'), kNone, 22007, 5, "TIOCMGET 5, write 5 \"\", tcdrain 5, "},
        {"full", kWrite, 5, full, kNone, 22007, 5, "TIOCMGET 5, write 5 \"" + full + "\", tcdrain 5, "},
        {"no port", kWrite, 0, "", kNone, 25002, 0,
         "out \"ORB_SerialwritePlotter kORB_ErrorUnvalidPort, kernResult = 0 \\x0a\", "},
        {"close", k6, 5, "", kDrainFails, 22007, -1, "tcdrain 5, sleep 2, TIOCNXCL 5, close 5, "},
        {"close of nothing", k6, -1, "", kNone, 22007, -1, ""},
        {"which leaves the identifier", ORB_SerialclosePort, 0, "", kNone, 0, -1, ""},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.what);
        reset();
        givenPort();
        answer().ORB_errorID = 0;
        answer().ORB_portFD = c.port;
        terminal.attributes[5].c_cflag = B2400;
        c.text.copy(answer().ORB_writeBuffer, sizeof answer().ORB_writeBuffer);
        script(platform, c.steps);
        EXPECT_EQ(c.operation(), c.errorID == kORB_ErrorSetExclusive ? -1 : 0);
        EXPECT_EQ(answer().ORB_errorID, c.errorID);
        EXPECT_EQ(answer().ORB_portFD, c.portAfter);
        std::string calls;
        for (const std::string &call : platform.log)
            calls += call + ", ";
        EXPECT_EQ(calls, c.calls);
        EXPECT_TRUE(c.operation != kHangUp || cfgetospeed(&terminal.attributes[5]) == B2400); // as before
    }
}

class OpenPorts : public SerialTest {
protected:
    static int open(const char *path) {
        snprintf(gORB_bsdPath, sizeof gORB_bsdPath, "%s", path);
        return serial::openPort(O_RDWR);
    }
    static void nextCall(int keptFD) {
        serial::endCall(keptFD);
        serial::beginCall();
    }
    bool isOpen(int fd) const { return terminal.openPaths.contains(fd); }
};

TEST_F(OpenPorts, ForgottenOnesOfTheSameDeviceAreClosed) {
    platform.script("open", gives(0));
    const int zero = open("/dev/a"), first = open("/dev/a");
    nextCall(first);
    const int other = open("/dev/b");
    nextCall(other);
    EXPECT_TRUE(isOpen(first)); // nothing on its device was opened in that call
    const int second = open("/dev/a"), third = open("/dev/a");
    nextCall(second);
    EXPECT_FALSE(isOpen(first) || isOpen(third));
    nextCall(-1);
    EXPECT_TRUE(isOpen(second)); // a call that opens nothing closes nothing
    serial::closePort(open("/dev/a"));
    nextCall(-1);
    EXPECT_FALSE(isOpen(second)); // though the new one is closed again already
    EXPECT_TRUE(isOpen(other) && isOpen(zero));
}

TEST_F(OpenPorts, ADescriptorThatTheHostTookOverIsNotClosed) {
    const int first = open("/dev/a");
    nextCall(first);
    terminal.openPaths[first] = "/home/user/drawing"; // closed by the host, and its number used anew
    nextCall(open("/dev/a"));
    terminal.openPaths[first] = "/dev/a"; // what was given up once is not taken back
    nextCall(open("/dev/a"));
    EXPECT_TRUE(isOpen(first));

    const int closed = open("/dev/b");
    serial::closePort(closed);
    terminal.openPaths[closed] = "/dev/b"; // the host opens the port for itself
    nextCall(open("/dev/b"));
    EXPECT_TRUE(isOpen(closed));
}

TEST_F(OpenPorts, ANumberThatTheHostGaveBackIsNotedAnew) {
    nextCall(open("/dev/a"));
    terminal.openPaths.clear(); // closed by the host
    terminal.nextDescriptor = 5;
    const int reused = open("/dev/b");
    nextCall(reused);
    nextCall(open("/dev/b"));
    EXPECT_FALSE(isOpen(reused));
}

} // namespace
