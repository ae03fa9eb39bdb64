#include "strokes/pieces.h"

#include <algorithm>

namespace strokes {

namespace {

/// A piece is no shorter: the rules take no mark that comes earlier in a chunk.
constexpr ptrdiff_t kShortest = 11;

} // namespace

void Pieces::add(std::string_view instruction) {
    if (instruction.size() > form_.chunk) {
        throw Unwritable("\"" + std::string(instruction) + "\" is longer than the " + std::to_string(form_.chunk) +
                         " bytes that a piece of the plot holds");
    }
    while (text_.size() - start_ + instruction.size() > form_.chunk)
        cutOff(instruction);
    text_ += instruction;
}

void Pieces::addMark(std::string_view instruction) {
    add(instruction);
    earlier_ = mark_;
    mark_ = static_cast<ptrdiff_t>(text_.size() - instruction.size());
}

ptrdiff_t Pieces::room() const {
    const auto here = static_cast<ptrdiff_t>(text_.size());
    // The worst beginning of a chunk is the earliest in which the mark before this one comes too early; and for the next
    // one, the earliest in which this one does.
    const ptrdiff_t start = mark_ - earlier_ < kShortest ? earlier_ : mark_;
    const ptrdiff_t nextStart = here - mark_ < kShortest ? mark_ : here;
    return std::min(chunk_ - (here - start), chunk_ - reserve_ - (here - nextStart));
}

/// Moves on to the next chunk, for this one cannot hold what comes next.
void Pieces::cutOff(std::string_view next) {
    const size_t size = text_.size();
    text_ += next; // its beginning is looked at with the rest
    const size_t cut = form_.cut(std::string_view(text_).substr(start_, form_.chunk));
    text_.resize(size);
    if (cut == 0) text_.append(form_.chunk - (size - start_), ' ');
    start_ += cut == 0 ? form_.chunk : cut;
}

} // namespace strokes
