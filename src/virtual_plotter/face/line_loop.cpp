#include "virtual_plotter/face/line_loop.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

namespace virtual_plotter {

namespace {

constexpr int kTick = 10;      // ms: while bytes wait in the buffer, or for somebody to open the line
constexpr int kLongWait = 200; // ms

VirtualPlotter::Time now() { return std::chrono::steady_clock::now().time_since_epoch(); }

/// What does not fit, for nobody reads it, is lost: waiting for a reader could wait for ever.
void speak(int fd, const std::string &text) {
    if (!text.empty()) [[maybe_unused]]
        ssize_t ignored = write(fd, text.data(), text.size());
}

/// What the line has for the plotter; 0 when it has nothing, or the plotter no room for it.
size_t listen(int fd, VirtualPlotter &plotter) {
    std::array<char, 16384> bytes;
    const size_t room = std::min(plotter.room(), bytes.size());
    if (room == 0) return 0;
    const ssize_t count = read(fd, bytes.data(), room);
    if (count <= 0) return 0;
    return plotter.hear({bytes.data(), static_cast<size_t>(count)}, now());
}

void waitFor(const PtyLine &line, const VirtualPlotter &plotter, bool held) {
    // A line that nobody holds, and one with bytes that there is no room for, are ready all the time.
    const bool canBlock = held && plotter.room() > 0;
    pollfd look{line.farEnd(), POLLIN, 0};
    poll(&look, canBlock ? 1 : 0, canBlock && plotter.isIdle() ? kLongWait : kTick);
}

} // namespace

void playOn(PtyLine &line, VirtualPlotter &plotter, const LineRules &rules) {
    fcntl(line.farEnd(), F_SETFL, fcntl(line.farEnd(), F_GETFL) | O_NONBLOCK);
    VirtualPlotter::Time notLeftAt = now();
    while (!rules.isStopped || !rules.isStopped()) {
        plotter.advance(now());
        // Before reading: what was sent before it was closed is then read below.
        const bool held = line.isHeld();
        const size_t heard = listen(line.farEnd(), plotter);
        speak(line.farEnd(), plotter.takeSaid());
        if (plotter.hasHungUp()) return line.hangUp();
        if (heard > 0) {
            notLeftAt = now();
            continue;
        }
        const bool left =
            !held && (plotter.heardBytes() > 0 || !rules.mustHear) && (plotter.isIdle() || plotter.isHanging());
        if (!left) notLeftAt = now();
        if (left && rules.onceWithin && now() - notLeftAt >= *rules.onceWithin) return;
        waitFor(line, plotter, held);
    }
}

} // namespace virtual_plotter
