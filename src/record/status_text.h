// The status text of the record, ORB_CFSTR_message, and the rule by which strings of the record change hands.
//
// A host may keep a string that it was handed, so only one that no host can have seen is freed here. A print sets the status
// text for each of its pieces, of which a host sees the last: so a text may be deferred, and costs nothing until then.
#pragma once

#include "orb/vectorix.h"

#include <cstdint>

/// Puts next into a string field of the record. The old string stays the host's to release, unless it was made in this same
/// call of the entry: then no host can have seen it, and it is freed.
void replaceString(CFStringRef &field, CFStringRef next) noexcept;

/// Empties the status text.
void clearStatus() noexcept;

/// A text of static storage duration.
void setStatus(const char *text) noexcept;

__attribute__((format(printf, 1, 2))) void setStatusFormat(const char *format, ...) noexcept;

/// Sets a text that depends on one number. Within a call of the entry only the number is kept, and the text is made when the
/// call ends: a text that changes with every piece costs nothing until somebody can see it.
using StatusMaker = CFStringRef (*)(int32_t value);
void deferStatus(StatusMaker maker, int32_t value) noexcept;

/// Brackets a call of the entry.
void beginStatusDeferral() noexcept;
void endStatusDeferral() noexcept;
