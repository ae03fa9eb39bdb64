// The texts of SVG's attributes as values: numbers, lengths, colours, transforms.
#pragma once

#include "strokes/affine.h"

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

namespace strokes {

/// Without the blanks around it.
std::string_view trimmed(std::string_view text);

/// Takes the next number and the blanks and commas before it off the text; nothing when there is none. One too large for a
/// double is infinite.
std::optional<double> takeNumber(std::string_view &text);

/// All numbers up to what is none.
std::vector<double> numbersOf(std::string_view text);

/// In millimetres; a number without a unit is in pixels, 96 to an inch. Nothing for what is no length, or relative.
std::optional<double> lengthOf(std::string_view text);

/// matrix, translate and scale, which are what cairo writes, and lists of them. Nothing for anything else, also for numbers
/// that are not finite.
std::optional<Affine> transformOf(std::string_view text);

/// What a fill or a line is painted with.
struct Paint {
    enum class Kind { None, Plain, Server } kind = Kind::None;
    uint32_t colour = 0;       ///< 0xRRGGBB, when plain
    std::string_view server{}; ///< the name of the gradient or pattern otherwise
};

/// #rgb, #rrggbb, rgb() of numbers or percentages, url(#name), none; black for a colour of another form.
Paint paintOf(std::string_view text);

/// The name in "url(#name)" or "#name"; empty when it is neither.
std::string_view nameIn(std::string_view reference);

} // namespace strokes
