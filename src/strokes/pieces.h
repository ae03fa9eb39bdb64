// The bytes of a plot file as they are written, with an eye on how they will be cut: the sender is played along, so that it
// is known where each chunk begins, and instructions can be kept from lying in two pieces.
#pragma once

#include "strokes/write.h"

namespace strokes {

class Pieces {
public:
    /// reserve: bytes of the longest instructions that may stand between two of those before which a chunk is cut, and of
    /// the shortest form of the second of them.
    Pieces(const PlotForm &form, size_t reserve)
        : form_(form), chunk_(static_cast<ptrdiff_t>(form.chunk)), reserve_(static_cast<ptrdiff_t>(reserve)) {}

    /// Adds an instruction. Throws Unwritable.
    void add(std::string_view instruction);
    /// Adds one before which a chunk may be cut.
    void addMark(std::string_view instruction);
    /// How long such a one may be so that each chunk, wherever in the text so far it begins, has a place to be cut. May be
    /// negative: then no length will do.
    ptrdiff_t room() const;

    std::string take() { return std::move(text_); }

private:
    void cutOff(std::string_view next);

    const PlotForm &form_;
    ptrdiff_t chunk_, reserve_;
    std::string text_;
    size_t start_ = 0;                 ///< of the chunk that is being filled
    ptrdiff_t mark_ = 0, earlier_ = 0; ///< where the last two instructions of that kind begin
};

} // namespace strokes
