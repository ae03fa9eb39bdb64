// The outcomes of future calls: what makes a scripted backend fail.
#pragma once

#include <deque>
#include <map>
#include <string>
#include <vector>

namespace scripted {

/// One line per call, over all backends, in the order of the calls.
using Log = std::vector<std::string>;

/// Bytes as they stand in a log.
std::string quoted(std::string_view bytes);

/// The result of one future call: -1 with an errno, or a value.
struct Outcome {
    long result = 0;
    int error = 0;
};
inline Outcome fails(int error) { return {-1, error}; }
inline Outcome gives(long result) { return {result, 0}; }

class Script {
public:
    Script() = default;
    Script(const Script &) = delete;
    Script &operator=(const Script &) = delete;
    /// A scripted outcome that was never used fails the test.
    ~Script();

    /// The next call of that name (not yet scripted) gives this.
    void script(const std::string &call, Outcome outcome, int times = 1);
    /// Every call of that name from now on gives this.
    void always(const std::string &call, Outcome outcome);

protected:
    /// Takes the outcome of a call of that name; false when none is scripted. Sets errno.
    bool scriptedOutcome(const std::string &call, long *result);

private:
    std::map<std::string, std::deque<Outcome>> script_;
    std::map<std::string, Outcome> always_;
};

} // namespace scripted
