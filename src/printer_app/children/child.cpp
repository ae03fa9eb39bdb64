#include "printer_app/children/child.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <system_error>
#include <unistd.h>

namespace printer_app {

namespace {

using Clock = std::chrono::steady_clock;

constexpr size_t kKeptDiagnostics = 4096, kMostOutput = 16U << 20;

struct Pipe {
    host::UniqueFd reading, writing;
    Pipe() {
        std::array<int, 2> ends{};
        if (pipe2(ends.data(), O_CLOEXEC)) throw std::system_error(errno, std::generic_category(), "pipe");
        reading = host::UniqueFd(ends[0]);
        writing = host::UniqueFd(ends[1]);
    }
};

/// In the child, between fork and exec, where only calls that are safe in signal handlers may be made.
[[noreturn]] void become(char *const *words, int channel, int nothing, int output, int errors, pid_t parent) {
    prctl(PR_SET_PDEATHSIG, SIGTERM);
    if (getppid() != parent) _exit(127);
    sigset_t none;
    sigemptyset(&none);
    sigprocmask(SIG_SETMASK, &none, nullptr); // this program blocks the signals that it waits for
    rlimit limit{};                           // pictures and what is unpacked have limits of their own
    getrlimit(RLIMIT_FSIZE, &limit);
    limit.rlim_cur = limit.rlim_max;
    setrlimit(RLIMIT_FSIZE, &limit);
    ::signal(SIGXFSZ, SIG_DFL);
    // Out of the way of the numbers that are given out now.
    output = fcntl(output, F_DUPFD, 10);
    errors = fcntl(errors, F_DUPFD, 10);
    nothing = fcntl(nothing, F_DUPFD, 10);
    dup2(nothing, 0);
    dup2(nothing, 1);
    dup2(errors, 2);
    dup2(output, channel);
    close(output);
    close(errors);
    close(nothing);
    execvp(words[0], words);
    _exit(127);
}

/// True when there is more to come.
bool take(host::UniqueFd &fd, std::string &text) {
    std::array<char, 4096> block{};
    const ssize_t got = ::read(fd.get(), block.data(), block.size());
    if (got > 0) text.append(block.data(), static_cast<size_t>(got));
    if (got > 0 || (got < 0 && errno == EINTR)) return true;
    fd = host::UniqueFd();
    return false;
}

} // namespace

Child::Child(const std::vector<std::string> &words, int channel) {
    Pipe output, errors;
    host::UniqueFd nothing(open("/dev/null", O_RDWR | O_CLOEXEC));
    std::vector<char *> pointers;
    pointers.reserve(words.size() + 1);
    for (const std::string &word : words)
        pointers.push_back(const_cast<char *>(word.c_str())); // execvp() takes them so and does not write
    pointers.push_back(nullptr);
    const pid_t parent = getpid();
    pid_ = fork();
    if (pid_ < 0) throw std::system_error(errno, std::generic_category(), words[0]);
    if (pid_ == 0) become(pointers.data(), channel, nothing.get(), output.writing.get(), errors.writing.get(), parent);
    channel_ = std::move(output.reading);
    errors_ = std::move(errors.reading);
}

Child::~Child() {
    if (pid_ < 0) return;
    signal(SIGKILL);
    wait();
}

bool Child::read(std::string &text, std::chrono::milliseconds wait) {
    std::array<pollfd, 2> fds{{{channel_.get(), POLLIN, 0}, {errors_.get(), POLLIN, 0}}};
    if (fds[0].fd < 0 && fds[1].fd < 0) return false;
    if (poll(fds.data(), fds.size(), static_cast<int>(wait.count())) <= 0) return true;
    if (fds[0].revents) take(channel_, text);
    if (fds[1].revents) take(errors_, diagnostics_);
    if (diagnostics_.size() > kKeptDiagnostics) diagnostics_.erase(0, diagnostics_.size() - kKeptDiagnostics);
    return true;
}

void Child::signal(int number) const {
    if (pid_ > 0) kill(pid_, number);
}

int Child::wait() {
    int status = 0;
    while (waitpid(pid_, &status, 0) < 0 && errno == EINTR) {
    }
    pid_ = -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

Ended runToEnd(const std::vector<std::string> &words, std::chrono::seconds limit) {
    Ended ended;
    Child child(words, 1);
    const auto latest = Clock::now() + limit;
    while (child.read(ended.output, std::chrono::milliseconds(200)))
        if (Clock::now() > latest || ended.output.size() > kMostOutput) return ended; // and with the child goes its process
    ended.code = child.wait();
    ended.diagnostics = child.diagnostics();
    return ended;
}

} // namespace printer_app
