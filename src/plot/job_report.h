// The job report: what a print did, kept as it goes, and the host's progress function.
//
// In the record each step overwrites the identifier of the one before, and a close that goes well makes a failed job look
// done. The report keeps the first failure, and counts every byte of the plot file as sent, failed or withheld.
#pragma once

#include "orb/vectorix.h"
#include "record/state.h"

#include <cstdint>

namespace plot {

/// A new job: nothing sent, nothing failed.
void beginReport() noexcept;

/// The plot file is open and holds so many bytes; all are withheld until they are offered.
void noteFileSize(int64_t bytes) noexcept;

/// A failure; only the first of a job is kept. offset: where in the plot file, -1 when not in it.
void noteFailure(int32_t errorID, int32_t status, int64_t offset = -1) noexcept;

/// A write that failed, or took only a part: the latter leaves no identifier in the record.
void noteFailedWrite(const LinkWrite &outcome, int64_t offset = -1) noexcept;

void noteStop(uint32_t reason) noexcept;
void noteUncutChunk() noexcept;

/// A piece of the plot file at offset was offered to the link with so many bytes, and this is what the link did.
void notePiece(int64_t offset, int64_t offered, const LinkWrite &outcome) noexcept;

/// The serial port is closed: what was lost with the last piece has failed.
void noteClose(const LinkClose &outcome) noexcept;

/// Calls the host's progress function. True when the job is to stop, by its answer or by a stop request.
bool hostWantsStop() noexcept;

void setProgressFunction(ORB_ProgressFunction function, void *context) noexcept;

} // namespace plot
