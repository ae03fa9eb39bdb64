// Who watches a print and may steer it: a person at the terminal, a program that reads its progress, another that sends it
// commands, a signal. A thread of its own listens to them all; what they ask goes to the gate, and what happens at the gate
// is told to each in its own words.
#pragma once

#include "host/attendance/control_socket.h"
#include "host/attendance/gate.h"
#include "host/attendance/keyboard.h"
#include "host/terminal/json.h"

#include <atomic>
#include <mutex>
#include <optional>
#include <thread>

namespace host {

/// As typed.
struct AttendanceOptions {
    std::string progress; ///< "json", or "json:FD"; empty: none
    std::string control;  ///< path of the socket; empty: none
    bool usesKeys = true;
};

/// What the attendance is told by the print, and tells on.
struct AttendedPrint {
    /// Adds how far it has come, for each progress line and each answer. Any thread.
    std::function<void(Json &line)> addStatus;
    /// Says lines to the person at the terminal; empty: nobody is there.
    std::function<void(std::string_view)> say;
    bool mayWaitUnseen = false; ///< also when the terminal is gone: a signal may still come
};

class Attendance {
public:
    /// Throws Failure for a descriptor that is none, or a path that is no place for a socket.
    Attendance(const AttendanceOptions &options, AttendedPrint print);
    Attendance(const Attendance &) = delete;
    Attendance &operator=(const Attendance &) = delete;
    ~Attendance();

    Gate &gate() { return gate_; }
    /// From now on nobody is listened to, and the terminal is as it was before. Lines can still be written.
    void end();
    /// Whether somebody could answer a prompt.
    bool canAnswer() const { return keyboard_.has_value() || control_.has_value(); }
    /// Writes a progress line of that event, with a member of its own where it has one; nothing where no lines are wanted.
    /// A reader that is behind holds up nothing: it misses the line. Any thread.
    void report(std::string_view event, std::string_view name = {}, const Json &value = {});

private:
    void tell(GateEvent event, const std::string &wanted);
    void listen();
    void readKeys();
    void loseTerminal();
    std::string answer(std::string_view line);

    const AttendedPrint print_;
    int progressFd_ = -1;
    std::mutex writing_;
    Gate gate_;
    std::optional<Keyboard> keyboard_;
    bool isLost_ = false; ///< the terminal that was there, and with it the last who could answer
    std::optional<ControlSocket> control_;
    UniqueFd wake_; ///< an eventfd: SIGUSR1, or the end
    std::atomic<bool> isEnding_ = false;
    std::thread listener_;
};

} // namespace host
