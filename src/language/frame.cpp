#include "language/frame.h"

#include "language/number_scanner.h"

#include <algorithm>
#include <cmath>

namespace language {

void Frame::reset() {
    degrees_ = 0;
    scaled_ = false;
    defaultScalingPoints();
}

bool Frame::rotate(int degrees) {
    if (degrees < 0 || degrees > 270 || degrees % 90 != 0) return false;
    degrees_ = degrees;
    return true;
}

bool Frame::setScalingPoints(Point p1, Point p2) {
    if (p1.x == p2.x || p1.y == p2.y) return false;
    p1_ = p1;
    p2_ = p2;
    rescale();
    return true;
}

void Frame::defaultScalingPoints() {
    const Rectangle all = area();
    p1_ = all.lower;
    p2_ = all.upper;
    rescale();
}

bool Frame::setScale(std::span<const double> parameters) {
    const size_t count = parameters.size();
    if (count != 0 && count != 4 && count != 5 && count != 7) return false;
    const auto before = scale_;
    const bool wasScaled = scaled_;
    scale_ = {0, 0, 0, 0, 0, 50, 50};
    std::copy(parameters.begin(), parameters.end(), scale_.begin());
    scaled_ = count != 0;
    if (rescale()) return true;
    scale_ = before;
    scaled_ = wasScaled;
    rescale();
    return false;
}

bool Frame::rescale() {
    if (!scaled_) {
        factor_ = {1, 1};
        origin_ = {};
        return true;
    }
    const auto [xFirst, xSecond, yFirst, ySecond, type, left, bottom] = scale_;
    const Point size{p2_.x - p1_.x, p2_.y - p1_.y};
    if (type == 2) {
        if (xSecond == 0 || ySecond == 0) return false;
        factor_ = {xSecond, ySecond};
        origin_ = {p1_.x - xFirst * factor_.x, p1_.y - yFirst * factor_.y};
        return true;
    }
    if ((type != 0 && type != 1) || xFirst == xSecond || yFirst == ySecond) return false;
    factor_ = {size.x / (xSecond - xFirst), size.y / (ySecond - yFirst)};
    origin_ = {p1_.x - xFirst * factor_.x, p1_.y - yFirst * factor_.y};
    if (type == 1) {
        const double least = std::min(std::abs(factor_.x), std::abs(factor_.y));
        factor_ = {std::copysign(least, factor_.x), std::copysign(least, factor_.y)};
        const Point spare{size.x - factor_.x * (xSecond - xFirst), size.y - factor_.y * (ySecond - yFirst)};
        origin_ = {p1_.x + spare.x * left / 100 - xFirst * factor_.x, p1_.y + spare.y * bottom / 100 - yFirst * factor_.y};
    }
    return true;
}

Rectangle Frame::area() const noexcept {
    if (degrees_ % 180 == 0) return hardClip_;
    return {{hardClip_.lower.y, hardClip_.lower.x}, {hardClip_.upper.y, hardClip_.upper.x}};
}

double Frame::diagonal() const noexcept { return std::hypot(p2_.x - p1_.x, p2_.y - p1_.y); }

Point Frame::toPlotter(Point user) const noexcept {
    return {clamped(user.x * factor_.x + origin_.x), clamped(user.y * factor_.y + origin_.y)};
}

Point Frame::toUser(Point plotter) const noexcept {
    return {clamped((plotter.x - origin_.x) / factor_.x), clamped((plotter.y - origin_.y) / factor_.y)};
}

Point Frame::toSheet(Point plotter) const noexcept {
    const Rectangle &h = hardClip_;
    switch (degrees_) {
    case 90: return {h.lower.x + h.upper.x - plotter.y, plotter.x};
    case 180: return {h.lower.x + h.upper.x - plotter.x, h.lower.y + h.upper.y - plotter.y};
    case 270: return {plotter.y, h.lower.y + h.upper.y - plotter.x};
    default: return plotter;
    }
}

Point Frame::fromSheet(Point sheet) const noexcept {
    const Rectangle &h = hardClip_;
    switch (degrees_) {
    case 90: return {sheet.y, h.lower.x + h.upper.x - sheet.x};
    case 180: return {h.lower.x + h.upper.x - sheet.x, h.lower.y + h.upper.y - sheet.y};
    case 270: return {h.lower.y + h.upper.y - sheet.y, sheet.x};
    default: return sheet;
    }
}

} // namespace language
