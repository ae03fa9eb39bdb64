#include "support/scripted.h"

#include "platform/posix/stop.h"

#include <gtest/gtest.h>

#include <atomic>
#include <csignal>
#include <fcntl.h>
#include <poll.h>
#include <pty.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace {

struct Call {
    Call() { platform::beginCall(); }
    ~Call() { platform::endCall(); }
};

/// Both ends of a pseudo-terminal: the plug-in's line, and what a plotter would hold.
struct Pty {
    Pty() {
        termios raw = {};
        posix::cfmakeraw(&raw);
        char name[64];
        openpty(&far, &line, name, &raw, nullptr);
        path = name;
    }
    ~Pty() {
        posix::close(line);
        ::close(far);
    }
    int far, line;
    std::string path;
};

/// How this thread and its process take signals.
std::vector<intptr_t> signals() {
    std::vector<intptr_t> all;
    sigset_t mask;
    pthread_sigmask(SIG_SETMASK, nullptr, &mask);
    for (int number = 1; number < NSIG; ++number) {
        struct sigaction action = {};
        sigaction(number, nullptr, &action);
        const int flags = action.sa_handler == SIG_DFL || action.sa_handler == SIG_IGN ? 0 : SA_SIGINFO | SA_RESTART;
        all.insert(all.end(),
                   {reinterpret_cast<intptr_t>(action.sa_handler), action.sa_flags & flags, sigismember(&mask, number)});
    }
    return all;
}

/// How a child process ended that did this: 0 for what returned 0 without a failure.
int inAChild(const std::function<int()> &act) {
    int status = -1;
    const pid_t child = fork();
    if (child == 0) {
        const int code = act();
        _exit(testing::Test::HasFailure() ? 1 : code);
    }
    waitpid(child, &status, 0);
    return status;
}

std::atomic<int> handled{0};

void handle(int) { ++handled; }

void handleInDetail(int, siginfo_t *info, void *context) { handled += context && info->si_pid == getpid() ? 1 : 99; }

void takeSignals(int flags, int first = 1, int last = NSIG - 1) {
    struct sigaction action = {};
    action.sa_flags = flags;
    action.sa_handler = handle;
    if ((flags & SA_SIGINFO) != 0) action.sa_sigaction = handleInDetail;
    for (int number = first; number <= last; ++number)
        sigaction(number, &action, nullptr);
}

TEST(Stop, LivesFromTheRequestToTheEndOfTheCall) {
    scripted::Platform scripted;
    platform::requestStop();
    EXPECT_FALSE(platform::stopRequested()) << "no call in progress";
    {
        Call call;
        EXPECT_FALSE(platform::stopRequested());
        platform::requestStop();
        EXPECT_TRUE(platform::stopRequested());
        termios attributes = {};
        char c = 0;
        for (long result : {long{posix::open("/dev/ttyS0", O_RDWR)}, posix::write(5, "x", 1), posix::read(5, &c, 1),
                            long{posix::tcdrain(5)}, long{posix::tcsetattr(5, 0, &attributes)}})
            EXPECT_EQ(result, -1);
        EXPECT_EQ(errno, EINTR);
        posix::sleep(1000);
    }
    EXPECT_FALSE(platform::stopRequested());
    EXPECT_EQ(scripted.log, scripted::Log()) << "what can block fails at once without touching the line";
}

TEST(Stop, EndsWhatBlocksAlsoWhenItCameTooEarly) {
    Pty pty;
    platform::Terminal &terminal = *platform::backends().terminal; // past the check for a stop, as if it came right behind
    const std::string text(1 << 20, 'x');
    char c;
    Call call;
    platform::requestStop();
    EXPECT_LT(terminal.write(pty.line, text.data(), text.size()), ssize_t(text.size())) << "nobody reads at the far end";
    EXPECT_LT(terminal.write(pty.line, text.data(), text.size()), ssize_t(text.size())) << "the line is full";
    EXPECT_EQ(terminal.read(pty.line, &c, 1), -1);
    EXPECT_EQ(errno, EINTR);
}

struct SignalHost {
    const char *what;
    void (*before)(), (*during)();
    int handled;
    bool isWoken = true;
};

int stopOnce(const SignalHost &host) {
    host.before();
    host.during();
    const auto expected = signals(); // what it changes during the call stays
    host.before();
    handled = 0;
    Pty pty;
    const int free = dup(STDIN_FILENO);
    ::close(free);
    {
        Call call;
        platform::mayBlock();
        EXPECT_EQ(dup(STDIN_FILENO), free) << "a host may close what it does not know, and get its number";
        host.during();
        std::thread stopping(platform::requestStop);
        char c;
        if (host.isWoken)
            EXPECT_EQ(posix::read(pty.line, &c, 1), -1);
        else
            posix::sleep(1000);
        stopping.join();
    }
    EXPECT_TRUE(signals() == expected);
    return handled - host.handled;
}

TEST(Stop, ReachesAllHostsAndLeavesThemAsTheyWere) {
    constexpr auto nothing = [] {};
    constexpr auto sendBoth = [] { raise(SIGURG), raise(SIGWINCH); };
    constexpr auto blockAll = [] {
        sigset_t all;
        sigfillset(&all);
        pthread_sigmask(SIG_SETMASK, &all, nullptr);
    };
    for (const SignalHost &host : {
             SignalHost{"uses no signals", nothing, nothing, 0},
             {"blocks all", blockAll, nothing, 0},
             {"handles all", [] { takeSignals(SA_RESTART); }, sendBoth, 2},
             {"in detail", [] { takeSignals(SA_SIGINFO | SA_RESTART); }, sendBoth, 2},
             {"handles one no more", [] { takeSignals(0); }, [] { signal(SIGWINCH, SIG_IGN), raise(SIGWINCH); }, 0},
             {"takes the signal back", nothing, [] { signal(SIGURG, SIG_DFL); }, 0},
             {"handles it from then on", [] { signal(SIGURG, SIG_DFL); }, [] { signal(SIGURG, handle); }, 0, false},
         })
        EXPECT_EQ(inAChild([&] { return stopOnce(host); }), 0) << host.what;
}

/// Interrupts this thread many times, and only then lets the call under test go on.
std::thread interrupted(const std::function<void()> &act) {
    return std::thread([act, thread = pthread_self()] {
        for (int i = 0; i < 50; ++i, ::poll(nullptr, 0, 1))
            pthread_kill(thread, SIGALRM);
        act();
    });
}

TEST(Stop, OtherSignalsInterruptNothing) {
    takeSignals(0, SIGALRM, SIGALRM);
    {
        Call call;
        std::thread stopping = interrupted(platform::requestStop);
        posix::sleep(5); // seconds
        EXPECT_TRUE(platform::stopRequested());
        stopping.join();
    }
    Pty pty;
    char c = 0;
    std::thread plotting = interrupted([&] { EXPECT_EQ(::write(pty.far, "x", 1), 1); });
    EXPECT_EQ(posix::read(pty.line, &c, 1), 1);
    plotting.join();
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
        EXPECT_FALSE(platform::stopRequested());
    }
    done = true;
    host.join();
}

TEST(Stop, AChildProcessIsOnItsOwn) {
    const auto atFirst = signals();
    const Call call;
    platform::mayBlock();
    EXPECT_EQ(inAChild([&] {
                  EXPECT_TRUE(signals() == atFirst);
                  platform::requestStop();
                  EXPECT_FALSE(platform::stopRequested()) << "no call of the child's is in progress";
                  platform::beginCall();
                  platform::requestStop();
                  return platform::stopRequested() ? 0 : 1;
              }),
              0);
    EXPECT_FALSE(platform::stopRequested());
}

TEST(Terminal, OpenIsPrivateAndIdentityFollowsTheDevice) {
    Pty pty, other;
    const int again = posix::open(pty.path.c_str(), O_RDWR | O_NONBLOCK);
    EXPECT_EQ(fcntl(again, F_GETFD) & FD_CLOEXEC, FD_CLOEXEC);
    platform::DeviceIdentity first, second, third;
    EXPECT_EQ(posix::identify(pty.line, &first) | posix::identify(again, &second) | posix::identify(other.line, &third), 0);
    EXPECT_TRUE(first == second && first != third);
    EXPECT_EQ(posix::close(again), 0);
    const auto open = [&] {
        return setsid() < 0 || posix::open(other.path.c_str(), O_RDWR) < 0 || ::open("/dev/tty", 0) >= 0;
    };
    EXPECT_EQ(inAChild(open), 0) << "a controlling terminal hangs the host up with the line";
}

TEST(Console, AHostsFunctionTakesAllTextThatWentToTheStandardStreams) {
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

    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    posix::puts("out");
    posix::eprintf("err %d\n", 5);
    posix::flushConsole();
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "out\n");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "err 5\n");
}

} // namespace
