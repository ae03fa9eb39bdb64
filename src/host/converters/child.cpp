#include "host/converters/child.h"

#include "host/files/unique_fd.h"
#include "host/plugin/stop_signals.h"
#include "host/plugin/thread_signals.h"
#include "host/terminal/failure.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <linux/landlock.h>
#include <poll.h>
#include <sched.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

namespace host {

namespace {

using Clock = std::chrono::steady_clock;

constexpr size_t kMostDiagnostics = 8192;
constexpr int kTick = 50;         // milliseconds: how late a stop may be seen that came between two looks
constexpr int kLastTick = 2;      // the same once all pipes are closed, when the end is near
constexpr int kStatusFd = 3;      // of the child
constexpr rlim_t kMostFiles = 64; // open at once; the converters have some ten

struct Pipe {
    Pipe() {
        std::array<int, 2> ends;
        if (pipe2(ends.data(), O_CLOEXEC) != 0) throw fileFailure("pipe to a converter", errno);
        from = UniqueFd(ends[0]);
        to = UniqueFd(ends[1]);
    }
    UniqueFd from, to;
};

void limit(decltype(RLIMIT_AS) resource, rlim_t most) {
    const rlimit both{most, most};
    setrlimit(resource, &both);
}

/// Nothing can be opened for writing, made, or removed any more, where the kernel has Landlock (5.13 and later).
void forbidFiles() {
    constexpr landlock_ruleset_attr kWriting = {
        .handled_access_fs = LANDLOCK_ACCESS_FS_WRITE_FILE | LANDLOCK_ACCESS_FS_REMOVE_DIR | LANDLOCK_ACCESS_FS_REMOVE_FILE |
                             LANDLOCK_ACCESS_FS_MAKE_CHAR | LANDLOCK_ACCESS_FS_MAKE_DIR | LANDLOCK_ACCESS_FS_MAKE_REG |
                             LANDLOCK_ACCESS_FS_MAKE_SOCK | LANDLOCK_ACCESS_FS_MAKE_FIFO | LANDLOCK_ACCESS_FS_MAKE_BLOCK |
                             LANDLOCK_ACCESS_FS_MAKE_SYM};
    const auto rules = static_cast<int>(syscall(SYS_landlock_create_ruleset, &kWriting, sizeof kWriting, 0));
    if (rules >= 0) syscall(SYS_landlock_restrict_self, rules, 0);
}

/// In the child, between fork and exec: calls that are safe there, and nothing allocated.
[[noreturn]] void become(char *const *arguments, std::array<int, 4> fds, const ChildLimits &limits, pid_t parent) {
    setpgid(0, 0);
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (getppid() != parent) _exit(1); // it was gone before that
    prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0);
    // Refused on many systems. Then a converter has a network; it is asked for nothing from there.
    [[maybe_unused]] const int alone = unshare(CLONE_NEWUSER | CLONE_NEWNET);
    forbidFiles();
    // First out of the way of each other: any of them may be one of the first four.
    for (int &fd : fds)
        fd = fcntl(fd, F_DUPFD, static_cast<int>(fds.size()));
    for (size_t i = 0; i < fds.size(); ++i)
        dup2(fds[i], static_cast<int>(i));
    fcntl(kStatusFd, F_SETFD, FD_CLOEXEC);
    close_range(kStatusFd + 1, ~0U, 0);
    limit(RLIMIT_AS, limits.memory);
    limit(RLIMIT_CPU, static_cast<rlim_t>(limits.time / std::chrono::seconds(1)) + 1);
    limit(RLIMIT_CORE, 0);
    limit(RLIMIT_NOFILE, kMostFiles);
    limit(RLIMIT_FSIZE, 0);
    for (int number = 1; number < NSIG; ++number)
        signal(number, number == SIGXFSZ ? SIG_IGN : SIG_DFL); // what cannot be written is an error, not the end
    sigset_t none;
    sigemptyset(&none);
    sigprocmask(SIG_SETMASK, &none, nullptr);
    execvp(arguments[0], arguments);
    const int error = errno;
    [[maybe_unused]] const ssize_t written = write(kStatusFd, &error, sizeof error);
    _exit(1);
}

/// A process with its group, both gone with the object.
class Child {
public:
    Child(char *const *arguments, const std::array<int, 4> &fds, const ChildLimits &limits) {
        const SignalsBlocked blocked; // our handlers are not for the child
        const pid_t parent = getpid();
        pid_ = fork();
        if (pid_ < 0) throw fileFailure(arguments[0], errno);
        if (pid_ == 0) become(arguments, fds, limits, parent);
        setpgid(pid_, pid_); // whichever of both comes first
    }
    Child(const Child &) = delete;
    Child &operator=(const Child &) = delete;
    ~Child() { end(); }

    bool hasEnded() const {
        siginfo_t info = {};
        return waitid(P_PID, static_cast<id_t>(pid_), &info, WEXITED | WNOHANG | WNOWAIT) == 0 && info.si_pid == pid_;
    }

    struct Ended {
        int status;   ///< as waitpid() tells it
        rusage usage; ///< also of its own children
    };
    /// Kills what is left of the group.
    const Ended &end() {
        if (pid_ < 0) return ended_;
        kill(-pid_, SIGKILL);
        while (wait4(pid_, &ended_.status, 0, &ended_.usage) < 0 && errno == EINTR) {
        }
        pid_ = -1;
        return ended_;
    }

private:
    pid_t pid_;
    Ended ended_{};
};

/// Why a child failed that was left to end by itself. No one tells that a limit was the reason, but what it took does: a
/// request for memory that is refused is for as much again as a program has, at most, or half as much, so that it fails with
/// a quarter in use. A single large one remains; the program's own words tell of that.
ChildResult::End endOf(const Child::Ended &ended, const ChildLimits &limits) {
    const auto &[status, usage] = ended;
    const std::chrono::seconds worked(usage.ru_utime.tv_sec + usage.ru_stime.tv_sec);
    if (WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL && worked >= limits.time) return ChildResult::End::OutOfTime;
    rusage own{}; // the child's peak counts what it had as a copy of this process, too
    getrusage(RUSAGE_SELF, &own);
    const bool isItsOwn = usage.ru_maxrss > own.ru_maxrss;
    if (status != 0 && isItsOwn && static_cast<uint64_t>(usage.ru_maxrss) * 1024 >= limits.memory / 4)
        return ChildResult::End::OutOfMemory;
    return WIFSIGNALED(status) ? ChildResult::End::Killed : ChildResult::End::Exited;
}

/// Reads what is there without waiting; false at the end.
bool drain(UniqueFd &fd, std::string &text, size_t most) {
    std::array<char, 65536> buffer;
    while (text.size() <= most) {
        const ssize_t count = read(fd.get(), buffer.data(), buffer.size());
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) return errno == EAGAIN;
        if (count == 0) return false;
        text.append(buffer.data(), static_cast<size_t>(count));
    }
    return true;
}

/// Reads both outputs until the child ends or must.
class Watch {
public:
    Watch(Pipe &output, Pipe &diagnostics, const ChildLimits &limits)
        : output_(std::move(output.from)), diagnostics_(std::move(diagnostics.from)), limits_(limits) {
        for (const UniqueFd *fd : {&output_, &diagnostics_})
            fcntl(fd->get(), F_SETFL, O_NONBLOCK);
    }

    void run(const Child &child) {
        const auto deadline = Clock::now() + limits_.time;
        while (!child.hasEnded()) {
            if (StopOnSignal::came()) return fail(ChildResult::End::Stopped);
            if (Clock::now() >= deadline) return fail(ChildResult::End::OutOfTime);
            wait();
            take();
            if (result_.output.size() > limits_.output) return fail(ChildResult::End::TooMuchOutput);
        }
        take();
        if (result_.output.size() > limits_.output) fail(ChildResult::End::TooMuchOutput);
    }

    ChildResult result(const Child::Ended &ended) && {
        if (result_.end == ChildResult::End::Exited) result_.end = endOf(ended, limits_);
        result_.code = WIFSIGNALED(ended.status) ? WTERMSIG(ended.status) : WEXITSTATUS(ended.status);
        return std::move(result_);
    }

private:
    void fail(ChildResult::End end) { result_.end = end; }

    void wait() {
        std::array<pollfd, 2> open = {{{output_.get(), POLLIN, 0}, {diagnostics_.get(), POLLIN, 0}}};
        const bool isOver = output_.get() < 0 && diagnostics_.get() < 0;
        poll(open.data(), open.size(), isOver ? kLastTick : kTick);
    }

    void take() {
        if (output_.get() >= 0 && !drain(output_, result_.output, limits_.output)) output_ = UniqueFd();
        std::string told;
        if (diagnostics_.get() >= 0 && !drain(diagnostics_, told, kMostDiagnostics)) diagnostics_ = UniqueFd();
        result_.diagnostics += told;
        if (result_.diagnostics.size() > kMostDiagnostics)
            result_.diagnostics.erase(0, result_.diagnostics.size() - kMostDiagnostics);
    }

    UniqueFd output_, diagnostics_;
    const ChildLimits &limits_;
    ChildResult result_;
};

/// Whether the program was started; blocks until that is known. Throws Failure for one that is there but cannot be.
bool isStarted(Pipe &status, const std::string &program) {
    status.to = UniqueFd();
    int error = 0;
    ssize_t count;
    while ((count = read(status.from.get(), &error, sizeof error)) < 0 && errno == EINTR) {
    }
    if (count > 0 && error != ENOENT) throw fileFailure(program, error);
    return count == 0;
}

} // namespace

ChildResult runChild(const std::vector<std::string> &arguments, int input, const ChildLimits &limits) {
    std::vector<char *> argv;
    argv.reserve(arguments.size() + 1);
    for (const std::string &argument : arguments)
        argv.push_back(const_cast<char *>(argument.c_str())); // which exec does not change
    argv.push_back(nullptr);
    Pipe output, diagnostics, status;
    Child child(argv.data(), {input, output.to.get(), diagnostics.to.get(), status.to.get()}, limits);
    output.to = UniqueFd();
    diagnostics.to = UniqueFd();
    if (!isStarted(status, arguments[0])) return {ChildResult::End::Missing, 0, {}, {}};
    Watch watch(output, diagnostics, limits);
    watch.run(child);
    return std::move(watch).result(child.end());
}

} // namespace host
