// A scripted platform: every call that a device or a user could see is logged as one line of text, any call can be made to
// fail, and a scripted outcome that was never used fails the test, as does whatever is left open or not released.
#pragma once

#include "stand_in/platform.h"

#include <deque>
#include <map>
#include <string>

namespace scripted {

using stand_in::Log;
using stand_in::quoted;
using stand_in::Registry;
using stand_in::Terminal;
using stand_in::UsbDevice;

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
    ~Platform() override;

    /// The next call of that name (not yet scripted) gives this. Requests of ioctl are calls of their own names.
    void script(const std::string &call, Outcome outcome, int times = 1);
    /// Every call of that name from now on gives this.
    void always(const std::string &call, Outcome outcome);

    stand_in::Ending before(stand_in::Seam seam, const char *call) override;
    void misuse(const std::string &what) override;

private:
    std::map<std::string, std::deque<Outcome>, std::less<>> script_;
    std::map<std::string, Outcome, std::less<>> always_;
};

} // namespace scripted
