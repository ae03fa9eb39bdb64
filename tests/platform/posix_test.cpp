#include "support/scripted.h"

#include "platform/posix/stop.h"

#include <gtest/gtest.h>

#include <atomic>
#include <csignal>
#include <fcntl.h>
#include <poll.h>
#include <sys/time.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace {

struct Call {
    Call() { platform::beginCall(); }
    ~Call() { platform::endCall(); }
};

/// Both ends of a pseudo-terminal: the line as the plug-in opens it, and what a plotter would hold.
struct Pty {
    Pty() : far(posix_openpt(O_RDWR | O_NOCTTY)) {
        grantpt(far);
        unlockpt(far);
        path = ptsname(far);
        line = posix::open(path.c_str(), O_RDWR);
        termios raw;
        posix::tcgetattr(line, &raw);
        cfmakeraw(&raw);
        posix::tcsetattr(line, TCSANOW, &raw);
    }
    ~Pty() {
        posix::close(line);
        ::close(far);
    }
    int far, line;
    std::string path;
};

/// Repeats a stop, as hosts do, until its owner has seen the end of what was to be stopped.
class Stopper {
public:
    explicit Stopper(const std::function<void()> &stop)
        : thread_([this, stop] {
              while (!done_) {
                  stop();
                  ::poll(nullptr, 0, 1);
              }
          }) {}
    ~Stopper() {
        done_ = true;
        thread_.join();
    }

private:
    std::atomic<bool> done_{false};
    std::thread thread_;
};

bool stopIsReadable() {
    pollfd stop{platform::stopDescriptor(), POLLIN, 0};
    return ::poll(&stop, 1, 0) == 1;
}

TEST(Stop, LivesFromTheRequestToTheEndOfTheCall) {
    platform::requestStop();
    EXPECT_FALSE(platform::stopRequested()) << "no call in progress";
    for (int round = 0; round < 2; ++round) {
        Call call;
        EXPECT_FALSE(platform::stopRequested() || stopIsReadable());
        platform::requestStop();
        platform::requestStop();
        EXPECT_TRUE(platform::stopRequested() && stopIsReadable());
    }
    EXPECT_FALSE(platform::stopRequested());
}

TEST(Stop, WhatCanBlockFailsAtOnceWithoutTouchingTheLine) {
    scripted::Platform scripted;
    Call call;
    platform::requestStop();
    termios attributes = {};
    char c = 0;
    const auto interrupted = [](auto result) { return result == -1 && errno == EINTR; };
    EXPECT_TRUE(interrupted(posix::open("/dev/ttyS0", O_RDWR)));
    EXPECT_TRUE(interrupted(posix::write(5, "x", 1)));
    EXPECT_TRUE(interrupted(posix::read(5, &c, 1)));
    EXPECT_TRUE(interrupted(posix::tcdrain(5)));
    EXPECT_TRUE(interrupted(posix::tcsetattr(5, TCSADRAIN, &attributes)));
    posix::sleep(1000);
    EXPECT_EQ(scripted.log, scripted::Log());
}

TEST(Stop, FromAnotherThreadEndsWhatBlocks) {
    Pty pty;
    const std::string text(1 << 20, 'x');
    char c;
    const struct {
        const char *what;
        std::function<ssize_t()> block;
    } cases[] = {
        {"write", [&] { return posix::write(pty.line, text.data(), text.size()); }}, // nobody reads at the far end
        {"write to a full line", [&] { return posix::write(pty.line, text.data(), text.size()); }},
        {"read", [&] { return posix::read(pty.line, &c, 1); }},
        {"sleep", [&] { return posix::sleep(1000), 0; }},
    };
    for (const auto &blocked : cases) {
        Call call;
        Stopper stopper(platform::requestStop);
        EXPECT_LT(blocked.block(), ssize_t(text.size())) << blocked.what;
        EXPECT_TRUE(platform::stopRequested()) << blocked.what;
    }
}

TEST(Stop, ARepeatedRequestEndsACallThatTheFirstCameTooEarlyFor) {
    Pty pty;
    Call call;
    const Stopper stopper(platform::requestStop);
    while (!platform::stopRequested())
        ::poll(nullptr, 0, 0);
    char c;
    // Past the check for a stop, as if the request had come right behind it.
    EXPECT_EQ(platform::backends().terminal->read(pty.line, &c, 1), -1);
    EXPECT_EQ(errno, EINTR);
}

std::atomic<int> alarms{0};
void (*atAlarm)() = nullptr;
int farEnd = -1;

/// Interrupts the test's thread without end. Only what act() does, at each 50th time, lets the call under test go on.
class Alarms {
public:
    explicit Alarms(void (*act)()) {
        alarms = 0;
        atAlarm = act;
        struct sigaction action = {};
        action.sa_handler = [](int) {
            const int savedErrno = errno;
            if (++alarms % 50 == 0) atAlarm();
            errno = savedErrno;
        };
        sigaction(SIGALRM, &action, nullptr);
        const itimerval often = {{0, 300}, {0, 300}};
        setitimer(ITIMER_REAL, &often, nullptr);
    }
    ~Alarms() {
        const itimerval never = {};
        setitimer(ITIMER_REAL, &never, nullptr);
        signal(SIGALRM, SIG_IGN); // one that is still on its way must not end the program
        EXPECT_GE(alarms, 50);
    }
};

TEST(Stop, OtherSignalsInterruptNothing) {
    {
        Call call;
        const Alarms interruptions(platform::requestStop);
        posix::sleep(1000);
    }
    Pty pty;
    farEnd = pty.far;
    fcntl(farEnd, F_SETFL, O_NONBLOCK);
    {
        char c = 0;
        const Alarms interruptions([] { [[maybe_unused]] ssize_t ignored = ::write(farEnd, "x", 1); });
        EXPECT_EQ(posix::read(pty.line, &c, 1), 1);
    }
    const Alarms interruptions([] {
        char taken[4096];
        while (::read(farEnd, taken, sizeof taken) > 0) {
        }
    });
    const std::string text(1 << 17, 'x'); // more than the line holds
    for (size_t sent = 0; sent < text.size();) {
        const ssize_t count = posix::write(pty.line, text.data() + sent, text.size() - sent);
        ASSERT_GT(count, 0) << strerror(errno);
        sent += static_cast<size_t>(count);
    }
}

TEST(Stop, NoRequestReachesTheNextCall) {
    std::atomic<bool> done{false};
    std::thread host([&] {
        while (!done)
            platform::requestStop();
    });
    for (int i = 0; i < 20'000; ++i) {
        platform::beginCall();
        // Some calls end while a request is just being made.
        while (i % 1000 == 0 && !platform::stopRequested())
            std::this_thread::yield();
        platform::endCall();
        EXPECT_FALSE(stopIsReadable()) << "after the call";
        EXPECT_FALSE(platform::stopRequested());
        if (HasFailure()) break;
    }
    done = true;
    host.join();
}

TEST(Stop, AChildProcessIsOnItsOwn) {
    const Call call;
    const pid_t child = fork();
    if (child == 0) {
        platform::requestStop(); // no call of the child's is in progress
        if (platform::stopRequested()) _exit(1);
        platform::beginCall();
        platform::requestStop();
        _exit(platform::stopRequested() && stopIsReadable() ? 0 : 2);
    }
    int status = -1;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
    EXPECT_FALSE(platform::stopRequested());
    EXPECT_FALSE(stopIsReadable()) << "the child's stop reached its parent";
}

TEST(Terminal, OpenIsPrivateAndIdentityFollowsTheDevice) {
    Pty pty, other;
    EXPECT_EQ(fcntl(pty.line, F_GETFD) & FD_CLOEXEC, FD_CLOEXEC);
    const int again = posix::open(pty.path.c_str(), O_RDWR | O_NONBLOCK);
    ASSERT_GE(again, 0);
    platform::DeviceIdentity first, second, third;
    EXPECT_EQ(posix::identify(pty.line, &first), 0);
    EXPECT_EQ(posix::identify(again, &second), 0);
    EXPECT_EQ(posix::identify(other.line, &third), 0);
    EXPECT_EQ(first, second);
    EXPECT_FALSE(first == third);
    EXPECT_EQ(fcntl(again, F_GETFL) & O_NONBLOCK, O_NONBLOCK);
    EXPECT_EQ(posix::setStatusFlags(again, 0), 0);
    EXPECT_EQ(fcntl(again, F_GETFL) & O_NONBLOCK, 0);
    EXPECT_EQ(posix::close(again), 0);
    EXPECT_EQ(posix::identify(again, &second), -1);
}

TEST(Console, AHostsFunctionTakesAllText) {
    std::string heard[2]; // out, err
    const auto hear = [](const char *text, unsigned length, int isError, void *context) {
        static_cast<std::string *>(context)[isError].append(text, length);
    };
    platform::setConsoleFunction(hear, heard);
    posix::puts("a line");
    posix::printf("%d of %s\n", 1, std::string(5000, 'x').c_str());
    errno = ENOENT;
    posix::perror("port");
    posix::perror("");
    CFShowStr(CFRef(CFStringCreateWithUTF8("shown")).get());
    CFShowStr(0);
    platform::setConsoleFunction(nullptr, nullptr);
    EXPECT_EQ(heard[0], "a line\n1 of " + std::string(5000, 'x') + "\n");
    EXPECT_EQ(heard[1], "port: No such file or directory\nNo such file or directory\nshown\n(null)\n");
}

TEST(Console, StandardStreamsOtherwise) {
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    posix::puts("out");
    posix::eprintf("err %d\n", 5);
    posix::flushConsole();
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "out\n");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "err 5\n");
}

} // namespace
