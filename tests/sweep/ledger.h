// What the link was offered and what it took, by the backends' own account: the reports have to say the same.
#pragma once

#include <algorithm>
#include <cstdint>
#include <string>

namespace sweep {

class Ledger {
public:
    /// The sender read the plot file: what it writes next is another piece, and no retry.
    void beginPiece() { retry_ = false; }

    /// Bytes were offered to the link, and it took some. ok: the call said that it took them all.
    void wrote(int64_t offered, int64_t taken, bool ok, bool ofThePlot) {
        tookPartAndFailed |= taken != 0 && !ok;
        if (!ofThePlot) return;
        if (!retry_) {
            settle();
            offered_ = offered;
            pending_ = retry_ = true;
        }
        taken_ = std::max(taken_, taken);
        ok_ = ok;
    }

    /// The last piece is not known to have left the port, with as many bytes as that may be.
    void lost(int64_t bytes = INT64_MAX) {
        ok_ = ok_ && std::min(bytes, taken_) == 0;
        taken_ -= std::min(bytes, taken_);
    }

    /// Counts the last piece.
    void settle() {
        if (!pending_) return;
        sentBytes += taken_;
        failedBytes += offered_ - taken_;
        ++(ok_ && taken_ == offered_ ? piecesSent : piecesFailed);
        offered_ = taken_ = 0;
        pending_ = false;
    }

    int64_t fileBytes = 0; ///< what the size of the plot file was said to be
    int64_t sentBytes = 0, failedBytes = 0;
    uint64_t piecesSent = 0, piecesFailed = 0;
    bool tookPartAndFailed = false; ///< some transfer did
    uint32_t reads = 0;             ///< of a query
    std::string reply;              ///< the last one that was not empty
    unsigned sleepsAfterStop = 0;

private:
    int64_t offered_ = 0, taken_ = 0;
    bool retry_ = false, pending_ = false, ok_ = false;
};

} // namespace sweep
