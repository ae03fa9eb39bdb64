#include "host/plugin/progress.h"

#include <algorithm>
#include <array>
#include <sys/ioctl.h>

namespace host {

namespace {

constexpr std::chrono::seconds kSoon(2); // shorter rests, while a plotter carries out a command, are usual
constexpr int64_t kLongestPiece = 255;   // bytes

} // namespace

const char *nameOf(Wait wait) {
    constexpr std::array kNames = {"nothing", "start", "plotter", "cts", "xoff"};
    return kNames.at(static_cast<size_t>(wait));
}

Wait waitOnLine(int descriptor, bool usesHardwareHandshake) {
    if (!usesHardwareHandshake) return Wait::XoffOrNothing;
    int lines = 0;
    bool isKnown = descriptor >= 0 && ioctl(descriptor, TIOCMGET, &lines) == 0;
    return isKnown && (lines & TIOCM_CTS) == 0 ? Wait::ClearToSend : Wait::NotTaking;
}

double paceOf(double measured, double estimated, double whole) {
    constexpr double kEnough = 30, kMost = 4;
    if (estimated < std::min(whole / 10, kEnough) || estimated <= 0) return 1;
    return std::clamp(measured / estimated, 1 / kMost, kMost);
}

void JobProgress::note(const ORB_JobReport &soFar) {
    std::lock_guard guard(mutex_);
    ++known_.notes;
    known_.done = soFar.sentBytes + soFar.failedBytes;
}

void JobProgress::end() {
    std::lock_guard guard(mutex_);
    known_.hasEnded = true;
}

/// Bytes of the piece under way that have left this computer. Its length is not known here, so they are what has gone of the
/// most that was seen in the port's queue; at most a whole piece, as some drivers count in blocks of their own.
int64_t JobProgress::ofThePieceUnderWay(uint64_t piece) {
    int queued = 0;
    if (line_.descriptor < 0 || ioctl(line_.descriptor, TIOCOUTQ, &queued) != 0) return 0;
    mostQueued_ = piece == piece_ ? std::max(mostQueued_, queued) : queued;
    piece_ = piece;
    return std::min<int64_t>(mostQueued_ - queued, kLongestPiece);
}

Wait JobProgress::reason(const Known &known) const {
    if (line_.isUsb) return known.notes > 0 ? Wait::NotTaking : Wait::ForPlotter;
    return waitOnLine(line_.descriptor, line_.usesHardwareHandshake);
}

Progress JobProgress::now(bool isHeld) {
    std::lock_guard asking(asking_);
    Known known;
    {
        std::lock_guard guard(mutex_);
        known = known_;
    }
    Progress progress;
    progress.isHeld = isHeld;
    progress.totalBytes = fileBytes_;
    progress.doneBytes = std::min(known.done + ofThePieceUnderWay(known.notes), fileBytes_);
    auto time = Clock::now();
    progress.seconds = std::chrono::duration<double>(time - start_).count();
    if (secondsLeft) progress.left = secondsLeft(progress.seconds);
    if (isHeld || progress.doneBytes != shown_ || known.hasEnded || progress.doneBytes >= bytesToSend_) forward_ = time;
    shown_ = progress.doneBytes;
    if (time - forward_ >= kSoon) {
        progress.still = std::chrono::duration<double>(time - forward_).count();
        progress.wait = reason(known);
    }
    return progress;
}

} // namespace host
