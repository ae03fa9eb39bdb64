// The page that a picture is drawn on: the seam between the picture, which knows pens and strokes, and the file formats,
// which know paths and colours. SVG is written as it is drawn, a PNG is drawn dot by dot, and a PDF is made by a drawing
// library.
#pragma once

#include "virtual_plotter/drawing/output_file.h"
#include "virtual_plotter/drawing/sheet.h"

#include <cstdint>
#include <memory>
#include <span>
#include <string>

namespace virtual_plotter {

struct Colour {
    uint8_t red, green, blue;
    friend constexpr bool operator==(const Colour &, const Colour &) = default;
};

/// As many a page can tell apart: any further one may look like one before.
constexpr size_t kMostColours = 9;

/// Points in plotter units; ends: the index behind each contour's last point.
struct Contours {
    std::span<const Point> points;
    std::span<const size_t> ends;
};

class Page {
public:
    virtual ~Page() = default;
    /// Draws each contour as a line with round ends and corners; one of a single point as a round dot.
    virtual void stroke(const Contours &contours, Colour colour, double widthMillimetres) = 0;
    /// Fills them by the even-odd rule.
    virtual void fill(const Contours &contours, Colour colour) = 0;
    /// Writes what is still to be written. Returns what failed other than writing the file, as text; empty for nothing.
    virtual std::string finish() = 0;
};

/// White pages. They write to the file, which must outlive them and keeps its own errors (OutputFile::error).
std::unique_ptr<Page> makeSvgPage(const Sheet &sheet, OutputFile &file);
std::unique_ptr<Page> makePdfPage(const Sheet &sheet, OutputFile &file);
std::unique_ptr<Page> makePngPage(const Sheet &sheet, double dotsPerInch, OutputFile &file);

/// The resolution, lowered where the sheet would otherwise need more dots than a PNG page holds.
double pngResolution(const Sheet &sheet, double dotsPerInch) noexcept;

} // namespace virtual_plotter
