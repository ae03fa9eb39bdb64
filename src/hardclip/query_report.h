// The query report: what the last hard-clip query said and heard.
//
// The record has room for four numbers and an identifier, and the close that ends a query sets that identifier anew. This
// keeps what a user must see to tell a silent plotter from a wrong setting: the request, the reply, and the failure.
#pragma once

#include "orb/vectorix.h"

#include <cstdint>
#include <string_view>

namespace hardclip {

/// A new query: nothing said, nothing heard.
void beginQueryReport() noexcept;
/// The text of ORB_writeBuffer goes out as a request.
void noteRequest() noexcept;
/// The last attempt to send it failed with that status. When nothing is heard either, that is the outcome.
void noteUnsent(int32_t status) noexcept;
/// A read gave these bytes; none for a read that gave nothing.
void noteRead(std::string_view reply) noexcept;
/// The identifier of now and the status, before the step that closes the link sets the record's.
void noteOutcome(int32_t status) noexcept;

const ORB_QueryReport &queryReport() noexcept;

} // namespace hardclip
