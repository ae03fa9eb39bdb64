// A pen sink that writes down what it is told, and what the language tests do with it.
#pragma once

#include "language/reader.h"

#include <cmath>
#include <cstdio>
#include <string>
#include <string_view>

namespace language {

/// 10000 by 8000 plotter units: 250 by 200 mm.
constexpr Rectangle kTestSheet{{0, 0}, {10000, 8000}};

/// Strokes as "0,0 100,0 | 5,5": points of a stroke, strokes parted by bars. A change of the pen is "[number width]", a fill
/// "{0,0 1,0 1,1 / 2,2 3,3 4,4}" with its contours parted by slashes. Coordinates are rounded to hundredths.
class RecordingSink final : public PenSink {
public:
    void setPen(int pen, double width) override {
        if (pen == pen_ && width == width_) return;
        pen_ = pen;
        width_ = width;
        word("[" + number(pen) + " " + number(width) + "]");
        stroke_ = false;
    }
    void begin(Point at) override {
        if (stroke_) text_ += " |";
        word(point(at));
        stroke_ = true;
    }
    void line(Point to) override { word(point(to)); }
    void fill(std::span<const Point> points, std::span<const size_t> ends) override {
        std::string all = "{";
        size_t i = 0;
        for (size_t end : ends) {
            for (; i < end; ++i)
                all += (all.size() > 1 ? " " : "") + point(points[i]);
            all += end == ends.back() ? "}" : " /";
        }
        word(all);
        stroke_ = false;
    }
    const std::string &text() const { return text_; }

private:
    static std::string number(double value) {
        char text[32];
        std::snprintf(text, sizeof text, "%.2f", value);
        std::string digits(text);
        while (digits.back() == '0')
            digits.pop_back();
        if (digits.back() == '.') digits.pop_back();
        return digits == "-0" ? "0" : digits;
    }
    static std::string point(Point p) { return number(p.x) + "," + number(p.y); }
    void word(const std::string &text) { text_ += (text_.empty() ? "" : " ") + text; }

    std::string text_;
    int pen_ = 1;
    double width_ = 0.35;
    bool stroke_ = false;
};

/// A reader on the test sheet with all that it said.
struct Job {
    explicit Job(std::string_view text, Language language = Language::hpgl) : Job(text, language, text.size()) {}
    /// The text in pieces of at most that many bytes.
    Job(std::string_view text, Language language, size_t piece) : reader(makeReader(language, sink, kTestSheet)) {
        reader->onRequest = [this](std::string_view request) { requests += std::string(request) + ";"; };
        while (!text.empty()) {
            reader->take(text.substr(0, piece));
            text.remove_prefix(std::min(piece, text.size()));
        }
        reader->finish();
    }
    const std::string &strokes() const { return sink.text(); }
    const Findings &findings() const { return reader->findings(); }
    /// Oddities as "unknown@3 XX12;", a line each.
    std::string oddities() const {
        std::string all;
        for (const Oddity &oddity : findings().oddities) {
            if (!all.empty()) all += "\n";
            all += oddity.kind == Oddity::unknown ? "unknown@" : "malformed@";
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

} // namespace language
