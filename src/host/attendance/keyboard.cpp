#include "host/attendance/keyboard.h"

#include <cerrno>
#include <fcntl.h>
#include <unistd.h>

namespace host {

namespace {

// For the handler.
volatile sig_atomic_t terminalFd = -1;
termios usual, keyByKey;

bool isInForeground(int fd) { return tcgetpgrp(fd) == getpgrp(); }

int openTerminal() {
    if (!isatty(STDERR_FILENO)) return -1; // whoever cannot read what is asked cannot answer
    if (isatty(STDIN_FILENO)) return fcntl(STDIN_FILENO, F_DUPFD_CLOEXEC, 0);
    return open("/dev/tty", O_RDONLY | O_NOCTTY | O_CLOEXEC);
}

} // namespace

Keyboard::Keyboard() : terminal_(openTerminal()) {
    const int fd = terminal_.get();
    if (fd < 0) return;
    if (tcgetattr(fd, &usual) != 0) {
        terminal_ = UniqueFd();
        return;
    }
    keyByKey = usual;
    keyByKey.c_lflag &= ~static_cast<tcflag_t>(ICANON | ECHO);
    keyByKey.c_cc[VMIN] = 0;
    keyByKey.c_cc[VTIME] = 0;
    if (isInForeground(fd)) tcsetattr(fd, TCSANOW, &keyByKey);
    terminalFd = fd;
    struct sigaction action = {};
    action.sa_handler = onStop;
    action.sa_flags = SA_RESTART;
    sigaction(SIGTSTP, &action, &before_);
    if (before_.sa_handler == SIG_IGN) sigaction(SIGTSTP, &before_, nullptr);
}

Keyboard::~Keyboard() {
    if (!isThere()) return;
    sigaction(SIGTSTP, &before_, nullptr);
    terminalFd = -1;
    if (isInForeground(terminal_.get())) tcsetattr(terminal_.get(), TCSANOW, &usual);
}

/// Ctrl-Z: the shell gets its terminal as it was, and back in the foreground the keys come one by one again.
void Keyboard::onStop(int signal) {
    const int errorNumber = errno;
    const int fd = terminalFd;
    if (isInForeground(fd)) tcsetattr(fd, TCSANOW, &usual);
    struct sigaction own = {}, standard = {};
    standard.sa_handler = SIG_DFL;
    sigaction(signal, &standard, &own);
    sigset_t one, before;
    sigemptyset(&one);
    sigaddset(&one, signal);
    raise(signal);
    sigprocmask(SIG_UNBLOCK, &one, &before); // stands still here
    sigprocmask(SIG_SETMASK, &before, nullptr);
    sigaction(signal, &own, nullptr);
    if (isInForeground(fd)) tcsetattr(fd, TCSANOW, &keyByKey);
    errno = errorNumber;
}

bool Keyboard::isOurs() const { return isThere() && isInForeground(terminal_.get()); }

pollfd Keyboard::watched() const { return {terminal_.get(), static_cast<short>(isOurs() ? POLLIN : 0), 0}; }

std::optional<char> Keyboard::read() {
    char key;
    pollfd now = watched(); // a shell that has just given the terminal back has it give whole lines: read() would wait
    const bool isRead = poll(&now, 1, 0) == 1 && (now.revents & POLLIN) != 0 && ::read(now.fd, &key, 1) == 1;
    return isRead ? std::optional(key) : std::nullopt;
}

void Keyboard::refresh() {
    termios now;
    if (isOurs() && tcgetattr(terminal_.get(), &now) == 0 && (now.c_lflag & ICANON) != 0)
        tcsetattr(terminal_.get(), TCSANOW, &keyByKey);
}

void Keyboard::forget() {
    terminalFd = -1;
    sigaction(SIGTSTP, &before_, nullptr);
    terminal_ = UniqueFd();
}

} // namespace host
