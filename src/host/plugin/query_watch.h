// Ends a query that takes longer than was announced. The plug-in's call returns when the query is over, which may be never
// while a plotter holds the line, and late when it was unplugged; so another thread has to stop it.
#pragma once

#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <thread>

namespace host {

/// While it exists, its thread checks four times a second whether the time is over or the query hopeless. From then on it
/// stops the plug-in's call, again and again until end().
class QueryWatch {
public:
    /// time: for the whole query, from now on. isHopeless is called on the watch's thread; true ends the query early.
    QueryWatch(std::chrono::milliseconds time, std::function<bool()> isHopeless);
    QueryWatch(const QueryWatch &) = delete;
    QueryWatch &operator=(const QueryWatch &) = delete;
    ~QueryWatch() { end(); }

    /// To be called when the plug-in's call has returned, so that no stop reaches a later one. True when it was stopped.
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
