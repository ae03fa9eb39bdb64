// What a plot draws, as one number: two plots of hundreds of megabytes are compared in constant memory.
#pragma once

#include "host/files/plot_file.h"
#include "language/language.h"
#include "language/pen_sink.h"

#include <bit>
#include <cstdint>

namespace host {

/// A hash of 64 bits over all strokes and fills, each with its pen, in their order. Pens that draw nothing do not count.
class StrokeHash final : public language::PenSink {
public:
    void setPen(int pen, double widthMillimetres) override {
        pen_ = pen;
        width_ = widthMillimetres;
    }
    void begin(language::Point at) override {
        addPen(Begin);
        add(at);
    }
    void line(language::Point to) override {
        add(Line);
        add(to);
    }
    void fill(std::span<const language::Point> points, std::span<const size_t> ends) override {
        addPen(Fill);
        for (size_t end : ends)
            add(end);
        for (language::Point point : points)
            add(point);
    }

    uint64_t value() const { return hash_; }

private:
    enum Call : uint8_t { Begin = 1, Line, Fill };

    void add(uint64_t value) {
        hash_ = (hash_ ^ value) * 0x9E3779B97F4A7C15; // odd, so that no two values meet; 2 to the 64 over the golden ratio
        hash_ ^= hash_ >> 32;
    }
    void add(language::Point point) {
        add(std::bit_cast<uint64_t>(point.x));
        add(std::bit_cast<uint64_t>(point.y));
    }
    void addPen(Call call) {
        add(call);
        add(static_cast<uint64_t>(pen_));
        add(std::bit_cast<uint64_t>(width_));
    }

    uint64_t hash_ = 0;
    int pen_ = 1;
    double width_ = 0;
};

struct Drawn {
    uint64_t strokes = 0;  ///< their hash
    bool isCutOff = false; ///< within an instruction
};

/// What a plot draws when nothing is clipped. Throws Failure when it cannot be read.
Drawn drawnBy(const PlotFile &plot, language::Language language);

} // namespace host
