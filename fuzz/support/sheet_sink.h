// A pen sink that draws nothing: it holds the strokes to their contract, and keeps a sum of them.
#pragma once

#include "language/pen_sink.h"
#include "support/input.h"

#include <bit>
#include <cmath>

namespace fuzz {

inline constexpr language::Rectangle kSheet{{0, 0}, {10900, 7650}};

class SheetSink final : public language::PenSink {
public:
    /// Changes with every stroke, pen and fill, and with their order.
    uint64_t sum = 0;

    void setPen(int pen, double width) override {
        require(std::isfinite(width) && width >= 0, "a pen has a width");
        add(static_cast<uint64_t>(pen));
        add(width);
    }
    void begin(language::Point at) override {
        add(uint64_t{1});
        add(at);
        begun_ = true;
    }
    void line(language::Point to) override {
        require(begun_, "a line goes on with a stroke");
        add(to);
    }
    void fill(std::span<const language::Point> points, std::span<const size_t> ends) override {
        add(uint64_t{2});
        for (const language::Point &point : points)
            add(point);
        size_t last = 0;
        for (size_t end : ends) {
            require(end >= last && end <= points.size(), "contours end in order");
            last = end;
        }
    }

private:
    void add(uint64_t value) { sum = (std::rotl(sum, 7) ^ value) * 0x9E3779B97F4A7C15; }
    void add(double value) { add(std::bit_cast<uint64_t>(value)); }
    void add(language::Point p) {
        constexpr double kRounding = 1e-6;
        require(p.x >= kSheet.lower.x - kRounding && p.x <= kSheet.upper.x + kRounding &&
                    p.y >= kSheet.lower.y - kRounding && p.y <= kSheet.upper.y + kRounding,
                "a stroke stays where the pen can reach");
        add(p.x);
        add(p.y);
    }

    bool begun_ = false;
};

} // namespace fuzz
