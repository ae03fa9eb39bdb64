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
        // Without a descriptor a stop from another thread is noticed by its signal, or at the latest after one slice.
        const milliseconds slice = stopDescriptor() < 0 ? milliseconds(200) : milliseconds(3600 * 1000);
        while (!stopRequested()) {
            auto left = std::chrono::ceil<milliseconds>(end - steady_clock::now());
            if (left <= milliseconds::zero()) return;
            pollfd stop{stopDescriptor(), POLLIN, 0};
            ::poll(&stop, 1, static_cast<int>(std::min(left, slice).count()));
        }
    }
};

} // namespace

Clock &linuxClock() noexcept {
    static LinuxClock clock;
    return clock;
}

} // namespace platform
