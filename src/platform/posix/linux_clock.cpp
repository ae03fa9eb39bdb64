#include "platform/linux_backends.h"
#include "platform/posix/clock.h"
#include "platform/posix/stop.h"

#include <algorithm>
#include <chrono>
#include <poll.h>

namespace platform {

namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

class LinuxClock final : public Clock {
public:
    void sleep(unsigned seconds) override {
        const auto end = steady_clock::now() + std::chrono::seconds(seconds);
        // A stop interrupts the wait; where the system gave no signal for it, it is noticed after one slice.
        constexpr milliseconds slice(200);
        mayBlock();
        while (!stopRequested()) {
            auto left = std::chrono::ceil<milliseconds>(end - steady_clock::now());
            if (left <= milliseconds::zero()) return;
            ::poll(nullptr, 0, static_cast<int>(std::min(left, slice).count()));
        }
    }
};

} // namespace

Clock &linuxClock() noexcept {
    static LinuxClock clock;
    return clock;
}

} // namespace platform
