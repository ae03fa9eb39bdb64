#include "host/plugin/progress_bar.h"

#include "host/plugin/thread_signals.h"
#include "host/terminal/output.h"
#include "host/terminal/text.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <fmt/format.h>
#include <sys/ioctl.h>
#include <system_error>
#include <unistd.h>

namespace host {
namespace {

size_t terminalWidth() {
    winsize size{};
    if (ioctl(STDERR_FILENO, TIOCGWINSZ, &size) != 0 || size.ws_col == 0) return 80;
    return size.ws_col;
}

const char *textOf(Wait wait) {
    switch (wait) {
    case Wait::None: break;
    case Wait::ForPlotter: return " for the plotter";
    case Wait::NotTaking: return ": the plotter takes no data";
    case Wait::ClearToSend: return ": CTS is down";
    case Wait::XoffOrNothing: return ": held by XOFF, or not taking data";
    }
    return "";
}

/// "  pen 2 of 4"; nothing where there is but one.
std::string penOf(const Progress &progress) {
    return progress.pen > 0 && progress.pens > 1 ? fmt::format("  pen {} of {}", progress.pen, progress.pens) : "";
}

/// Behind the figures: how fast it goes, or why it does not.
std::string courseOf(const Progress &progress) {
    if (progress.isHeld) return "stands still";
    if (progress.wait != Wait::None)
        return fmt::format("waiting {}{}", duration(std::floor(progress.still)), textOf(progress.wait));
    double rate = progress.seconds > 0 ? static_cast<double>(progress.doneBytes) / progress.seconds : 0;
    if (progress.seconds < 1 || rate < 1) return {};
    std::string text = fmt::format("{} B/s", grouped(static_cast<int64_t>(rate)));
    int64_t left = progress.totalBytes - progress.doneBytes;
    if (left > 0) text += fmt::format("  {} left", duration(progress.left.value_or(static_cast<double>(left) / rate)));
    return text;
}

} // namespace

std::string progressLine(const Progress &progress, size_t width) {
    double part =
        progress.totalBytes > 0 ? static_cast<double>(progress.doneBytes) / static_cast<double>(progress.totalBytes) : 1;
    std::string percent = fmt::format("{:3} % ", static_cast<int>(part * 100));
    std::string figures = fmt::format("{} of {} bytes", grouped(progress.doneBytes), grouped(progress.totalBytes));
    std::string course = courseOf(progress);
    if (const std::string pen = penOf(progress); percent.size() + figures.size() + pen.size() + course.size() + 2 <= width)
        figures += pen;
    if (!course.empty() && percent.size() + figures.size() + 2 + course.size() <= width) {
        figures += "  " + course;
    } else if (progress.wait != Wait::None) {
        figures = course; // a narrow terminal: why it waits is more than where
    }
    size_t taken = percent.size() + figures.size() + 3; // brackets, and the blank behind them
    if (width >= taken + 10) {
        size_t room = std::min<size_t>(width - taken, 40);
        auto full = static_cast<size_t>(part * static_cast<double>(room));
        percent += fmt::format("[{:-<{}}] ", std::string(full, '#'), room);
    }
    return (percent + figures).substr(0, width);
}

bool ProgressBar::isPossible() {
    const char *terminal = getenv("TERM");
    return isatty(STDERR_FILENO) && terminal && strcmp(terminal, "dumb") != 0;
}

void ProgressBar::follow(std::function<Progress()> source) {
    if (!on_) return;
    source_ = std::move(source);
    isEnding_ = false; // of an earlier job
    SignalsBlocked blocked;
    try {
        artist_ = std::thread(&ProgressBar::draw, this);
    } catch (const std::system_error &) {
        // A job without its line is a job all the same.
    }
}

void ProgressBar::draw() {
    std::unique_lock lock(mutex_);
    while (!isEnding_) {
        std::string text = progressLine(source_(), terminalWidth() - 1); // the last column would begin a new line
        if (text != drawn_) printError("\r{}\033[K", text);
        drawn_ = std::move(text);
        wake_.wait_for(lock, std::chrono::milliseconds(200), [this] { return isEnding_; });
    }
    erase();
}

void ProgressBar::erase() {
    if (!drawn_.empty()) writeError("\r\033[K");
    drawn_.clear();
}

void ProgressBar::stop() {
    if (!artist_.joinable()) return;
    {
        std::lock_guard guard(mutex_);
        isEnding_ = true;
    }
    wake_.notify_one();
    artist_.join();
}

void ProgressBar::writeAbove(std::string_view text) {
    std::lock_guard guard(mutex_);
    erase();
    writeError(text);
}

} // namespace host
