// Where a print stands still for a person. The thread of the job passes here after each piece and between two sheets or
// pens; keys, signals and the control socket ask from another thread. What is asked takes effect where the pen is up, so
// that no blot grows while somebody looks for paper.
#pragma once

#include <atomic>
#include <functional>
#include <mutex>
#include <string>
#include <string_view>

namespace host {

/// What a person may ask for.
enum class Ask {
    Pause,
    PauseAtOnce, ///< also with the pen down
    Go,          ///< on, after a pause or a prompt
    Toggle,      ///< pause, or go on
    Stop,
};

/// What becomes of a print, for who watches it.
enum class GateEvent {
    Pausing,    ///< at the next place where the pen is up
    PauseIsFar, ///< there has been none for a while
    Paused,
    GoingOn,
    PenWanted, ///< the print waits for a word, as it does for:
    PaperWanted,
};

/// How a print stands.
enum class GateState {
    Plotting,
    Pausing,
    Paused,
    Wanting,
    Ended, ///< by a stop, or at its end: nothing more of a plot is sent
};

const char *nameOf(GateState state);

class Gate {
public:
    /// tell is called for each event, with what is wanted where something is, on the thread that caused it; it
    /// must not ask for anything.
    explicit Gate(std::function<void(GateEvent, const std::string &wanted)> tell);
    Gate(const Gate &) = delete;
    Gate &operator=(const Gate &) = delete;
    ~Gate();

    /// Any thread.
    void ask(Ask what);
    GateState state() const;
    std::string wanted() const;
    /// From now on nothing is asked for any more.
    void end();
    /// Paused, or waiting for a word.
    bool isHeld() const { return state_ == GateState::Paused || state_ == GateState::Wanting; }

    // The job's thread. Each returns false when the print is to end: somebody asked for that, or a signal came.

    /// Between two pieces: stands still if a pause was asked for and may be here.
    bool pass(bool isPenUp);
    /// Stands still until a word comes. event: what is wanted; wanted says it for people: "put in pen 2 (red)".
    bool await(GateEvent event, const std::string &wanted);

private:
    bool stand(GateState how, GateEvent event, const std::string &wanted);
    void wake() const;

    const std::function<void(GateEvent, const std::string &)> tell_;
    const int event_; ///< an eventfd, for a signal must end the wait: it interrupts poll(), but no condition variable
    mutable std::mutex mutex_;
    std::atomic<GateState> state_ = GateState::Plotting; ///< read without the lock after each piece
    bool isAtOnce_ = false, hasToldFar_ = false;
    int passed_ = 0; ///< pieces since the pause was asked for
    std::string wanted_;
};

} // namespace host
