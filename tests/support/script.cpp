#include "support/script.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstdio>

namespace scripted {

std::string quoted(std::string_view bytes) {
    std::string text = "\"";
    for (char c : bytes) {
        if (c >= 0x20 && c < 0x7F) {
            text += c;
        } else {
            char hex[8];
            snprintf(hex, sizeof hex, "\\x%02x", static_cast<unsigned>(static_cast<unsigned char>(c)));
            text += hex;
        }
    }
    return text + "\"";
}

Script::~Script() {
    for (const auto &[call, outcomes] : script_) {
        if (!outcomes.empty()) ADD_FAILURE() << outcomes.size() << " scripted outcome(s) of " << call << " never used";
    }
}

void Script::script(const std::string &call, Outcome outcome, int times) {
    for (int i = 0; i < times; ++i)
        script_[call].push_back(outcome);
}

void Script::always(const std::string &call, Outcome outcome) { always_[call] = outcome; }

bool Script::scriptedOutcome(const std::string &call, long *result) {
    Outcome outcome;
    if (auto it = script_.find(call); it != script_.end() && !it->second.empty()) {
        outcome = it->second.front();
        it->second.pop_front();
    } else if (auto forever = always_.find(call); forever != always_.end()) {
        outcome = forever->second;
    } else {
        return false;
    }
    if (outcome.result == -1) errno = outcome.error;
    *result = outcome.result;
    return true;
}

} // namespace scripted
