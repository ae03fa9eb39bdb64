// What a plotter answers when it is asked, apart from when: the texts depend only on the state that is handed in. Emulations
// differ in the form of the hard-clip limits alone.
#pragma once

#include "emulations/emulations.h"
#include "language/reader.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace virtual_plotter {

using namespace language; // Point, Rectangle and the plotter unit are used all over this folder
using emulations::ReplyForm;

/// What the answers are made from.
struct Asked {
    PenStatus pen;
    uint64_t unknown = 0; ///< instructions that were not understood since this was last asked for
    uint64_t malformed = 0;
    bool isFresh = false; ///< the status has not been asked for since the plotter was switched on
    size_t freeBytes = 0; ///< of the buffer
    size_t bufferBytes = 0;
};

/// The answer to a request as the readers hand it on ("OH", ESC ".B", "EH,ECN,ER"), with the CR at its end; empty for one
/// that stays without an answer.
std::string replyTo(std::string_view request, const Asked &asked, ReplyForm form);

/// Both corners in the comma form, and one for the pair form.
std::string limitsReply(const Rectangle &hardClip);
std::string cornerReply(const Point &corner);

} // namespace virtual_plotter
