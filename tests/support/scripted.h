// A scripted platform: every call that a device or a user could see is logged as one line of text, any call can be made to
// fail, and a scripted outcome that was never used fails the test, as does whatever is left open or not released.
#pragma once

#include "stand_in/platform.h"

#include <deque>
#include <gtest/gtest.h>
#include <map>
#include <string>

namespace scripted {

using stand_in::Effect, stand_in::Ending, stand_in::Seam;
using stand_in::Log, stand_in::quoted, stand_in::Registry, stand_in::Terminal, stand_in::UsbDevice;

/// The result of one future call: -1 with an errno, or a value. IOKit's errors are values.
struct Outcome {
    long result = 0;
    int error = 0;
};
inline Outcome fails(int error) { return {-1, error}; }
inline Outcome gives(long result) { return {result, 0}; }
/// Of IOKit's: it does a part of its work, and reports the code.
inline Outcome failsAfter(long code) { return {code, 1}; }

class Platform : public stand_in::Platform {
public:
    ~Platform() override {
        EXPECT_TRUE(files.openForks.empty()) << "forks left open";
        EXPECT_EQ(registry.outstanding, 0) << "registry objects not released";
        for (const auto &[call, outcomes] : script_)
            ADD_FAILURE() << outcomes.size() << " scripted outcome(s) of " << call << " never used";
    }

    /// The next call of that name (not yet scripted) gives this. Requests of ioctl are calls of their own names.
    void script(const std::string &call, Outcome outcome, int times = 1) {
        for (; times > 0; --times)
            script_[call].push_back(outcome);
    }
    /// Every call of that name from now on gives this.
    void always(const std::string &call, Outcome outcome) { always_[call] = outcome; }

    Ending before(Seam seam, const char *call) override {
        const auto next = script_.find(call);
        const auto forever = always_.find(call);
        if (next == script_.end() && forever == always_.end()) return {};
        const Outcome outcome = next != script_.end() ? next->second.front() : forever->second;
        if (next != script_.end()) next->second.pop_front();
        if (next != script_.end() && next->second.empty()) script_.erase(next);
        const Effect failure = outcome.error == 0 ? Effect::Fails : Effect::After;
        if (seam == Seam::Registry) return {outcome.result == 0 ? Effect::None : failure, outcome.result};
        return outcome.result == -1 ? Ending{Effect::Fails, outcome.error} : Ending{Effect::Gives, outcome.result};
    }
    void misuse(const std::string &what) override { ADD_FAILURE() << what; }

private:
    std::map<std::string, std::deque<Outcome>> script_;
    std::map<std::string, Outcome> always_;
};

} // namespace scripted
