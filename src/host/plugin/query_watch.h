// Ends a query that would outlast what was announced.
#pragma once

#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <thread>

namespace host {

/// While it lives, a thread of its own looks at the query four times a second. After the time that it has, or once it has
/// nothing left to wait for, it stops the plug-in's call until that has returned.
class QueryWatch {
public:
    /// isHopeless is called on that thread.
    QueryWatch(std::chrono::milliseconds time, std::function<bool()> isHopeless);
    QueryWatch(const QueryWatch &) = delete;
    QueryWatch &operator=(const QueryWatch &) = delete;
    ~QueryWatch() { end(); }

    /// After the call: no stop reaches a later one. True when it was stopped.
    bool end();

private:
    void watch();

    const std::chrono::steady_clock::time_point latest_;
    const std::function<bool()> isHopeless_;
    std::mutex mutex_; // of what follows
    std::condition_variable ended_;
    bool isEnded_ = false;
    bool hasStopped_ = false;
    std::thread thread_;
};

} // namespace host
