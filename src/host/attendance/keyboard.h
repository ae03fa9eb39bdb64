// Single keys from the terminal that a print was started in. The terminal gives them at once and shows none of them while a
// print runs, and is as it was before when the process is suspended, goes on, or ends.
#pragma once

#include "host/files/unique_fd.h"

#include <csignal>
#include <optional>
#include <poll.h>
#include <termios.h>

namespace host {

class Keyboard {
public:
    /// One object at a time. Without a terminal there are no keys.
    Keyboard();
    Keyboard(const Keyboard &) = delete;
    Keyboard &operator=(const Keyboard &) = delete;
    ~Keyboard();

    bool isThere() const { return terminal_.get() >= 0; }
    /// For poll(): keys, while no other job has the terminal, and whether it is gone.
    pollfd watched() const;
    /// A key; none when there is none yet.
    std::optional<char> read();
    /// To be called now and then: a shell may have put the job into the foreground again.
    void refresh();
    /// The terminal is gone.
    void forget();

private:
    static void onStop(int signal);
    bool isOurs() const;

    UniqueFd terminal_;
    struct sigaction before_ {};
};

} // namespace host
