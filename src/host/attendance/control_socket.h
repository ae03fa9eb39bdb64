// The socket by which another program steers a print: a print server, a script, a foot switch. A socket and not a signal,
// because it answers; in the file system, because rights there are the owner's to give.
#pragma once

#include "host/files/unique_fd.h"

#include <functional>
#include <optional>
#include <poll.h>
#include <string>
#include <string_view>
#include <vector>

namespace host {

/// A listening socket that only its owner (and root) can use, and one controller at a time. Lines in, lines out.
class ControlSocket {
public:
    /// The answer to a line, without its end.
    using Answer = std::function<std::string(std::string_view line)>;

    /// Throws Failure: usage for a path that is too long, or where something is already.
    ControlSocket(const std::string &path, Answer answer);
    ControlSocket(const ControlSocket &) = delete;
    ControlSocket &operator=(const ControlSocket &) = delete;
    /// Takes the socket's name away.
    ~ControlSocket();

    /// What is to be polled for, added to the others; and to be called with their results, in the same order.
    void addTo(std::vector<pollfd> &waitedFor) const;
    /// Never blocks: a controller that does not read its answers is left.
    void serve();

private:
    bool accept(); ///< false: nobody calls
    void readAll();
    bool take(std::string_view text); ///< false: the controller is to be left

    const std::string path_;
    const Answer answer_;
    UniqueFd listener_, controller_;
    std::string line_; ///< of the controller's, not ended yet
};

} // namespace host
