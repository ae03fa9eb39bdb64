#include "far_end.h"

#include "figures.h"

#include <array>
#include <chrono>
#include <fcntl.h>
#include <poll.h>
#include <stdexcept>
#include <system_error>
#include <unistd.h>

namespace bench {

FarEnd::FarEnd(const Plot &plot, virtual_plotter::VirtualPlotter *plotter) : plot_(plot), plotter_(plotter) {
    int error = line_.open();
    if (error == 0) error = line_.holdNearEnd(); // it lasts from one print to the next
    if (error != 0) throw std::system_error(error, std::generic_category(), "pseudo-terminal");
    fcntl(line_.farEnd(), F_SETFL, O_NONBLOCK);
}

FarEnd::~FarEnd() {
    ended_ = true;
    if (thread_.joinable()) thread_.join();
}

void FarEnd::listen() {
    heard_ = 0;
    same_ = true;
    ended_ = false;
    thread_ = std::thread([this] { hear(); });
}

void FarEnd::finish() {
    ended_ = true;
    thread_.join();
    if (heard_ != plot_.size() || !same_)
        throw std::runtime_error(text("what arrived is not the plot: %lld bytes of %lld%s", static_cast<long long>(heard_),
                                      static_cast<long long>(plot_.size()), same_ ? "" : ", others than it has"));
}

void FarEnd::hear() {
    constexpr int kTick = 5, kLongWait = 500; // ms
    std::array<char, 16384> bytes;
    const int fd = line_.farEnd();
    while (heard_ < plot_.size() || (plotter_ != nullptr && !plotter_->isIdle())) {
        const auto now = std::chrono::steady_clock::now().time_since_epoch();
        size_t room = bytes.size();
        if (plotter_ != nullptr) {
            plotter_->advance(now);
            room = std::min(room, plotter_->room());
        }
        const ssize_t count = room == 0 ? -1 : read(fd, bytes.data(), room);
        if (count > 0) {
            const std::string_view came(bytes.data(), static_cast<size_t>(count));
            same_ = same_ && plot_.has(heard_, came);
            heard_ += count;
            if (plotter_ != nullptr) plotter_->hear(came, now);
        }
        if (plotter_ != nullptr) {
            const std::string said = plotter_->takeSaid();
            if (!said.empty() && write(fd, said.data(), said.size()) < 0) return;
        }
        if (count > 0) continue;
        pollfd look{fd, POLLIN, 0};
        const bool paced = plotter_ != nullptr;
        const bool silent = poll(&look, room > 0 ? 1 : 0, paced ? kTick : kLongWait) == 0;
        const bool waiting = paced && !plotter_->isIdle();
        if (silent && ended_ && !waiting) return;
    }
}

} // namespace bench
