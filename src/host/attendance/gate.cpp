#include "host/attendance/gate.h"

#include "host/plugin/stop_signals.h"

#include <array>
#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

namespace host {

namespace {

constexpr int kFar = 100;  ///< pieces: at 9600 bit/s and 30 bytes each, some three seconds
constexpr int kLook = 500; ///< milliseconds

} // namespace

const char *nameOf(GateState state) {
    constexpr std::array kNames = {"plotting", "pausing", "paused", "waiting", "ended"};
    return kNames.at(static_cast<size_t>(state));
}

Gate::Gate(std::function<void(GateEvent, const std::string &)> tell)
    : tell_(std::move(tell)), event_(eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC)) {}

Gate::~Gate() { close(event_); }

GateState Gate::state() const { return state_; }

std::string Gate::wanted() const {
    std::lock_guard guard(mutex_);
    return wanted_;
}

void Gate::wake() const { eventfd_write(event_, 1); }

void Gate::ask(Ask what) {
    if (what == Ask::Stop) {
        StopOnSignal::stop();
        return end();
    }
    {
        std::lock_guard guard(mutex_); // also while it is told: who watches gets the events in their order
        if (state_ == GateState::Ended) return;
        const bool isStill = state_ == GateState::Paused || state_ == GateState::Wanting;
        const bool isPlotting = state_ == GateState::Plotting;
        if (what == Ask::Toggle) what = isPlotting ? Ask::Pause : Ask::Go;
        if (what == Ask::Pause || what == Ask::PauseAtOnce) {
            if (isStill) return;
            isAtOnce_ = isAtOnce_ || what == Ask::PauseAtOnce;
            state_ = GateState::Pausing;
            if (isPlotting) {
                passed_ = 0;
                tell_(GateEvent::Pausing, {});
            }
        } else if (what == Ask::Go && !isPlotting) {
            state_ = GateState::Plotting;
            isAtOnce_ = hasToldFar_ = false;
            if (!isStill) tell_(GateEvent::GoingOn, {}); // a pause that had not begun; otherwise the job's thread tells
        }
    }
    wake();
}

void Gate::end() {
    {
        std::lock_guard guard(mutex_);
        state_ = GateState::Ended;
    }
    wake();
}

bool Gate::pass(bool isPenUp) {
    if (state_ != GateState::Pausing) return state_ != GateState::Ended;
    bool isHere = false, isFar = false;
    {
        std::lock_guard guard(mutex_);
        isHere = isPenUp || isAtOnce_;
        isFar = !isHere && ++passed_ >= kFar && !hasToldFar_;
        hasToldFar_ = hasToldFar_ || isFar;
    }
    if (isFar) tell_(GateEvent::PauseIsFar, {});
    return !isHere || stand(GateState::Paused, GateEvent::Paused, {});
}

bool Gate::await(GateEvent event, const std::string &wanted) { return stand(GateState::Wanting, event, wanted); }

bool Gate::stand(GateState how, GateEvent event, const std::string &wanted) {
    {
        std::lock_guard guard(mutex_);
        if (state_ == GateState::Ended) return false;
        if (how == GateState::Paused && state_ != GateState::Pausing) return true; // taken back meanwhile
        state_ = how;
        isAtOnce_ = hasToldFar_ = false;
        wanted_ = wanted;
    }
    tell_(event, wanted);
    while (state_ == how && !StopOnSignal::came()) {
        pollfd woken{event_, POLLIN, 0};
        eventfd_t count;
        if (poll(&woken, 1, kLook) > 0) eventfd_read(event_, &count);
    }
    {
        std::lock_guard guard(mutex_);
        wanted_.clear();
        if (StopOnSignal::came()) state_ = GateState::Ended;
        if (state_ == GateState::Ended) return false;
    }
    tell_(GateEvent::GoingOn, {});
    return true;
}

} // namespace host
