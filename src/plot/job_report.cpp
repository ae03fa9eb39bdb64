#include "plot/job_report.h"

#include "platform/posix/stop.h"

#include <algorithm>
#include <utility>

namespace plot {

namespace {

ORB_ProgressFunction progressFunction = nullptr;
void *progressContext = nullptr;

/// The piece offered last. All before it have left the line's queue: each is drained before the next one comes.
struct Piece {
    int64_t offset = -1; ///< -1: there was none
    int64_t sent = 0;
    bool isWhole = false;
    bool isPending = false; ///< the line may hold a part of it
};
Piece last;

ORB_JobReport &report() noexcept { return gORB_FoundationStruct.report; }

/// The end of the last piece was lost after the link had taken it.
void takeBack(int64_t bytes) noexcept {
    if (bytes == 0) return;
    last.sent -= bytes;
    report().sentBytes -= bytes;
    report().failedBytes += bytes;
    // These two stand at the end of what was sent, which now lies further back.
    const int32_t errorID = report().firstErrorID;
    if (errorID == kORB_ErrorStopped || errorID == kORB_ErrorUnvalidPort)
        report().firstErrorOffset = std::min(report().firstErrorOffset, last.offset + last.sent);
    if (!std::exchange(last.isWhole, false)) return;
    --report().piecesSent;
    ++report().piecesFailed;
}

/// The port is gone, and the last piece may be lost with it.
void loseLastPiece(int32_t status) noexcept {
    takeBack(last.sent);
    noteFailure(kORB_ErrorUnvalidPort, status, last.offset);
    report().lastStatus = status;
}

} // namespace

void beginReport() noexcept {
    report() = emptyJobReport();
    last = {};
}

void noteFileSize(int64_t bytes) noexcept {
    report().fileBytes = bytes;
    report().withheldBytes = bytes;
}

void noteFailure(int32_t errorID, int32_t status, int64_t offset) noexcept {
    if (report().firstErrorID != kORB_NoError) return;
    report().firstErrorID = errorID;
    report().firstStatus = status;
    report().firstErrorOffset = offset;
}

void noteFailedWrite(const LinkWrite &outcome, int64_t offset) noexcept {
    const int32_t errorID = answer().ORB_errorID;
    noteFailure(errorID == kORB_NoError ? kORB_ErrorUnvalidPort : errorID, outcome.status, offset);
}

void noteStop(uint32_t reason) noexcept { report().stopReason = reason; }

void noteUncutChunk() noexcept { ++report().uncutChunks; }

void notePiece(int64_t offset, int64_t offered, const LinkWrite &outcome) noexcept {
    if (outcome.portWasGone) loseLastPiece(outcome.status);
    const bool isWhole = outcome.taken == offered && outcome.status == 0;
    last = {offset, outcome.taken, isWhole, outcome.isPending};
    report().lastStatus = outcome.status;
    report().withheldBytes -= offered;
    report().sentBytes += outcome.taken;
    report().failedBytes += offered - outcome.taken;
    if (isWhole) {
        ++report().piecesSent;
        return;
    }
    ++report().piecesFailed;
    noteFailedWrite(outcome, offset + outcome.taken);
}

void noteClose(const LinkClose &outcome) noexcept {
    if (outcome.status != 0) {
        loseLastPiece(outcome.status);
    } else if (last.isPending) {
        takeBack(std::min(outcome.discarded, last.sent));
    }
}

bool hostWantsStop() noexcept {
    if (progressFunction && progressFunction(&report(), progressContext) != 0) {
        platform::requestStop();
        return true;
    }
    return platform::stopRequested();
}

void setProgressFunction(ORB_ProgressFunction function, void *context) noexcept {
    progressFunction = function;
    progressContext = context;
}

} // namespace plot
