// A queue while the program runs: what its threads tell each other. The print system's threads call in when jobs come and
// when clients pause and resume; the page's when a person says something; the thread of the job that is at work listens.
#pragma once

#include "printer_app/jobs/journal.h"
#include "printer_app/jobs/queue_config.h"

#include <atomic>
#include <mutex>
#include <optional>
#include <pappl/pappl.h>
#include <shared_mutex>
#include <string>
#include <utility>
#include <vector>

namespace printer_app {

struct Queue {
    QueueConfig config;

    /// The print system's. Whoever uses it holds isAlive shared: a client of this computer may delete the queue.
    std::atomic<pappl_printer_t *> printer{nullptr};
    std::shared_timed_mutex isAlive;

    std::atomic<int> atWork{0};          ///< the job whose thread listens; 0 for none
    std::atomic<bool> wasPaused{false};  ///< by a client, since it was last looked at
    std::atomic<bool> wasResumed{false}; ///< the same
    std::atomic<bool> isPaused{false};   ///< as clients last said
    std::atomic<bool> isThere{true};     ///< the plotter's port or device

    /// What a person said to the job at work.
    void say(int job, Action action) {
        std::lock_guard lock(mutex_);
        if (job == atWork) said_ = action;
    }
    std::optional<Action> takeSaid() {
        std::lock_guard lock(mutex_);
        return std::exchange(said_, std::nullopt);
    }

    std::vector<FindingView> findings() const {
        std::lock_guard lock(mutex_);
        return findings_;
    }
    void keepFindings(std::vector<FindingView> findings) {
        std::lock_guard lock(mutex_);
        findings_ = std::move(findings);
    }

private:
    mutable std::mutex mutex_;
    std::optional<Action> said_;
    std::vector<FindingView> findings_; ///< of the doctor, while the plotter is not there
};

} // namespace printer_app
