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
static_assert(std::size(kPens) + 1 <= kMostColours);

Colour colourOf(int pen, const std::map<int, uint32_t> &inks) {
    const auto known = inks.find(pen);
    if (known == inks.end()) return kPens[static_cast<size_t>(pen - 1) % std::size(kPens)];
    const uint32_t ink = known->second;
    return {static_cast<uint8_t>(ink >> 16), static_cast<uint8_t>(ink >> 8), static_cast<uint8_t>(ink)};
}

bool hasEnding(const std::string &path, const std::string &ending) {
    return path.size() > ending.size() && strcasecmp(path.c_str() + path.size() - ending.size(), ending.c_str()) == 0;
}

} // namespace

Picture::Picture(const Sheet &sheet, const PictureOptions &options) : sheet_(sheet), options_(options) {}

Picture::~Picture() = default;

std::optional<PictureError> Picture::open(const std::string &path) {
    const bool isPoured = path == "-";
    path_ = isPoured ? "standard output" : path;
    const bool svg = hasFormat("svg"), png = hasFormat("png"), pdf = hasFormat("pdf");
    if (!svg && !png && !pdf) return failure("a picture's name must end in .svg, .png or .pdf");
    if (png && !(options_.dotsPerInch >= 1)) return failure("the resolution must be at least 1 dot per inch");
    if (const int error = isPoured ? file_.openStandardOutput() : file_.open(path)) return failure(strerror(error), error);

    if (svg) page_ = makeSvgPage(sheet_, file_);
    if (pdf) page_ = makePdfPage(sheet_, file_);
    if (png) {
        const double resolution = pngResolution(sheet_, options_.dotsPerInch);
        if (resolution < options_.dotsPerInch)
            note_ = path_ + ": drawn with " + std::to_string(static_cast<int>(resolution)) +
                    " dots per inch, as many as this sheet allows; an .svg or .pdf has no such limit";
        page_ = makePngPage(sheet_, resolution, file_);
    }
    if (options_.frame) drawFrame(*options_.frame);
    return std::nullopt;
}

bool Picture::hasFormat(const char *format) const {
    return options_.format.empty() ? hasEnding(path_, std::string(".") + format) : options_.format == format;
}

Colour Picture::ink() const { return isOutside_ ? kFrame : colourOf(pen_, options_.inks); }

void Picture::setOutside(bool isOutside) {
    if (isOutside == isOutside_) return;
    flush();
    isOutside_ = isOutside;
}

void Picture::setPen(int pen, double widthMillimetres) {
    const double width = widthMillimetres > kThinnest ? widthMillimetres : kThinnest;
    if (pen == pen_ && width == width_) return;
    flush();
    pen_ = pen;
    width_ = width;
}

void Picture::begin(Point at) {
    if (points_.size() >= kBatchPoints) flush();
    if (!points_.empty()) ends_.push_back(points_.size());
    points_.push_back(at);
    last_ = at;
}

void Picture::line(Point to) {
    if (points_.size() >= kBatchPoints) flush();
    if (points_.empty()) begin(last_); // continues a stroke that was flushed: its round ends hide the joint
    points_.push_back(to);
    last_ = to;
}

// Strokes of this pen that still wait are drawn after the fill: in one colour the order makes no difference.
void Picture::fill(std::span<const Point> points, std::span<const size_t> ends) {
    if (page_ != nullptr && pen_ > 0) page_->fill({points, ends}, ink());
}

std::optional<PictureError> Picture::finish() {
    if (page_ == nullptr) return failure("no picture was begun");
    flush();
    const std::string problem = page_->finish();
    page_.reset();
    const int error = file_.error();
    if (error == 0 && !problem.empty()) {
        file_.discard();
        return failure(problem);
    }
    if (const int failed = file_.commit()) return failure(strerror(failed), failed);
    return std::nullopt;
}

void Picture::flush() {
    if (points_.empty()) return;
    ends_.push_back(points_.size());
    if (page_ != nullptr && pen_ > 0) page_->stroke({points_, ends_}, ink(), width_);
    points_.clear();
    ends_.clear();
}

void Picture::drawFrame(const Rectangle &edges) {
    constexpr double kInside = kFrameWidth / 2 * kUnitsPerMillimetre;
    const double left = edges.lower.x + kInside, bottom = edges.lower.y + kInside;
    const double right = edges.upper.x - kInside, top = edges.upper.y - kInside;
    const Point corners[] = {{left, bottom}, {right, bottom}, {right, top}, {left, top}, {left, bottom}};
    const size_t ends[] = {std::size(corners)};
    page_->stroke({corners, ends}, kFrame, kFrameWidth);
}

std::optional<PictureError> Picture::failure(const std::string &what, int errnoValue) const {
    return PictureError{path_ + ": " + what, errnoValue};
}

} // namespace virtual_plotter
