#include "host/attendance/control_socket.h"

#include "host/terminal/failure.h"
#include "host/terminal/text.h"

#include <cerrno>
#include <cstring>
#include <fmt/format.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

namespace host {

namespace {

constexpr size_t kLongestLine = 256; // no command is near that

Failure cannotListen(const std::string &path, int errorNumber) {
    if (errorNumber == EADDRINUSE) {
        return {ExitCode::Usage,
                fmt::format("--control: {}: there is something of that name already; name another, or remove "
                            "it if no print uses it any more",
                            shown(path))};
    }
    return {
        errorNumber == EACCES ? ExitCode::Permission : ExitCode::Usage,
        fmt::format("--control: {}: {}; name a place in a folder of yours", shown(path), lowered(strerror(errorNumber)))};
}

UniqueFd listenAt(const std::string &path) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (path.size() >= sizeof address.sun_path) {
        throw Failure(ExitCode::Usage, fmt::format("--control: {}: longer than the {} bytes that a socket's path may have",
                                                   shown(path), sizeof address.sun_path - 1));
    }
    memcpy(address.sun_path, path.data(), path.size());
    UniqueFd fd(socket(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
    const mode_t before = umask(0177); // from its first moment on it is its owner's alone
    const int bound = fd.get() < 0 ? -1 : bind(fd.get(), reinterpret_cast<const sockaddr *>(&address), sizeof address);
    const int errorNumber = errno;
    umask(before);
    if (bound != 0) throw cannotListen(path, errorNumber);
    if (listen(fd.get(), 4) != 0) {
        const int listenError = errno;
        unlink(path.c_str());
        throw cannotListen(path, listenError);
    }
    return fd;
}

bool isOwners(int fd) {
    ucred peer{};
    socklen_t size = sizeof peer;
    return getsockopt(fd, SOL_SOCKET, SO_PEERCRED, &peer, &size) == 0 && (peer.uid == geteuid() || peer.uid == 0);
}

bool sendLine(int fd, std::string text) {
    text += '\n';
    return send(fd, text.data(), text.size(), MSG_NOSIGNAL | MSG_DONTWAIT) == static_cast<ssize_t>(text.size());
}

} // namespace

ControlSocket::ControlSocket(const std::string &path, Answer answer)
    : path_(path), answer_(std::move(answer)), listener_(listenAt(path)) {}

ControlSocket::~ControlSocket() { unlink(path_.c_str()); }

void ControlSocket::addTo(std::vector<pollfd> &waitedFor) const {
    waitedFor.push_back({listener_.get(), POLLIN, 0});
    waitedFor.push_back({controller_.get(), POLLIN, 0}); // poll() skips -1
}

void ControlSocket::serve() {
    readAll(); // first: who has left makes room
    while (accept())
        readAll();
}

bool ControlSocket::accept() {
    UniqueFd caller(accept4(listener_.get(), nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC));
    if (caller.get() < 0) return false;
    if (!isOwners(caller.get())) return true;
    if (controller_.get() < 0) {
        controller_ = std::move(caller);
        line_.clear();
    } else {
        sendLine(caller.get(), R"({"error":"another controller is connected; it has to leave first"})");
    }
    return true;
}

void ControlSocket::readAll() {
    char buffer[kLongestLine];
    while (controller_.get() >= 0) {
        const ssize_t count = recv(controller_.get(), buffer, sizeof buffer, MSG_DONTWAIT);
        if (count < 0 && (errno == EAGAIN || errno == EINTR)) return;
        if (count <= 0 || !take({buffer, static_cast<size_t>(count)})) controller_ = UniqueFd();
    }
}

bool ControlSocket::take(std::string_view text) {
    line_ += text;
    for (size_t end; (end = line_.find('\n')) != std::string::npos; line_.erase(0, end + 1))
        if (!sendLine(controller_.get(), answer_(std::string_view(line_).substr(0, end)))) return false;
    return line_.size() <= kLongestLine;
}

} // namespace host
