#include "host/attendance/attendance.h"

#include "host/files/write_all.h"
#include "host/plugin/thread_signals.h"
#include "host/terminal/failure.h"
#include "host/terminal/text.h"

#include <algorithm>
#include <charconv>
#include <csignal>
#include <fcntl.h>
#include <fmt/format.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

namespace host {

namespace {

constexpr int kTick = 500; ///< milliseconds between two progress lines

/// What is said at the terminal, and the event of the progress line.
struct EventRow {
    const char *name;
    const char *text; ///< {}: what is wanted
};
constexpr EventRow kEvents[] = {
    {"pausing", "pausing at the end of this line; ! pauses at once, with the pen down"},
    {"pauseIsFar", "still no place where the pen is up; ! pauses at once, with the pen down"},
    {"paused", "paused; what the plotter has in its buffer it still draws. p or Enter goes on, q ends"},
    {"goingOn", "going on"},
    {"penWanted", "{}, then press Enter; q ends"},
    {"paperWanted", "{}, then press Enter; q ends"},
};

constexpr struct {
    char key;
    Ask ask;
} kKeys[] = {{'p', Ask::Toggle},      {'P', Ask::Toggle}, {'\n', Ask::Go}, {'\r', Ask::Go},
             {'!', Ask::PauseAtOnce}, {'q', Ask::Stop},   {'Q', Ask::Stop}};

constexpr struct {
    std::string_view line;
    std::optional<Ask> ask; ///< none: only the answer is wanted
} kCommands[] = {
    {"pause", Ask::Pause}, {"pause-at-once", Ask::PauseAtOnce}, {"go", Ask::Go}, {"stop", Ask::Stop}, {"status", {}},
};

/// "json", which means standard error, or "json:FD". Throws Failure (usage).
int progressDescriptor(const std::string &typed) {
    if (typed.empty()) return -1;
    int fd = STDERR_FILENO;
    constexpr std::string_view kForm = "json", kNumbered = "json:";
    bool isFit = typed == kForm;
    if (typed.starts_with(kNumbered)) {
        const char *end = typed.data() + typed.size();
        const auto [stop, code] = std::from_chars(typed.data() + kNumbered.size(), end, fd);
        isFit = code == std::errc() && stop == end && fd >= 0;
    }
    if (!isFit) throw Failure(ExitCode::Usage, fmt::format("--progress: {}; use json, or json:FD, as in json:3", typed));
    const int mode = fcntl(fd, F_GETFL);
    if (mode < 0 || (mode & O_ACCMODE) == O_RDONLY)
        throw Failure(ExitCode::Usage, fmt::format("--progress: nothing can be written to descriptor {}", fd));
    return fd;
}

// For the handler of SIGUSR1; -1 while there is no attendance.
volatile sig_atomic_t wakeFd = -1;
std::atomic<bool> isToggled = false;

void onToggle(int) {
    const int errorNumber = errno;
    isToggled = true;
    if (wakeFd >= 0) eventfd_write(wakeFd, 1);
    errno = errorNumber;
}

void handleToggle(void (*handler)(int)) {
    struct sigaction action = {};
    action.sa_handler = handler;
    action.sa_flags = SA_RESTART;
    sigaction(SIGUSR1, &action, nullptr);
}

} // namespace

Attendance::Attendance(const AttendanceOptions &options, AttendedPrint print)
    : print_(std::move(print)), progressFd_(progressDescriptor(options.progress)),
      gate_([this](GateEvent event, const std::string &wanted) { tell(event, wanted); }),
      wake_(eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC)) {
    if (!options.control.empty()) control_.emplace(options.control, [this](std::string_view line) { return answer(line); });
    if (options.usesKeys && print_.say) {
        keyboard_.emplace();
        if (!keyboard_->isThere()) keyboard_.reset();
    }
    isToggled = false;
    wakeFd = wake_.get();
    handleToggle(onToggle);
    SignalsBlocked blocked;
    listener_ = std::thread(&Attendance::listen, this);
}

Attendance::~Attendance() {
    isEnding_ = true;
    eventfd_write(wake_.get(), 1);
    listener_.join();
    handleToggle(SIG_IGN); // one that comes late ends nothing
    wakeFd = -1;
}

void Attendance::report(std::string_view event, std::string_view name, const Json &value) {
    if (progressFd_ < 0) return;
    Json line = {{"event", event}};
    line["state"] = nameOf(gate_.state());
    if (!name.empty()) line[name] = value;
    print_.addStatus(line);
    std::lock_guard guard(writing_);
    writeAll(progressFd_, line.line() + "\n"); // a reader that has left is no reason to stop a plot
}

void Attendance::tell(GateEvent event, const std::string &wanted) {
    const EventRow &row = kEvents[static_cast<size_t>(event)];
    report(row.name, wanted.empty() ? "" : "wanted", wanted);
    if (print_.say) print_.say(fmt::format(fmt::runtime(row.text), wanted) + "\n");
}

std::string Attendance::answer(std::string_view line) {
    const auto *row = std::ranges::find(kCommands, line, [](const auto &command) { return command.line; });
    if (row == std::end(kCommands))
        return Json{{"error", "unknown command; use pause, pause-at-once, go, stop or status"}}.line();
    if (row->ask) gate_.ask(*row->ask);
    Json answer = {{"state", nameOf(gate_.state())}};
    if (const std::string wanted = gate_.wanted(); !wanted.empty()) answer["wanted"] = wanted;
    print_.addStatus(answer);
    return answer.line();
}

void Attendance::readKeys() {
    while (const std::optional<char> key = keyboard_->read()) {
        const auto *row = std::ranges::find(kKeys, *key, [](const auto &known) { return known.key; });
        if (row != std::end(kKeys)) gate_.ask(row->ask);
    }
}

void Attendance::listen() {
    using Clock = std::chrono::steady_clock;
    Clock::time_point next = Clock::now() + std::chrono::milliseconds(kTick);
    std::vector<pollfd> waitedFor;
    while (!isEnding_) {
        waitedFor = {{wake_.get(), POLLIN, 0}, {keyboard_ ? keyboard_->descriptor() : -1, POLLIN, 0}};
        if (control_) control_->addTo(waitedFor);
        const auto rest = std::chrono::duration_cast<std::chrono::milliseconds>(next - Clock::now()).count();
        poll(waitedFor.data(), waitedFor.size(), static_cast<int>(std::clamp<int64_t>(rest, 0, kTick)));
        eventfd_t count;
        eventfd_read(wake_.get(), &count);
        if (isToggled.exchange(false)) gate_.ask(Ask::Toggle);
        if (keyboard_ && (waitedFor[1].revents & (POLLHUP | POLLERR | POLLNVAL)) != 0) keyboard_->forget();
        if (keyboard_) readKeys();
        if (control_) control_->serve();
        if (Clock::now() < next) continue;
        next = Clock::now() + std::chrono::milliseconds(kTick);
        if (keyboard_) keyboard_->refresh();
        report("progress");
    }
}

} // namespace host
