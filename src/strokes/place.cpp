#include "strokes/place.h"

#include <algorithm>
#include <cmath>

namespace strokes {

namespace {

using Turn = Placement::Turn;

/// Mirrors, turns and scales about 0, 0: the image of (1, 0) and that of (0, 1).
struct Map {
    Point x{1, 0}, y{0, 1};
    Point operator()(Point p) const { return {p.x * x.x + p.y * y.x, p.x * x.y + p.y * y.y}; }
};

Map mapOf(Turn turn, bool isMirrored, double scale) {
    constexpr Point kTurned[] = {{1, 0}, {0, 1}, {-1, 0}, {0, -1}}; // what becomes of (1, 0)
    const Point along = kTurned[static_cast<size_t>(turn)];
    const double side = isMirrored ? -scale : scale;
    return {{along.x * side, along.y * side}, {-along.y * scale, along.x * scale}};
}

Rectangle imageOf(const Rectangle &r, const Map &map) {
    const Point a = map(r.lower), b = map(r.upper);
    return {{std::min(a.x, b.x), std::min(a.y, b.y)}, {std::max(a.x, b.x), std::max(a.y, b.y)}};
}

Point sizeOf(const Rectangle &r) { return {r.upper.x - r.lower.x, r.upper.y - r.lower.y}; }

/// The scale at which size just fits into the room; 1 for a dot.
double fitting(Point size, Point room) {
    const double x = size.x > 0 ? room.x / size.x : HUGE_VAL, y = size.y > 0 ? room.y / size.y : HUGE_VAL;
    return std::isinf(std::min(x, y)) ? 1 : std::min(x, y);
}

Turn turnOf(const Placement &placement, Point size) {
    if (placement.turn != Turn::Automatic) return placement.turn;
    const Point room = sizeOf(placement.area);
    const double upright = fitting(size, room), turned = fitting({size.y, size.x}, room);
    const bool isEnough = !placement.isFitted && upright >= placement.scale;
    return turned > upright && !isEnough ? Turn::Quarter : Turn::None;
}

/// Where the lower left corner of what is drawn goes. extent is that of the mapped drawing, kept the corner to be kept, as
/// it is in the mapped drawing and as it was.
Point cornerOf(const Placement &placement, const Rectangle &extent, Point mapped, Point kept) {
    if (placement.at) return *placement.at;
    if (placement.isFitted || placement.isCentred) {
        const Point size = sizeOf(extent), room = sizeOf(placement.area);
        return {placement.area.lower.x + (room.x - size.x) / 2, placement.area.lower.y + (room.y - size.y) / 2};
    }
    return {extent.lower.x + kept.x - mapped.x, extent.lower.y + kept.y - mapped.y};
}

} // namespace

Placed place(Drawing &drawing, const Placement &placement) {
    const std::optional<Rectangle> drawn = extentOf(drawing);
    if (!drawn) return {};
    const bool hasPage = drawing.width > 0 && drawing.height > 0;
    const Rectangle frame = hasPage ? Rectangle{{0, 0}, {drawing.width, drawing.height}} : *drawn;
    const Turn turn = turnOf(placement, sizeOf(*drawn));
    const Rectangle turned = imageOf(*drawn, mapOf(turn, placement.isMirrored, 1));
    const double scale = placement.isFitted ? fitting(sizeOf(turned), sizeOf(placement.area)) : placement.scale;

    const Map map = mapOf(turn, placement.isMirrored, scale);
    const Rectangle extent = imageOf(*drawn, map);
    const Point corner =
        cornerOf(placement, extent, imageOf(frame, map).lower, hasPage ? placement.paper.lower : drawn->lower);
    const Point step{corner.x - extent.lower.x, corner.y - extent.lower.y};
    for (Stroke &stroke : drawing.strokes) {
        for (Point &p : stroke.points) {
            const Point image = map(p);
            p = {image.x + step.x, image.y + step.y};
        }
    }
    return {90 * static_cast<int>(turn), scale};
}

} // namespace strokes
