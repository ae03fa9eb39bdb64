// A pen sink that writes down what it is told, and what the language tests do with it.
#pragma once

#include "language/reader.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <string>
#include <string_view>

namespace language {

/// 10000 by 8000 plotter units: 250 by 200 mm.
constexpr Rectangle kTestSheet{{0, 0}, {10000, 8000}};

inline std::string textOf(double value) {
    char text[32];
    std::snprintf(text, sizeof text, "%.10g", std::round(value * 100) / 100 + 0.0); // a negative zero becomes 0
    return text;
}
inline std::string textOf(Point p) { return textOf(p.x) + "," + textOf(p.y); }

/// Strokes as "0,0 100,0 | 5,5": points of a stroke, strokes parted by bars. A change of the pen is "[number width]", a fill
/// "{0,0 1,0 1,1 / 2,2 3,3 4,4}" with its contours parted by slashes. Coordinates are rounded to hundredths.
class RecordingSink final : public PenSink {
public:
    void setPen(int pen, double width) override {
        if (pen == pen_ && width == width_) return;
        pen_ = pen;
        width_ = width;
        word("[" + std::to_string(pen) + " " + textOf(width) + "]");
        stroke_ = false;
    }
    void begin(Point at) override {
        if (stroke_) text_ += " |";
        word(textOf(at));
        stroke_ = true;
    }
    void line(Point to) override { word(textOf(to)); }
    void fill(std::span<const Point> points, std::span<const size_t> ends) override {
        std::string all;
        for (size_t i = 0; i < points.size(); ++i)
            all += (i == 0 ? "{" : std::ranges::count(ends, i) != 0 ? " / " : " ") + textOf(points[i]);
        word(all + "}");
        stroke_ = false;
    }
    const std::string &text() const { return text_; }

private:
    void word(const std::string &text) { text_ += (text_.empty() ? "" : " ") + text; }

    std::string text_;
    int pen_ = 1;
    double width_ = 0.35;
    bool stroke_ = false;
};

/// A reader on the test sheet with all that it said, after it took the text in pieces of at most that many bytes.
struct Job {
    explicit Job(std::string_view text, Language language = Language::Hpgl, size_t piece = SIZE_MAX,
                 double secondsPerByte = 0)
        : reader(makeReader(language, sink, kTestSheet, Clipping::Reach, secondsPerByte)) {
        reader->onRequest = [this](std::string_view request) { requests += std::string(request) + ";"; };
        for (; !text.empty(); text.remove_prefix(std::min(piece, text.size())))
            reader->take(text.substr(0, piece));
        reader->finish();
    }
    const std::string &strokes() const { return sink.text(); }
    const Findings &findings() const { return reader->findings(); }
    /// Oddities as "unknown@3 XX12;", a line each.
    std::string oddities() const {
        std::string all;
        for (const Oddity &oddity : findings().oddities) {
            all += std::string(all.empty() ? "" : "\n") + (oddity.kind == Oddity::Unknown ? "unknown@" : "malformed@");
            all += std::to_string(oddity.offset) + " " + oddity.text;
        }
        return all;
    }

    RecordingSink sink;
    std::string requests;
    std::unique_ptr<Reader> reader;
};

struct StrokeCase {
    const char *what;
    std::string_view text;
    std::string_view strokes;
};

/// Each job whole and byte by byte, behind the same beginning.
inline void expectStrokes(std::span<const StrokeCase> cases, Language language = Language::Hpgl,
                          std::string_view setUp = "") {
    for (const StrokeCase &c : cases)
        for (size_t piece : {size_t{1}, SIZE_MAX})
            EXPECT_EQ(Job(std::string(setUp) + std::string(c.text), language, piece).strokes(), c.strokes)
                << c.what << ", in pieces of " << piece;
}

} // namespace language
