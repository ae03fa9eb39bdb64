// Affine maps of the plane, as transform attributes write them.
#pragma once

#include "strokes/stroke.h"

#include <cmath>

namespace strokes {

/// (x, y) goes to (a x + c y + e, b x + d y + f).
struct Affine {
    double a = 1, b = 0, c = 0, d = 1, e = 0, f = 0;

    Point operator()(Point p) const { return {a * p.x + c * p.y + e, b * p.x + d * p.y + f}; }
    double determinant() const { return a * d - b * c; }
    /// The map that takes lengths back: of its inverse, without the shift. Not for a determinant of 0.
    Affine inverseTurn() const {
        const double k = 1 / determinant();
        return {d * k, -b * k, -c * k, a * k, 0, 0};
    }
};

/// First the inner map, then the outer one.
inline Affine operator*(const Affine &outer, const Affine &inner) {
    const Affine &o = outer, &i = inner;
    return {o.a * i.a + o.c * i.b, o.b * i.a + o.d * i.b,       o.a * i.c + o.c * i.d,
            o.b * i.c + o.d * i.d, o.a * i.e + o.c * i.f + o.e, o.b * i.e + o.d * i.f + o.f};
}

} // namespace strokes
