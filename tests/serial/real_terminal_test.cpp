// The serial road on the system's own terminals; only the clock and the console are scripted.
#include "serial/link.h"

#include "serial_fixture.h"

#include <cstdlib>
#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

namespace {

class RealTerminal : public SerialTest {
protected:
    RealTerminal() { platform::backends().terminal = system_; }

private:
    static inline platform::Terminal *const system_ = platform::backends().terminal;
};

TEST_F(RealTerminal, WritesToAPseudoTerminal) {
    const int plotter = posix_openpt(O_RDWR | O_NOCTTY);
    ASSERT_TRUE(plotter >= 0 && grantpt(plotter) == 0 && unlockpt(plotter) == 0);
    CFRef path(CFStringCreateWithUTF8(ptsname(plotter)));
    answer().ORB_CFSTR_bsdIn_VectorixDevice = path.get();
    answer().ORB_EmulationID = 17008;
    answer().ORB_baudRate = 4800;
    answer().ORB_dataBits = kORB_DataBits8;
    strcpy(answer().ORB_writeBuffer, "PU0,0;\n");
    EXPECT_EQ(ORB_VectorixService5(), 0);
    EXPECT_EQ(answer().ORB_errorID, kORB_NoError);

    const int fd = answer().ORB_portFD;
    termios line{};
    EXPECT_EQ(tcgetattr(fd, &line), 0);
    EXPECT_EQ(line.c_cflag, tcflag_t{B4800 | CS8 | CREAD | CLOCAL});
    EXPECT_EQ(line.c_iflag, tcflag_t{IXON | IXOFF});
    EXPECT_EQ(fcntl(fd, F_GETFL) & (O_ACCMODE | O_NONBLOCK | O_APPEND), O_RDWR);

    std::string heard;
    pollfd readable{plotter, POLLIN, 0};
    char byte;
    while (heard.size() < 9 && poll(&readable, 1, 5000) == 1 && read(plotter, &byte, 1) == 1)
        heard += byte;
    EXPECT_EQ(heard, ";:PU0,0;\n");

    EXPECT_EQ(ORB_VectorixService6(), 0);
    EXPECT_EQ(platform.clock.slept, 2U);
    EXPECT_EQ(fcntl(fd, F_GETFD), -1);
    close(plotter);
}

TEST_F(RealTerminal, WhatIsNoSerialPort) {
    answer().ORB_CFSTR_bsdIn_VectorixDevice = platform::constantString("/dev/null");
    EXPECT_EQ(ORB_SerialopenPort(), 0);
    EXPECT_EQ(answer().ORB_errorID, kORB_ErrorGetAttributes);
    EXPECT_EQ(answer().ORB_portFD, -1);

    answer().ORB_portFD = 9;
    strcpy(gORB_bsdPath, "/dev/no-such-port");
    ORB_Serialopen_Keyspan2Read(); // no retry; the setup's identifier stays
    EXPECT_EQ(answer().ORB_errorID, kORB_ErrorGetAttributes);
    EXPECT_EQ(answer().ORB_portFD, -1);
    EXPECT_EQ(platform.clock.slept, 0U);
}

} // namespace
