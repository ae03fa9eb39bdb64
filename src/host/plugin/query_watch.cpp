#include "host/plugin/query_watch.h"

#include "host/plugin/thread_signals.h"

#include <orb/vectorix.h>
#include <utility>

namespace host {

QueryWatch::QueryWatch(std::chrono::milliseconds time, std::function<bool()> isHopeless)
    : latest_(std::chrono::steady_clock::now() + time), isHopeless_(std::move(isHopeless)) {
    SignalsBlocked blocked;
    thread_ = std::thread([this] { watch(); });
}

bool QueryWatch::end() {
    {
        const std::scoped_lock lock(mutex_);
        isEnded_ = true;
    }
    ended_.notify_one();
    if (thread_.joinable()) thread_.join();
    return hasStopped_;
}

void QueryWatch::watch() {
    constexpr std::chrono::milliseconds kLook(250), kAgain(50); // a stop may come just ahead of a blocking call
    std::unique_lock lock(mutex_);
    while (!ended_.wait_for(lock, hasStopped_ ? kAgain : kLook, [this] { return isEnded_; })) {
        hasStopped_ = hasStopped_ || std::chrono::steady_clock::now() >= latest_ || isHopeless_();
        if (hasStopped_) ORB_hostStop();
    }
}

} // namespace host
