#include "sweep/faulty_platform.h"

#include "support/job.h"

namespace sweep {

using stand_in::Effect, stand_in::Ending;

Ending FaultyPlatform::before(stand_in::Seam, const char *request) {
    const std::string_view call = std::string_view(request).starts_with("TIOC") ? "ioctl" : request;
    const bool stopped = faults_.stopped();
    const Ending ending = faults_.enter(call.data());
    if (call == "read" || call == "ReadPipe") ++ledger.reads;
    if (call == "sleep" && stopped) ++ledger.sleepsAfterStop;
    if (ending.effect == Effect::fails) {
        const bool gone = ending.code == EIO || ending.code == ENXIO;
        const std::string_view name = request;
        // What was drained before is lost when the port is found gone: a hang-up ends a drain, too.
        if ((gone && (name == "write" || name == "TIOCNXCL")) || (name == "tcdrain" && !faults_.stopped())) ledger.lost();
        return ending;
    }
    if (call == "FSReadFork") ledger.beginPiece();
    if (call == "FSGetForkSize" && files.isOpen(jobs::kPlotPath)) {
        const auto size = static_cast<long>(files.files[jobs::kPlotPath].size());
        ledger.fileBytes = ending.effect == Effect::gives ? ending.code : size;
    }
    return ending;
}

void FaultyPlatform::wrote(size_t offered, size_t taken, bool ok) {
    // While the plot file is open, nothing but its pieces is sent.
    ledger.wrote(static_cast<int64_t>(offered), static_cast<int64_t>(taken), ok, files.isOpen(jobs::kPlotPath));
}

void FaultyPlatform::discarded(size_t bytes) { ledger.lost(static_cast<int64_t>(bytes)); }

void FaultyPlatform::said(std::string_view bytes) {
    if (!bytes.empty()) ledger.reply = bytes;
}

} // namespace sweep
