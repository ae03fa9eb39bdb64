// Arcs as chords, for every instruction of every language that draws one. The sink knows straight lines only, as do the
// clipping and the dashes before it.
#pragma once

#include "language/geometry.h"

#include <cmath>
#include <numbers>

namespace language {

constexpr double kDefaultChord = 5;  // degrees
constexpr double kLeastChord = 0.36; // a thousand to a circle

/// Calls step with the turn (cosine, sine) from the arc's beginning to each chord's end. sweep is at most 360 degrees either
/// way, chord at least kLeastChord.
template <class Step> void forEachChord(double sweep, double chord, Step step) {
    // A little less: a quotient that should be whole may have been rounded up.
    const double count = std::ceil(std::abs(sweep) / chord - 1e-6);
    const double all = sweep * std::numbers::pi / 180;
    const double angle = count > 0 ? all / count : 0;
    const Point turn{std::cos(angle), std::sin(angle)};
    Point done{1, 0};
    for (int i = 1, n = static_cast<int>(count); i <= n; ++i) {
        done = {done.x * turn.x - done.y * turn.y, done.x * turn.y + done.y * turn.x};
        // A circle must close: where it ends is not left to what the steps have rounded.
        if (i == n) done = std::abs(sweep) == 360 ? Point{1, 0} : Point{std::cos(all), std::sin(all)};
        step(done);
    }
}

} // namespace language
