// The port: opening it, its line, writing, closing, the other ways to open one, and the ports that a call leaves open.
#include "serial/link.h"

#include "platform/corefoundation/corefoundation.h"
#include "record/state.h"
#include "serial/line_setup.h"
#include "serial/open_ports.h"
#include "support/steps.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <poll.h>
#include <sstream>
#include <thread>
#include <unistd.h>

namespace {

using scripted::fails, scripted::gives, scripted::Steps;

std::string statusText() { return std::string(platform::stringView(answer().ORB_CFSTR_message)); }

class SerialTest : public testing::Test {
protected:
    SerialTest() { reset(); }

    /// A record with a text and a path, and no port open.
    void reset() {
        answer() = {};
        answer().ORB_portFD = -1;
        answer().ORB_errorID = kORB_NoError;
        answer().ORB_CFSTR_bsdIn_VectorixDevice = platform::constantString("/dev/ttyUSB0");
        strcpy(answer().ORB_writeBuffer, "IN;");
        strcpy(gORB_bsdPath, "/dev/ttyUSB0");
        serial::beginCall();
        terminal.openPaths.clear();
        terminal.nextDescriptor = 5;
        terminal.written.clear();
        platform.clock.slept = 0;
        platform.log.clear();
    }

    /// The port is open already, as descriptor 5.
    void givenPort() { terminal.openPaths[answer().ORB_portFD = 5] = gORB_bsdPath; }

    scripted::Platform platform;
    scripted::Terminal &terminal = platform.terminal;
};

using Opening = SerialTest;

constexpr auto kOpen = ORB_SerialopenPort, k4 = ORB_VectorixService4, k5 = ORB_VectorixService5;
constexpr const char *kPort = "/dev/ttyUSB0";
constexpr const char *kFirst = "fd=0, ORB_retry = 0", *kLast = "fd=0, ORB_retry = 10";
constexpr const char *kSettingsRefused = "ioctl - TIOCSETA (called by tcsetattr) returned -1 (errno 5)";
constexpr const char *kStartRefused = "kORB_Serial_initPlotter=>ORB_ErrorWritingPort : numBytes == -1";
constexpr const char *kNoPath = "Service 5 : ORB_SerialopenPort() done but kernResult =-1";
constexpr const char *kWritten = "Service 5 : ORB_SerialwritePlotter() done, no error";
const Steps kRefusedOnce{{"tcsetattr", gives(0)}, {"tcsetattr", fails(EIO)}};
const Steps kRefusedAtLast{{"tcsetattr", gives(0), 2}, {"tcsetattr", fails(EIO)}}, kNoStart{{"write", fails(EIO)}};

// All with the emulation that has start-up bytes.
const struct {
    const char *what;
    int32_t (*operation)();
    const char *path; ///< nullptr: none
    Steps steps;
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

using Link = SerialTest;

const Steps kNone, kDrainFails{{"tcdrain", fails(EIO)}};

// What a write took, and how it failed, is in the report of a print.
TEST_F(Link, WritesLeaveAStatus) {
    const Steps hasNoLines{{"TIOCMGET", fails(ENOTTY)}}, isRefused{{"write", fails(EIO)}};
    const struct {
        Steps steps;
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
    const Steps isHeld{{"TIOCEXCL", fails(EIO)}}, firstIs0{{"open", gives(0)}};
    const std::string full(256, 'x'); // no room for a NUL
    const struct {
        const char *what;
        int32_t (*operation)();
        int16_t port; ///< before
        std::string text;
        Steps steps;
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
