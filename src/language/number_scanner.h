// Decimal numbers, byte by byte: the end of a block may cut a number anywhere, and it may have any number of digits. Values
// are limited, so that nothing that is computed from them becomes infinite.
#pragma once

#include "language/geometry.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>

namespace language {

/// No number of a plotter language is taken to lie outside +-kLargest: all that is computed from them stays finite.
constexpr double kLargest = 1e9;

/// The value within +-kLargest. NaN becomes -kLargest.
constexpr double clamped(double value) noexcept {
    return value > -kLargest ? (value < kLargest ? value : kLargest) : -kLargest;
}

constexpr Point clamped(Point p) noexcept { return {clamped(p.x), clamped(p.y)}; }

/// A number of any length: sign, digits, at most one point. There are no exponents in plotter languages.
class NumberScanner {
public:
    bool active() const noexcept { return active_; }
    /// There is at least one digit.
    bool complete() const noexcept { return complete_; }

    void sign(bool negative) noexcept {
        reset();
        active_ = true;
        negative_ = negative;
    }

    /// False for a second point.
    bool point() noexcept {
        bool first = !point_;
        active_ = point_ = true;
        return first;
    }

    void digit(unsigned value) noexcept {
        active_ = complete_ = true;
        if (mantissa_ >= kFull) {
            large_ = large_ || !point_;
            return;
        }
        if (point_ && fraction_ == kPowers.size() - 1) return;
        mantissa_ = mantissa_ * 10 + value;
        fraction_ += point_;
    }

    /// The value, and the scanner ready for the next number.
    double take() noexcept {
        double value = large_ ? kLargest : std::min(static_cast<double>(mantissa_) / kPowers[fraction_], kLargest);
        value = negative_ ? -value : value;
        reset();
        return value;
    }

    void reset() noexcept { *this = NumberScanner(); }

private:
    static constexpr uint64_t kFull = 100'000'000'000'000'000; // 18 digits: more than a double holds
    static constexpr std::array<double, 19> kPowers = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,  1e8, 1e9,
                                                       1e10, 1e11, 1e12, 1e13, 1e14, 1e15, 1e16, 1e17, 1e18};
    uint64_t mantissa_ = 0;
    uint32_t fraction_ = 0;
    bool active_ = false, complete_ = false, negative_ = false, point_ = false, large_ = false;
};

} // namespace language
