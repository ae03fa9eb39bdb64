#include "virtual_plotter/drawing/picture.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <strings.h>

namespace virtual_plotter {

namespace {

// Strokes are drawn some at a time. One by one, each is an object of its own in an SVG or PDF; many at a time, lines far
// apart cost the drawing library the sorting of all their edges in every row of dots: a thousand take up to twice as long.
constexpr size_t kBatchPoints = 64;

constexpr double kThinnest = 0.05; // millimetres; a line without a width would not be seen

constexpr Colour kPens[] = {
    {0x11, 0x11, 0x11}, // black
    {0xD2, 0x1F, 0x26}, // red
    {0x12, 0x8A, 0x3C}, // green
    {0x1D, 0x46, 0xC2}, // blue
    {0x8E, 0x2A, 0xA0}, // violet
    {0xE8, 0x7A, 0x00}, // orange
    {0x7B, 0x4A, 0x20}, // brown
    {0x00, 0x9A, 0xB0}, // turquoise
};
constexpr Colour kFrame = {0xA0, 0xA0, 0xA0};
constexpr double kFrameWidth = 0.2;

Colour colourOf(int pen) { return kPens[static_cast<size_t>(pen - 1) % std::size(kPens)]; }

bool hasEnding(const std::string &path, const char *ending) {
    const size_t length = strlen(ending);
    return path.size() > length && strcasecmp(path.c_str() + path.size() - length, ending) == 0;
}

} // namespace

Picture::Picture(const Sheet &sheet, const PictureOptions &options) : m_sheet(sheet), m_options(options) {}

Picture::~Picture() = default;

std::optional<PictureError> Picture::open(const std::string &path) {
    m_path = path;
    const bool svg = hasEnding(path, ".svg"), png = hasEnding(path, ".png"), pdf = hasEnding(path, ".pdf");
    if (!svg && !png && !pdf) return failure("a picture's name must end in .svg, .png or .pdf");
    if (png && !(m_options.dotsPerInch >= 1)) return failure("the resolution must be at least 1 dot per inch");
    if (const int error = m_file.open(path)) return failure(strerror(error), error);

    if (svg) m_page = makeSvgPage(m_sheet, m_file);
    if (pdf) m_page = makePdfPage(m_sheet, m_file);
    if (png) {
        const double resolution = pngResolution(m_sheet, m_options.dotsPerInch);
        if (resolution < m_options.dotsPerInch)
            m_note = path + ": drawn with " + std::to_string(static_cast<int>(resolution)) +
                     " dots per inch, as many as this sheet allows; an .svg or .pdf has no such limit";
        m_page = makePngPage(m_sheet, resolution, m_file);
    }
    if (m_options.frame) drawFrame();
    return std::nullopt;
}

void Picture::setPen(int pen, double widthMillimetres) {
    const double width = widthMillimetres > kThinnest ? widthMillimetres : kThinnest;
    if (pen == m_pen && width == m_width) return;
    flush();
    m_pen = pen;
    m_width = width;
}

void Picture::begin(Point at) {
    if (m_points.size() >= kBatchPoints) flush();
    if (!m_points.empty()) m_ends.push_back(m_points.size());
    m_points.push_back(at);
    m_last = at;
}

void Picture::line(Point to) {
    if (m_points.size() >= kBatchPoints) flush();
    if (m_points.empty()) begin(m_last); // continues a stroke that was flushed: its round ends hide the joint
    m_points.push_back(to);
    m_last = to;
}

// Strokes of this pen that still wait are drawn after the fill: in one colour the order makes no difference.
void Picture::fill(std::span<const Point> points, std::span<const size_t> ends) {
    if (m_page != nullptr && m_pen > 0) m_page->fill({points, ends}, colourOf(m_pen));
}

std::optional<PictureError> Picture::finish() {
    if (m_page == nullptr) return failure("no picture was begun");
    flush();
    const std::string problem = m_page->finish();
    m_page.reset();
    const int error = m_file.error();
    if (error == 0 && !problem.empty()) {
        m_file.discard();
        return failure(problem);
    }
    if (const int failed = m_file.commit()) return failure(strerror(failed), failed);
    return std::nullopt;
}

void Picture::flush() {
    if (m_points.empty()) return;
    m_ends.push_back(m_points.size());
    if (m_page != nullptr && m_pen > 0) m_page->stroke({m_points, m_ends}, colourOf(m_pen), m_width);
    m_points.clear();
    m_ends.clear();
}

void Picture::drawFrame() {
    const Point origin = areaOrigin(m_sheet);
    const double left = (kFrameWidth / 2 - origin.x) * kUnitsPerMillimetre;
    const double bottom = (kFrameWidth / 2 - origin.y) * kUnitsPerMillimetre;
    const double right = m_sheet.hardClip.upper.x - left, top = m_sheet.hardClip.upper.y - bottom;
    const Point corners[] = {{left, bottom}, {right, bottom}, {right, top}, {left, top}, {left, bottom}};
    const size_t ends[] = {std::size(corners)};
    m_page->stroke({corners, ends}, kFrame, kFrameWidth);
}

std::optional<PictureError> Picture::failure(const std::string &what, int errnoValue) const {
    return PictureError{m_path + ": " + what, errnoValue};
}

} // namespace virtual_plotter
