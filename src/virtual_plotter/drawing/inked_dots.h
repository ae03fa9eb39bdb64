// The dots of a picture while it is drawn: which ink lies uppermost on each, and how much of the dot it covers. Of what
// strokes of an ink left white, the next one covers its share; an ink of another colour lies over what was there. That is
// decided dot by dot, so the picture depends neither on how the strokes were handed over nor on who draws which rows.
#pragma once

#include "virtual_plotter/drawing/page.h"

#include <array>
#include <atomic>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <memory>
#include <span>
#include <vector>

namespace virtual_plotter {

/// A dot is a byte: white, or one of an ink's shades, from a touch to all of the dot. It is also an
/// index into the palette, in which the colours of inks over each other come last.
constexpr int kWhiteDot = 0, kShades = 28;
static_assert(kMostColours * kShades <= 255);

/// Dots are drawn some beside each other at a time: a processor takes them together, and few lines are thinner.
constexpr int kRunLength = 8;
/// How much of each of them is to be covered, in shades.
using Run = std::array<uint8_t, kRunLength>;

class InkedDots {
public:
    /// Throws std::bad_alloc.
    InkedDots(int width, int height);

    int width() const { return width_; }
    int height() const { return height_; }
    /// The number of a colour; past kMostColours, the last one's.
    uint8_t inkOf(Colour colour);

    /// Whether ink has nothing left to cover of the run that begins at x, y. A run may begin at any dot of a row.
    bool isFull(int x, int y, uint8_t ink) const {
        uint64_t run;
        static_assert(sizeof run == kRunLength);
        memcpy(&run, dots_.data() + offset(x, y), sizeof run);
        return run == 0x0101010101010101U * static_cast<uint8_t>((ink + 1) * kShades);
    }
    void cover(int x, int y, uint8_t ink, const Run &shades);

    /// Ends the drawing. From here on a dot is an index into these colours; empty when there are more than a byte can tell.
    std::vector<Colour> takePalette();
    std::span<const uint8_t> row(int y) const { return {dots_.data() + offset(0, y), static_cast<size_t>(width_)}; }
    /// The row as red, green and blue, made in room.
    std::span<const uint8_t> colourRow(int y, std::vector<uint8_t> &room) const;

private:
    struct Free {
        void operator()(void *memory) const { std::free(memory); }
    };
    /// What lies under an ink of another colour: red, green and blue as what is missing to white.
    using Under = std::array<uint8_t, 3>;

    size_t offset(int x, int y) const { return static_cast<size_t>(y) * stride_ + static_cast<size_t>(x); }
    Colour seen(size_t at) const;
    bool isMixed(size_t at) const;
    /// Goes through the dots on which one ink shines through another, until visit returns false.
    bool eachMixed(const std::function<bool(size_t at)> &visit) const;
    void coverOther(size_t at, uint8_t ink, const Run &shades);

    int width_, height_;
    size_t stride_; // a run may begin at a row's last dot
    std::vector<uint8_t> dots_;
    std::unique_ptr<Under[], Free> under_; // cleared by the system, which gives memory where it is written to
    std::array<Colour, kMostColours> inks_ = {};
    size_t inkCount_ = 0;
    std::atomic<bool> hasMixed_ = false;
};

} // namespace virtual_plotter
