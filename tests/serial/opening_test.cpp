// Opening the port: by the services and in the other ways.
#include "serial/link.h"

#include "serial/line_setup.h"
#include "serial_fixture.h"

#include <fcntl.h>
#include <poll.h>
#include <thread>
#include <unistd.h>

namespace {

using Opening = SerialTest;

struct Step {
    const char *call;
    scripted::Outcome outcome;
    int times = 1;
};

struct OpenCase {
    const char *what;
    int32_t (*operation)();
    const char *path; ///< nullptr: none
    std::vector<Step> steps;
    int32_t result, lastService, errorID, port;
    std::vector<int> open; ///< descriptors open afterwards
    unsigned slept;
    const char *written, *status;
};

constexpr auto kOpen = ORB_SerialopenPort;
constexpr auto k4 = ORB_VectorixService4;
constexpr auto k5 = ORB_VectorixService5;
constexpr const char *kPort = "/dev/ttyUSB0";
constexpr const char *kFirst = "fd=0, ORB_retry = 0";
constexpr const char *kLast = "fd=0, ORB_retry = 10";
constexpr const char *kSettingsRefused = "ioctl - TIOCSETA (called by tcsetattr) returned -1 (errno 5)";
constexpr const char *kStartRefused = "kORB_Serial_initPlotter=>ORB_ErrorWritingPort : numBytes == -1";
constexpr const char *kOpened = "Service 5 : ORB_SerialopenPort() done, no error";
constexpr const char *kWritten = "Service 5 : ORB_SerialwritePlotter() done, no error";
const std::vector<Step> kRefusedOnce{{"tcsetattr", gives(0)}, {"tcsetattr", fails(EIO)}};

// All with the emulation that has start-up bytes.
const OpenCase kOpens[] = {
    {"path not ASCII", kOpen, "/dev/\xC3\xA9", {}, 0, 0, 22007, -1, {}, 0, "", ""},
    {"late port", kOpen, kPort, {{"open", fails(EBUSY), 10}}, 0, 0, 22007, 5, {5}, 10, ";:", kLast},
    {"no port", kOpen, kPort, {{"open", fails(EBUSY), 11}}, 0, 0, 24001, -1, {}, 11, "", kLast},
    {"descriptor 0", kOpen, kPort, {{"open", gives(0)}}, 0, 0, 22007, 5, {0, 5}, 0, ";:", kFirst},
    {"only descriptor 0", kOpen, kPort, {{"open", gives(0)}, {"open", fails(EIO), 11}}, 0, 0, 24001, -1, {0}, 11, "", kLast},
    {"largest descriptor", kOpen, kPort, {{"open", gives(32767)}}, 0, 0, 22007, 32767, {32767}, 0, ";:", kFirst},
    {"too large a descriptor", kOpen, kPort, {{"open", gives(32768), 11}}, 0, 0, 24001, -1, {}, 11, "", kLast},
    {"attributes refused once", kOpen, kPort, kRefusedOnce, 0, 0, 24006, -1, {}, 0, "", kSettingsRefused},
    {"start-up refused", kOpen, kPort, {{"write", fails(EIO)}}, 0, 0, 25002, 5, {5}, 0, "", kStartRefused},
    {"4", k4, kPort, {}, 0, 4, 22007, 5, {5}, 0, ";:", "Service 4 : ORB_SerialopenPort() done, no error"},
    {"5", k5, kPort, {}, 0, 5, 22007, 5, {5}, 0, ";:IN;", kWritten},
    {"5, no path", k5, nullptr, {}, -1, 4, 27010, -1, {}, 0, "", "Service 5 : ORB_SerialopenPort() done but kernResult =-1"},
    {"5, no port", k5, kPort, {{"open", fails(EIO), 11}}, 0, 4, 24001, -1, {}, 11, "", kOpened},
    {"5, start-up refused", k5, kPort, {{"write", fails(EIO)}}, 0, 4, 22007, 5, {5}, 0, "IN;", kWritten},
};

TEST_F(Opening, ByTheServices) {
    for (const OpenCase &c : kOpens) {
        SCOPED_TRACE(c.what);
        reset();
        answer().ORB_EmulationID = 17008;
        answer().ORB_CFSTR_bsdIn_VectorixDevice = c.path ? platform::constantString(c.path) : 0;
        for (const Step &step : c.steps)
            platform.script(step.call, step.outcome, step.times);
        EXPECT_EQ(c.operation(), c.result);
        EXPECT_EQ(answer().ORB_lastService, c.lastService);
        EXPECT_EQ(answer().ORB_errorID, c.errorID);
        EXPECT_EQ(answer().ORB_portFD, c.port);
        std::vector<int> open;
        for (const auto &[fd, path] : terminal.openPaths)
            open.push_back(fd);
        EXPECT_EQ(open, c.open);
        EXPECT_EQ(platform.clock.slept, c.slept);
        EXPECT_EQ(terminal.written, c.written);
        EXPECT_EQ(statusText(), c.status);
    }
    answer().ORB_CFSTR_bsdIn_VectorixDevice = 0x7FFF1234; // a handle that the host made up
    EXPECT_EQ(ORB_SerialopenPort(), -1);
}

TEST_F(Opening, CallsInOrder) {
    answer().ORB_portFD = 9; // forgotten, not closed
    ORB_VectorixService5();
    EXPECT_EQ(platform.log,
              (Log{"open /dev/ttyUSB0 rw|nonblock|append", "tcgetattr 5", "tcsetattr 5 TCSADRAIN", "fcntl 5 F_SETFL 0",
                   "fcntl 5 F_SETFL 0", "tcsetattr 5 TCSADRAIN", "TIOCMGET 5", "TIOCMSET 5 0x126", "tcsetattr 5 TCSADRAIN",
                   "TIOCMGET 5", "TIOCMSET 5 0x126", "TIOCMGET 5", "write 5 \"IN;\"", "tcdrain 5"}));
}

TEST_F(Opening, InOtherWays) {
    platform.script("TIOCEXCL", fails(EIO));
    ORB_Serialopen_Keyspan2Read();
    EXPECT_EQ(platform.log, (Log{"open /dev/ttyUSB0 rw|append", "fcntl 5 F_SETFL 0", "TIOCEXCL 5", "close 5"}));
    EXPECT_EQ(answer().ORB_errorID, kORB_ErrorSetExclusive);
    EXPECT_EQ(answer().ORB_portFD, -1);
    platform.script("open", gives(0));
    ORB_Serialopen_Keyspan2Read();
    EXPECT_EQ(answer().ORB_portFD, 6);

    reset();
    platform.script("open", gives(0));
    ORB_Serialopen_std();
    EXPECT_EQ(platform.log, (Log{"open /dev/ttyUSB0 rw", "fcntl 0 F_SETFL 0", "open /dev/ttyUSB0 rw", "fcntl 5 F_SETFL 0"}));
    EXPECT_EQ(answer().ORB_portFD, 5);

    reset();
    terminal.attributes[5].c_cflag = B2400;
    ORB_Serial_forcePlotterHangUp();
    EXPECT_EQ(platform.log, (Log{"open /dev/ttyUSB0 rw", "tcgetattr 5", "tcgetattr 5", "tcsetattr 5 TCSANOW", "sleep 1",
                                 "tcsetattr 5 TCSANOW", "close 5"}));
    EXPECT_EQ(cfgetospeed(&terminal.attributes[5]), speed_t{B2400});
    EXPECT_EQ(answer().ORB_portFD, -1);
}

/// On the system's own terminals; only the clock and the console are scripted.
class RealTerminal : public SerialTest {
protected:
    RealTerminal() {
        platform::backends().terminal = system_;
        EXPECT_TRUE(plotter >= 0 && grantpt(plotter) == 0 && unlockpt(plotter) == 0);
    }
    ~RealTerminal() override { close(plotter); }

    const int plotter = posix_openpt(O_RDWR | O_NOCTTY);

private:
    static inline platform::Terminal *const system_ = platform::backends().terminal;
};

TEST_F(RealTerminal, WritesToAPseudoTerminal) {
    CFRef path(CFStringCreateWithUTF8(ptsname(plotter)));
    answer().ORB_CFSTR_bsdIn_VectorixDevice = path.get();
    answer().ORB_EmulationID = 17008;
    answer().ORB_baudRate = 4800;
    answer().ORB_dataBits = kORB_DataBits8;
    EXPECT_EQ(ORB_VectorixService5(), 0);
    EXPECT_EQ(answer().ORB_errorID, kORB_NoError);

    const int fd = answer().ORB_portFD;
    termios line{};
    EXPECT_EQ(tcgetattr(fd, &line), 0);
    EXPECT_EQ(line.c_cflag, tcflag_t{B4800 | CS8 | CREAD | CLOCAL});
    EXPECT_EQ(line.c_iflag, tcflag_t{IGNBRK | IXON | IXOFF});
    EXPECT_EQ(fcntl(fd, F_GETFL) & (O_ACCMODE | O_NONBLOCK | O_APPEND), O_RDWR);

    std::string heard;
    pollfd readable{plotter, POLLIN, 0};
    char byte;
    while (heard.size() < 5 && poll(&readable, 1, 5000) == 1 && read(plotter, &byte, 1) == 1)
        heard += byte;
    EXPECT_EQ(heard, ";:IN;");

    EXPECT_EQ(ORB_VectorixService6(), 0);
    EXPECT_EQ(fcntl(fd, F_GETFD), -1);
}

TEST_F(RealTerminal, APartTakenOutlivesTheErrorBehindIt) {
    const int line = posix::open(ptsname(plotter), O_RDWR);
    std::thread leaves([this] {
        pollfd readable{plotter, POLLIN, 0};
        poll(&readable, 1, 5000);
        close(plotter);
    });
    const std::string text(1 << 17, '\n'); // more than the line holds
    const ssize_t taken = posix::write(line, text.data(), text.size());
    EXPECT_TRUE(taken > 0 && taken < static_cast<ssize_t>(text.size())) << taken;
    leaves.join();
    posix::close(line);
}

} // namespace
