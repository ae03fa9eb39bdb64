// Opening the port by the services, the line that it gets, and real terminals.
#include "serial/line_setup.h"
#include "serial/link.h"

#include "serial_fixture.h"
#include "support/steps.h"

#include <fcntl.h>
#include <poll.h>
#include <sstream>
#include <thread>
#include <unistd.h>

namespace {

using Opening = SerialTest;

constexpr auto kOpen = ORB_SerialopenPort, k4 = ORB_VectorixService4, k5 = ORB_VectorixService5;
constexpr const char *kPort = "/dev/ttyUSB0";
constexpr const char *kFirst = "fd=0, ORB_retry = 0", *kLast = "fd=0, ORB_retry = 10";
constexpr const char *kSettingsRefused = "ioctl - TIOCSETA (called by tcsetattr) returned -1 (errno 5)";
constexpr const char *kStartRefused = "kORB_Serial_initPlotter=>ORB_ErrorWritingPort : numBytes == -1";
constexpr const char *kNoPath = "Service 5 : ORB_SerialopenPort() done but kernResult =-1";
constexpr const char *kWritten = "Service 5 : ORB_SerialwritePlotter() done, no error";
const scripted::Steps kRefusedOnce{{"tcsetattr", gives(0)}, {"tcsetattr", fails(EIO)}};
const scripted::Steps kRefusedAtLast{{"tcsetattr", gives(0), 2}, {"tcsetattr", fails(EIO)}}, kNoStart{{"write", fails(EIO)}};

// All with the emulation that has start-up bytes.
const struct {
    const char *what;
    int32_t (*operation)();
    const char *path; ///< nullptr: none
    scripted::Steps steps;
    const char *outcome;   ///< the result, the last service, the identifier, the port
    std::vector<int> open; ///< descriptors open afterwards
    unsigned slept;
    const char *written, *status;
} kOpens[] = {
    {"late port", kOpen, kPort, {{"open", fails(EBUSY), 10}}, "0, 0, 22007, 5", {5}, 10, ";:", kLast},
    {"no port", kOpen, kPort, {{"open", fails(EBUSY), 11}}, "0, 0, 24001, -1", {}, 11, "", kLast},
    {"descriptor 0", kOpen, kPort, {{"open", gives(0)}}, "0, 0, 22007, 5", {0, 5}, 0, ";:", kFirst},
    {"largest descriptor", kOpen, kPort, {{"open", gives(32767)}}, "0, 0, 22007, 32767", {32767}, 0, ";:", kFirst},
    {"too large a descriptor", kOpen, kPort, {{"open", gives(32768), 11}}, "0, 0, 24001, -1", {}, 11, "", kLast},
    {"settings unreadable", kOpen, kPort, {{"tcgetattr", fails(EIO)}}, "0, 0, 24005, -1", {}, 0, "", kFirst},
    {"refused once", kOpen, kPort, kRefusedOnce, "0, 0, 24006, -1", {}, 0, "", kSettingsRefused},
    {"refused at last", kOpen, kPort, kRefusedAtLast, "0, 0, 24006, -1", {}, 0, "", kFirst},
    {"start-up refused", kOpen, kPort, kNoStart, "0, 0, 25002, 5", {5}, 0, "", kStartRefused},
    {"4", k4, kPort, {}, "0, 4, 22007, 5", {5}, 0, ";:", "Service 4 : ORB_SerialopenPort() done, no error"},
    {"5", k5, kPort, {}, "0, 5, 22007, 5", {5}, 0, ";:IN;", kWritten},
    {"5, no path", k5, nullptr, {}, "-1, 4, 27010, -1", {}, 0, "", kNoPath},
    {"5, start-up refused", k5, kPort, kNoStart, "0, 4, 22007, 5", {5}, 0, "IN;", kWritten},
};

TEST_F(Opening, ByTheServices) {
    for (const auto &c : kOpens) {
        SCOPED_TRACE(c.what);
        reset();
        answer().ORB_EmulationID = 17008;
        answer().ORB_CFSTR_bsdIn_VectorixDevice = c.path ? platform::constantString(c.path) : 0;
        script(platform, c.steps);
        std::ostringstream outcome;
        outcome << c.operation() << ", " << answer().ORB_lastService << ", " << answer().ORB_errorID << ", "
                << answer().ORB_portFD;
        EXPECT_EQ(outcome.str(), c.outcome);
        std::vector<int> open;
        for (const auto &[fd, path] : terminal.openPaths)
            open.push_back(fd);
        EXPECT_EQ(open, c.open);
        EXPECT_EQ(platform.clock.slept, c.slept);
        EXPECT_EQ(terminal.written, c.written);
        EXPECT_EQ(statusText(), c.status);
    }
}

TEST_F(Opening, BuildsTheLineFromTheRecordAlone) {
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
    const int fd = answer().ORB_portFD;
    termios line{};
    EXPECT_EQ(tcgetattr(fd, &line), 0);
    EXPECT_EQ(line.c_cflag, tcflag_t{B4800 | CS8 | CREAD | CLOCAL});
    EXPECT_EQ(line.c_iflag, tcflag_t{IGNBRK | IXON | IXOFF});
    EXPECT_EQ(fcntl(fd, F_GETFL) & (O_ACCMODE | O_NONBLOCK | O_APPEND), O_RDWR);

    std::string heard;
    for (char byte; heard.size() < 5 && read(plotter, &byte, 1) == 1;)
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
