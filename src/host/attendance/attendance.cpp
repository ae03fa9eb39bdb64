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

/// The event of the progress line, and what is said at the terminal; there, or from afar, something can be done about it.
struct EventRow {
    const char *name;
    const char *text;    ///< none: what is wanted
    const char *keys;    ///< that do it
    const char *signals; ///< the same; {}: to which process
};
constexpr const char *kAtOnce = "; ! pauses at once, with the pen down";
constexpr const char *kThenEnter = ", then press Enter; q ends";
constexpr const char *kThenSignal = ", then 'kill -USR1 {0}'; 'kill {0}' ends";
constexpr EventRow kEvents[] = {
    {"pausing", "pausing at the end of this line", kAtOnce, ""},
    {"pauseIsFar", "still no place where the pen is up", kAtOnce, ""},
    {"paused", "paused; what the plotter has in its buffer it still draws", ". p or Enter goes on, q ends",
     ". 'kill -USR1 {0}' goes on, 'kill {0}' ends"},
    {"goingOn", "going on", "", ""},
    {"penWanted", "", kThenEnter, kThenSignal},
    {"paperWanted", "", kThenEnter, kThenSignal},
};
constexpr const char *kProgress = "progress";

/// How long a line waits for a reader that is behind. The next progress line will do; another one comes but once.
constexpr int kPatience = 1000; // ms

bool takesMore(int fd, int patience) {
    pollfd waitedFor{fd, POLLOUT, 0};
    return poll(&waitedFor, 1, patience) == 1;
}

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

Attendance::~Attendance() { end(); }

void Attendance::end() {
    if (!listener_.joinable()) return;
    gate_.end();
    isEnding_ = true;
    eventfd_write(wake_.get(), 1);
    listener_.join();
    handleToggle(SIG_IGN); // one that comes late ends nothing
    wakeFd = -1;
    keyboard_.reset();
    control_.reset();
}

void Attendance::report(std::string_view event, std::string_view name, const Json &value) {
    if (progressFd_ < 0) return;
    Json line = {{"event", event}};
    line["state"] = nameOf(gate_.state());
    if (!name.empty()) line[name] = value;
    print_.addStatus(line);
    std::lock_guard guard(writing_);
    if (takesMore(progressFd_, event == kProgress ? 0 : kPatience)) writeAll(progressFd_, line.line() + "\n");
}

void Attendance::tell(GateEvent event, const std::string &wanted) {
    const EventRow &row = kEvents[static_cast<size_t>(event)];
    report(row.name, wanted.empty() ? "" : "wanted", wanted);
    if (!print_.say) return;
    const std::string remedy = keyboard_ ? row.keys : fmt::format(fmt::runtime(row.signals), getpid());
    print_.say((wanted.empty() ? row.text : wanted) + remedy + "\n");
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

/// A print that waits for nobody would hold the plotter for good.
void Attendance::loseTerminal() {
    keyboard_->forget();
    isLost_ = !control_ && !print_.mayWaitUnseen;
}

void Attendance::listen() {
    using Clock = std::chrono::steady_clock;
    Clock::time_point next = Clock::now() + std::chrono::milliseconds(kTick);
    std::vector<pollfd> waitedFor;
    while (!isEnding_) {
        waitedFor = {{wake_.get(), POLLIN, 0}, keyboard_ ? keyboard_->watched() : pollfd{-1, 0, 0}};
        if (control_) control_->addTo(waitedFor);
        const auto rest = std::chrono::duration_cast<std::chrono::milliseconds>(next - Clock::now()).count();
        poll(waitedFor.data(), waitedFor.size(), static_cast<int>(std::clamp<int64_t>(rest, 0, kTick)));
        eventfd_t count;
        eventfd_read(wake_.get(), &count);
        if (isToggled.exchange(false)) gate_.ask(Ask::Toggle);
        if (keyboard_ && (waitedFor[1].revents & (POLLHUP | POLLERR | POLLNVAL)) != 0) loseTerminal();
        if (isLost_ && gate_.isHeld()) gate_.ask(Ask::Stop);
        if (keyboard_) readKeys();
        if (control_) control_->serve();
        if (Clock::now() < next) continue;
        next = Clock::now() + std::chrono::milliseconds(kTick);
        if (keyboard_) keyboard_->refresh();
        report(kProgress);
    }
}

} // namespace host
