// Line types: solid, dots, and dash patterns. A pattern is kept as parts of its whole length, whatever units a language
// gives it in, so that it can be stretched to a line.
#pragma once

#include <array>
#include <cstddef>
#include <span>

namespace language {

struct LineType {
    enum Kind : unsigned char {
        Solid,
        Ends,     ///< a dot at the end of each line
        Fixed,    ///< the pattern runs on from line to line
        Adaptive, ///< each line holds the pattern a whole number of times
    };
    static constexpr size_t kMaxParts = 20;

    Kind kind = Solid;
    std::array<double, kMaxParts> parts{}; ///< down, up, down …, adding up to 1; a part of 0 with the pen down is a dot
    size_t count = 0;
    double length = 0; ///< of the whole pattern, in plotter units
};

/// A pattern of parts in any proportion; solid when they add up to nothing.
LineType dashed(LineType::Kind kind, std::span<const double> parts, double length);

/// The parts of a fixed line type, 1 to 8, in percent; empty for others. As HP-GL/2 devices have them.
std::span<const double> standardPattern(int type) noexcept;

} // namespace language
