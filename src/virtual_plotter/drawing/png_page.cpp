// Lines and areas are noted until there are enough of them to be worth the processors' while.
#include "virtual_plotter/drawing/bands.h"
#include "virtual_plotter/drawing/inked_dots.h"
#include "virtual_plotter/drawing/page.h"
#include "virtual_plotter/drawing/png_file.h"
#include "virtual_plotter/drawing/scan.h"

#include <algorithm>
#include <cmath>
#include <tuple>

namespace virtual_plotter {

namespace {

constexpr double kMillimetresPerInch = 25.4;

// A page may be held in memory with 4 bytes a dot: 256 MB at the most. Few programs show a side longer than 32767 dots.
constexpr double kMostDots = 64e6, kLongestSide = 32767;

constexpr size_t kMostSegments = 32768; // that wait: half a megabyte
// A band's rows stay in a processor's cache while all that waits is drawn on them; more than so many would be looked through
// too often.
constexpr int kBandRows = 64, kMostBands = 32;

int dots(double millimetres, double dotsPerInch) {
    return std::max(1, static_cast<int>(std::lround(millimetres / kMillimetresPerInch * dotsPerInch)));
}

class PngPage final : public Page {
public:
    PngPage(const Sheet &sheet, double dotsPerInch, OutputFile &file)
        : file_(file), dots_(dots(sheet.width, dotsPerInch), dots(sheet.height, dotsPerInch)),
          dotsPerMillimetre_(dotsPerInch / kMillimetresPerInch) {
        const Point origin = areaOrigin(sheet);
        corner_ = {origin.x * dotsPerMillimetre_, (sheet.height - origin.y) * dotsPerMillimetre_};
    }

    void stroke(const Contours &contours, Colour colour, double widthMillimetres) override {
        note(contours, false);
        end({.ink = dots_.inkOf(colour), .radius = static_cast<float>(widthMillimetres * dotsPerMillimetre_ / 2)});
    }

    void fill(const Contours &contours, Colour colour) override {
        note(contours, true);
        end({.ink = dots_.inkOf(colour), .isArea = true});
    }

    std::string finish() override {
        draw();
        const std::vector<Colour> palette = dots_.takePalette();
        const PngHeader header{dots_.width(), dots_.height(), dotsPerMillimetre_ * 1000, palette};
        writePng(file_, header, [&](int y, std::vector<uint8_t> &room) {
            return palette.empty() ? dots_.colourRow(y, room) : dots_.row(y);
        });
        return {};
    }

private:
    struct Place {
        float x, y;
        friend bool operator==(const Place &, const Place &) = default;
    };
    /// Segments that are drawn in the same way, or make one area.
    struct Group {
        size_t end = 0;
        uint8_t ink = 0;
        bool isArea = false;
        float radius = 0;

        bool isDrawnAs(const Group &other) const {
            return std::tie(ink, isArea, radius) == std::tie(other.ink, other.isArea, other.radius);
        }
    };

    void note(const Contours &contours, bool isClosed) {
        size_t i = 0;
        for (size_t end : contours.ends) {
            if (i >= end) continue;
            const Place first = place(contours.points[i]);
            Place last = first;
            bool isDot = true;
            while (++i < end) {
                const Place next = place(contours.points[i]);
                if (next == last) continue;
                note(last, next);
                last = next;
                isDot = false;
            }
            if (isClosed || isDot) note(last, first);
        }
    }
    void note(Place from, Place to) { segments_.push_back({from.x, from.y, to.x, to.y}); }
    Place place(Point at) const {
        const double scale = dotsPerMillimetre_ / kUnitsPerMillimetre;
        return {static_cast<float>(corner_.x + at.x * scale), static_cast<float>(corner_.y - at.y * scale)};
    }

    // A stroke may come in several calls, and is one stroke then.
    void end(const Group &group) {
        const bool goesOn = !groups_.empty() && !group.isArea && groups_.back().isDrawnAs(group);
        if (!goesOn) groups_.push_back(group);
        groups_.back().end = segments_.size();
        if (segments_.size() >= kMostSegments) draw();
    }

    void draw() {
        const int rows = std::max(kBandRows, dots_.height() / kMostBands + 1);
        forEachBand(static_cast<size_t>((dots_.height() + rows - 1) / rows), [&]() -> BandWork {
            return [&, areas = AreaScan()](size_t band) mutable {
                const int begin = static_cast<int>(band) * rows;
                draw({begin, std::min(dots_.height(), begin + rows)}, areas);
            };
        });
        segments_.clear();
        groups_.clear();
    }
    void draw(Rows rows, AreaScan &areas) {
        std::span<const Segment> rest(segments_);
        for (const Group &group : groups_) {
            const auto segments = rest.first(group.end - (segments_.size() - rest.size()));
            rest = rest.subspan(segments.size());
            if (group.isArea)
                areas.draw(dots_, rows, group.ink, segments);
            else
                drawLines(rows, group, segments);
        }
    }
    // Most segments lie in other bands: they are passed over as fast as can be.
    void drawLines(Rows rows, const Group &group, std::span<const Segment> segments) {
        const float above = static_cast<float>(rows.begin) - group.radius - 1;
        const float below = static_cast<float>(rows.end) + group.radius + 1;
        for (size_t i = 0; i < segments.size(); ++i)
            if (std::max(segments[i].fromY, segments[i].toY) > above && std::min(segments[i].fromY, segments[i].toY) < below)
                drawLine(dots_, rows, group.ink, linkAt(segments, i), group.radius);
    }
    static Link linkAt(std::span<const Segment> segments, size_t i) {
        const Segment *segment = &segments[i];
        const auto follows = [](const Segment *one, const Segment *other) {
            return one->toX == other->fromX && one->toY == other->fromY;
        };
        return {i > 0 && follows(segment - 1, segment) ? segment - 1 : nullptr, segment,
                i + 1 < segments.size() && follows(segment, segment + 1) ? segment + 1 : nullptr};
    }

    OutputFile &file_;
    InkedDots dots_;
    double dotsPerMillimetre_;
    Point corner_; // of the pen's area, in dots
    std::vector<Segment> segments_;
    std::vector<Group> groups_;
};

} // namespace

double pngResolution(const Sheet &sheet, double dotsPerInch) noexcept {
    const double width = sheet.width / kMillimetresPerInch, height = sheet.height / kMillimetresPerInch;
    return std::min({dotsPerInch, kLongestSide / std::max(width, height), std::sqrt(kMostDots / (width * height))});
}

std::unique_ptr<Page> makePngPage(const Sheet &sheet, double dotsPerInch, OutputFile &file) {
    return std::make_unique<PngPage>(sheet, dotsPerInch, file);
}

} // namespace virtual_plotter
