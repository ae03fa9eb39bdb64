#include "support/scripted.h"

#include <gtest/gtest.h>

namespace scripted {

using stand_in::Effect, stand_in::Ending, stand_in::Seam;

Platform::~Platform() {
    if (files.openForks != 0) ADD_FAILURE() << files.openForks << " fork(s) left open";
    if (registry.outstanding != 0) ADD_FAILURE() << registry.outstanding << " registry object(s) not released";
    for (const auto &[call, outcomes] : script_)
        if (!outcomes.empty()) ADD_FAILURE() << outcomes.size() << " scripted outcome(s) of " << call << " never used";
}

void Platform::script(const std::string &call, Outcome outcome, int times) {
    script_[call].insert(script_[call].end(), static_cast<size_t>(times), outcome);
}

void Platform::always(const std::string &call, Outcome outcome) { always_[call] = outcome; }

Ending Platform::before(Seam seam, const char *call) {
    Outcome outcome;
    if (auto it = script_.find(std::string_view(call)); it != script_.end() && !it->second.empty()) {
        outcome = it->second.front();
        it->second.pop_front();
    } else if (auto forever = always_.find(std::string_view(call)); forever != always_.end()) {
        outcome = forever->second;
    } else {
        return {};
    }
    const Effect failure = outcome.error == 0 ? Effect::fails : Effect::after;
    if (seam == Seam::registry) return {outcome.result == 0 ? Effect::none : failure, outcome.result};
    return outcome.result == -1 ? Ending{Effect::fails, outcome.error} : Ending{Effect::gives, outcome.result};
}

void Platform::misuse(const std::string &what) { ADD_FAILURE() << what; }

} // namespace scripted
