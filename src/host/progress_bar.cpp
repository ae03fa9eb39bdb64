#include "host/progress_bar.h"

#include "host/output.h"
#include "host/text.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fmt/format.h>
#include <string>
#include <sys/ioctl.h>
#include <unistd.h>

namespace host {
namespace {

size_t terminalWidth() {
    winsize size{};
    if (ioctl(STDERR_FILENO, TIOCGWINSZ, &size) != 0 || size.ws_col == 0) return 80;
    return size.ws_col;
}

std::string line(int64_t done, int64_t total, double seconds) {
    double part = total > 0 ? static_cast<double>(done) / static_cast<double>(total) : 1;
    double rate = seconds > 0 ? static_cast<double>(done) / seconds : 0;
    std::string text = fmt::format("{} of {} bytes", grouped(done), grouped(total));
    if (seconds >= 1 && rate >= 1) {
        text += fmt::format("  {} B/s", grouped(static_cast<int64_t>(rate)));
        if (done < total) text += fmt::format("  {} left", duration(static_cast<double>(total - done) / rate));
    }
    std::string percent = fmt::format("{:3} % ", static_cast<int>(part * 100));
    size_t taken = percent.size() + text.size() + 4; // brackets, the blank behind them, the terminal's last column
    size_t width = terminalWidth();
    if (width >= taken + 10) {
        size_t room = std::min<size_t>(width - taken, 40);
        auto full = static_cast<size_t>(part * static_cast<double>(room));
        percent += fmt::format("[{:-<{}}] ", std::string(full, '#'), room);
    }
    return (percent + text).substr(0, width - 1);
}

} // namespace

bool ProgressBar::isPossible() {
    const char *terminal = getenv("TERM");
    return isatty(STDERR_FILENO) && terminal && strcmp(terminal, "dumb") != 0;
}

void ProgressBar::update(int64_t done, int64_t total) {
    auto now = Clock::now();
    if (!on_ || (drawn_ && done < total && now - lastDrawn_ < std::chrono::milliseconds(100))) return;
    lastDrawn_ = now;
    drawn_ = true;
    std::string text = line(done, total, std::chrono::duration<double>(now - start_).count());
    printError("\r{}\033[K", text);
}

void ProgressBar::clear() {
    if (!drawn_) return;
    drawn_ = false;
    writeError("\r\033[K");
}

} // namespace host
