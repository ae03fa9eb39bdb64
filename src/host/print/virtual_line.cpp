#include "host/print/virtual_line.h"

#include "host/plugin/thread_signals.h"
#include "host/terminal/failure.h"

namespace host {

VirtualLine::VirtualLine(const DrawingOptions &options, const std::string &picture)
    : drawing_(options, picture), plotter_({}, drawing_.sink(), drawing_.sheet().hardClip) {
    int error = line_.open();
    if (error == 0) error = line_.holdNearEnd();
    if (error != 0) throw fileFailure("pseudo-terminal", error);
    SignalsBlocked blocked;
    player_ = std::thread([this] {
        virtual_plotter::playOn(line_, plotter_,
                                {.isStopped = {}, .onceWithin = std::chrono::milliseconds(0), .mustHear = false});
    });
}

int64_t VirtualLine::end() {
    if (player_.joinable()) {
        line_.releaseNearEnd();
        player_.join();
        line_.hangUp();
        plotter_.finish();
    }
    return static_cast<int64_t>(plotter_.heardBytes());
}

void VirtualLine::finish() { drawing_.finish(); }

} // namespace host
