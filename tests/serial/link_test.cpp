// Writing, closing, and the ports that a call leaves open.
#include "serial/link.h"

#include "serial_fixture.h"

#include <fcntl.h>

namespace {

using Link = SerialTest;

TEST_F(Link, WriteOutcomes) {
    const struct {
        const char *what;
        scripted::Outcome ask, write, drain;
        int32_t lines, errorID, taken, linkStatus;
        const char *status;
    } cases[] = {
        {"taken", gives(0), gives(3), gives(0), 0x102, kORB_NoError, 3, 0,
         "Handshake lines currently set to 258, DTR : ON DSR : ON RTS : OFF CTS : OFF CAR : OFF"},
        {"short", gives(0), gives(1), gives(0), 0x64, kORB_NoError, 1, EAGAIN,
         "Handshake lines currently set to 100, DTR : OFF DSR : OFF RTS : ON CTS : ON CAR : ON"},
        {"no modem lines", fails(ENOTTY), gives(3), gives(0), 0, kORB_NoError, 3, 0,
         "[Vectorix Foundation] :error getting handshake line /dev/ttyUSB0 - Inappropriate ioctl for device(25)"},
        {"refused", gives(0), fails(EIO), gives(0), 0, kORB_ErrorUnvalidPort, 0, EIO, "write returned errno 5"},
        {"not drained", gives(0), gives(3), fails(EIO), 0, kORB_NoError, 0, EIO,
         "[Vectorix Foundation] : tcdrain error at writing on serial port !"},
        {"refused, not drained", gives(0), fails(ENXIO), fails(EIO), 0, kORB_ErrorUnvalidPort, 0, ENXIO,
         "[Vectorix Foundation] : tcdrain error at writing on serial port !"},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.what);
        reset();
        givenPort();
        terminal.modemWord = c.lines;
        platform.script("TIOCMGET", c.ask);
        platform.script("write", c.write);
        platform.script("tcdrain", c.drain);
        EXPECT_EQ(ORB_SerialwritePlotter(), 0);
        EXPECT_EQ(platform.log, (Log{"TIOCMGET 5", "write 5 \"IN;\"", "tcdrain 5"}));
        EXPECT_EQ(answer().ORB_errorID, c.errorID);
        EXPECT_EQ(gORB_FoundationStruct.lastWrite.taken, c.taken);
        EXPECT_EQ(gORB_FoundationStruct.lastWrite.status, c.linkStatus);
        EXPECT_EQ(statusText(), c.status);
    }
}

TEST_F(Link, WritesWhatTheBufferHolds) {
    givenPort();
    answer().ORB_writeBuffer[0] = 0;
    ORB_SerialwritePlotter();
    EXPECT_EQ(platform.log, (Log{"TIOCMGET 5", "write 5 \"\"", "tcdrain 5"}));
    memset(answer().ORB_writeBuffer, 'x', sizeof answer().ORB_writeBuffer); // no room for a NUL
    ORB_SerialwritePlotter();
    EXPECT_EQ(terminal.written, std::string(256, 'x'));

    answer().ORB_portFD = 0;
    EXPECT_EQ(ORB_SerialwritePlotter(), 0);
    EXPECT_EQ(platform.console.out, "ORB_SerialwritePlotter kORB_ErrorUnvalidPort, kernResult = 0 \n");
    EXPECT_EQ(answer().ORB_errorID, kORB_ErrorUnvalidPort);
    EXPECT_EQ(gORB_FoundationStruct.lastWrite.status, EBADF);
    EXPECT_EQ(ORB_SerialclosePort(), 0); // leaves the identifier
    EXPECT_EQ(answer().ORB_errorID, kORB_ErrorUnvalidPort);
    EXPECT_EQ(answer().ORB_portFD, -1);
}

TEST_F(Link, Close) {
    answer().ORB_errorID = 0;
    EXPECT_EQ(ORB_VectorixService6(), 0);
    EXPECT_EQ(answer().ORB_errorID, kORB_NoError);
    EXPECT_TRUE(platform.log.empty());

    givenPort();
    answer().ORB_errorID = kORB_ErrorUnvalidPort;
    platform.script("tcdrain", fails(EIO));
    EXPECT_EQ(ORB_VectorixService6(), 0);
    EXPECT_EQ(answer().ORB_lastService, 6);
    EXPECT_EQ(platform.log, (Log{"tcdrain 5", "sleep 2", "TIOCNXCL 5", "close 5"}));
    EXPECT_EQ(statusText(), "Error waiting for drain - Input/output error(5)");
    EXPECT_EQ(answer().ORB_errorID, kORB_NoError);
    EXPECT_EQ(answer().ORB_portFD, -1);
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
    EXPECT_TRUE(isOpen(first));
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
