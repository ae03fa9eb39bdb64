// HP-GL's coordinate systems: user units, plotter units, and the sheet. A plot may change scale, scaling points and rotation
// in any order; they are kept here together because each of them gives the others a new meaning.
#pragma once

#include "language/geometry.h"

#include <array>
#include <span>

namespace language {

/// Plotter units are those of the instructions, which RO turns against the sheet; user units are laid over them by SC and
/// the scaling points P1 and P2. Every result is finite. P1 and P2 begin at the lower left and the upper right of the
/// hard-clip area, as on HP-GL/2 plotters.
class Frame {
public:
    explicit Frame(const Rectangle &hardClip) : hardClip_(hardClip) { reset(); }

    void reset();
    /// Turns to 0, 90, 180 or 270 degrees, counter-clockwise; false for any other angle, and nothing changes.
    bool rotate(int degrees);
    /// False when the points have an x or y in common; then nothing changes.
    bool setScalingPoints(Point p1, Point p2);
    void defaultScalingPoints();
    /// The parameters of SC: four of type 0 or 2, or type 1 (equal units on both axes) with its margins; none for no
    /// scaling.
    bool setScale(std::span<const double> parameters);
    bool scaled() const noexcept { return scaled_; }
    bool turned() const noexcept { return degrees_ != 0; }

    Point p1() const noexcept { return p1_; }
    Point p2() const noexcept { return p2_; }
    /// The hard-clip area in plotter units, turned.
    Rectangle area() const noexcept;
    double diagonal() const noexcept; ///< of P1 and P2

    /// User units (plotter units, when there is no scale) to plotter units: places, and steps.
    Point toPlotter(Point user) const noexcept;
    Point stepToPlotter(Point user) const noexcept { return {user.x * factor_.x, user.y * factor_.y}; }
    Point toUser(Point plotter) const noexcept;
    Point toSheet(Point plotter) const noexcept;
    Point fromSheet(Point sheet) const noexcept;

private:
    bool rescale();

    const Rectangle hardClip_;
    int degrees_ = 0;
    Point p1_, p2_;
    bool scaled_ = false;
    std::array<double, 7> scale_{}; // SC's parameters, all seven
    Point factor_{1, 1};            // plotter units to a user unit
    Point origin_;                  // of the user units, in plotter units
};

} // namespace language
