#include "printer_app/plotting/worker.h"

#include <csignal>
#include <nlohmann/json.hpp>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace printer_app {

using nlohmann::json;

namespace {

using Clock = std::chrono::steady_clock;

constexpr auto kTick = std::chrono::milliseconds(100);
constexpr auto kToPutPenAway = std::chrono::seconds(20); // over USB it may take six, and as long to take the interface
constexpr size_t kLongestLine = 65536;

const std::string &made(const std::string &socket) {
    unlink(socket.c_str()); // of a print that was killed
    return socket;
}

/// A member that may be missing or null.
template <class Value> Value member(const json &object, const char *name, Value otherwise) {
    const auto found = object.find(name);
    return found == object.end() || found->is_null() ? otherwise : found->get<Value>();
}

} // namespace

Worker::Worker(const Words &words, std::string socket) : socket_(std::move(socket)), child_((made(socket_), words), 3) {}

bool Worker::watch(const std::function<void(const Progress &)> &hear) {
    const bool isThere = child_.read(text_, kTick);
    for (size_t end; (end = text_.find('\n')) != std::string::npos; text_.erase(0, end + 1))
        take(text_.substr(0, end), hear);
    if (text_.size() > kLongestLine) text_.clear();
    talk();
    if (Clock::now() <= latest_) return isThere;
    child_.signal(SIGKILL);
    return false; // what it started itself may hold its pipes for longer
}

void Worker::take(const std::string &line, const std::function<void(const Progress &)> &hear) try {
    const json value = json::parse(line);
    progress_.event = value.at("event");
    progress_.wanted = member(value, "wanted", std::string());
    if (value.contains("bytes")) {
        progress_.bytes = value.at("bytes");
        progress_.totalBytes = value.at("totalBytes");
        progress_.place = value.at("place");
        progress_.secondsLeft.reset();
        if (const auto left = value.find("secondsLeft"); left != value.end() && left->is_number())
            progress_.secondsLeft = *left;
        progress_.heldBy = member(value, "heldBy", std::string());
    }
    if (progress_.event == "done") {
        const json &report = value.at("report");
        outcome_.message = member(report, "message", std::string());
        progress_.place = std::max(progress_.place, member(report, "place", int64_t{0}));
        // Of a print that ended within its first half second there was no line of progress.
        progress_.bytes = std::max(progress_.bytes, member(report, "sentBytes", int64_t{0}));
        progress_.totalBytes = std::max(progress_.totalBytes, member(report, "fileBytes", int64_t{0}));
    }
    hear(progress_);
} catch (const json::exception &) {
    // A line of a later version, or one that was cut: the next one tells as much.
}

void Worker::say(const std::string &command) {
    unsaid_ += command + "\n";
    talk();
}

bool Worker::connect() {
    if (control_.get() >= 0) return true;
    host::UniqueFd fd(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    socket_.copy(address.sun_path, sizeof address.sun_path - 1);
    if (::connect(fd.get(), reinterpret_cast<const sockaddr *>(&address), sizeof address)) return false;
    control_ = std::move(fd);
    return true;
}

void Worker::talk() {
    if (unsaid_.empty() || !connect()) return;
    const ssize_t sent = send(control_.get(), unsaid_.data(), unsaid_.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
    if (sent > 0) unsaid_.erase(0, static_cast<size_t>(sent));
    char answers[4096]; // of which the lines of progress say as much
    while (recv(control_.get(), answers, sizeof answers, MSG_DONTWAIT) > 0) {
    }
}

void Worker::stop() {
    if (latest_ != Clock::time_point::max()) return;
    latest_ = Clock::now() + kToPutPenAway;
    child_.signal(SIGTERM);
}

Outcome Worker::outcome() {
    outcome_.code = child_.wait();
    outcome_.place = progress_.place;
    outcome_.hasBegun = progress_.bytes > 0;
    if (outcome_.message.empty() && outcome_.code != 0) outcome_.message = child_.diagnostics();
    constexpr std::string_view kName = "vectorix: ";
    if (outcome_.message.starts_with(kName)) outcome_.message.erase(0, kName.size());
    outcome_.message = forPeople(outcome_.message);
    unlink(socket_.c_str());
    return outcome_;
}

} // namespace printer_app
