#include "serial/open_ports.h"

#include "serial_fixture.h"

#include <fcntl.h>

namespace {

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
    terminal.script("open", gives(0));
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

TEST_F(OpenPorts, AHundredThousandCallsLeaveOnePort) {
    for (int i = 0; i < 100'000; ++i) {
        terminal.nextDescriptor = 5 + i % 2;
        nextCall(open("/dev/a"));
        ASSERT_EQ(terminal.openPaths.size(), 1U);
        platform.log.clear();
    }
}

} // namespace
