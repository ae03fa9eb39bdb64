#include "plot/job_report.h"

#include "platform/posix/stop.h"

namespace plot {

namespace {

ORB_ProgressFunction progressFunction = nullptr;
void *progressContext = nullptr;

ORB_JobReport &report() noexcept { return gORB_FoundationStruct.report; }

} // namespace

void beginReport() noexcept { report() = emptyJobReport(); }

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
    report().withheldBytes -= offered;
    report().sentBytes += outcome.taken;
    report().failedBytes += offered - outcome.taken;
    if (outcome.taken == offered && outcome.status == 0) {
        ++report().piecesSent;
        return;
    }
    ++report().piecesFailed;
    noteFailedWrite(outcome, offset + outcome.taken);
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
