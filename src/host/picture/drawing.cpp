#include "host/picture/drawing.h"

#include "host/terminal/failure.h"
#include "host/terminal/text.h"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <filesystem>
#include <fmt/format.h>

namespace host {

using virtual_plotter::PictureError;

namespace {

/// A drawing of many metres is looked at as a whole first: with more dots than a few screens have it only takes longer.
double usualResolution(const virtual_plotter::Sheet &page) {
    constexpr double kUsual = 200, kInch = 25.4, kMostDots = 24e6, kLargestUsual = 1189 * 841;
    const double area = page.width * page.height;
    return area <= kLargestUsual ? kUsual : std::min(kUsual, std::sqrt(kMostDots / area) * kInch);
}

/// With a frame, so that the edge of the sheet can be seen on a white background.
virtual_plotter::PictureOptions pictureOptions(const DrawingOptions &options, const virtual_plotter::Sheet &page,
                                               const virtual_plotter::Sheet &sheet, const std::map<int, uint32_t> &inks) {
    return {options.dotsPerInch > 0 ? options.dotsPerInch : usualResolution(page), edgesOf(sheet), options.format, inks};
}

View viewOf(const virtual_plotter::Sheet &sheet) { return {.sheet = sheet, .page = sheet, .name = {}}; }

Failure failureOf(const std::string &path, const PictureError &error) {
    if (error.errnoValue != 0) return outputFailure(path == kStandardOutput ? "standard output" : path, error.errnoValue);
    return {ExitCode::Usage, shown(error.message)};
}

} // namespace

void requireOtherFile(const char *option, const std::string &output, const std::string &input) {
    std::error_code ignored;
    if (!input.empty() && std::filesystem::equivalent(output, input, ignored)) {
        throw Failure(ExitCode::Usage, fmt::format("{}: {} is the input; name another file", option, shown(output)));
    }
}

Drawing::Drawing(const DrawingOptions &options, const std::string &path)
    : Drawing(viewOf(sheetOf(options)), options, path) {}

Drawing::Drawing(const View &view, const DrawingOptions &options, const std::string &path,
                 const std::map<int, uint32_t> &inks)
    : path_(path), view_(view), picture_(view.page, pictureOptions(options, view.page, view.sheet, inks)),
      parted_(picture_, view.sheet.hardClip) {
    if (path.empty()) return;
    if (auto error = picture_.open(path)) throw failureOf(path, *error);
}

virtual_plotter::PenSink &Drawing::sink() {
    if (view_.isLeft && view_.isTyped) return parted_;
    return picture_;
}

void Drawing::setDone(bool isDone) {
    parted_.setDone(isDone);
    picture_.setOutside(isDone);
}

void Drawing::finish() {
    if (path_.empty()) return;
    const auto error = picture_.finish();
    const bool isEnough = path_ == kStandardOutput && error && error->errnoValue == EPIPE; // its reader wanted no more
    if (error && !isEnough) throw failureOf(path_, *error);
}

} // namespace host
