// A stroked font: letters as the pen draws them. All are equally wide, because labels are placed in cells of one size.
#pragma once

#include <cstdint>
#include <span>

namespace language {

/// A point of a letter in font units: x to the right from the letter's left edge, y up from the base line. Capitals are
/// kCapHeight high, every letter is kAdvance wide including the gap to the next; descenders are negative.
struct GlyphPoint {
    int8_t x;
    int8_t y;
    bool penDown; ///< false: the pen is lifted on the way to this point
};

constexpr int kCapHeight = 21;
constexpr int kAdvance = 21;

/// The strokes of a character; empty for a blank. Characters outside printable ASCII give an empty box.
std::span<const GlyphPoint> glyph(unsigned char character) noexcept;

} // namespace language
