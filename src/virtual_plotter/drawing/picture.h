// The sheet as the pens leave it, as an SVG, PNG or PDF file. It takes strokes from a reader and hands them to the page in
// batches: one by one, each would be an object of its own in the file, and very many at a time are slow to draw.
#pragma once

#include "language/pen_sink.h"
#include "virtual_plotter/drawing/page.h"

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace virtual_plotter {

/// What went wrong with a picture, as a sentence for the user that begins with the file's path.
struct PictureError {
    std::string message;
    int errnoValue = 0; ///< 0 when the system was not to blame
};

struct PictureOptions {
    double dotsPerInch = 200; ///< of a PNG; lowered, with a note, for a sheet that would then be too large for the memory
    std::optional<Rectangle> frame = {}; ///< a thin grey line within these edges: those of the paper
    std::string format = {};             ///< svg, png or pdf; empty: by the path's ending
    std::map<int, uint32_t> inks = {};   ///< of pens, 0xRRGGBB, where they are known
};

/// One sheet in one file of exactly the sheet's size, which may be larger than what is outlined in it. The file appears, or
/// replaces an older one, at finish(): a picture that is destroyed without it, or whose finish() fails, leaves nothing. The
/// same calls give the same bytes. Memory does not grow with the number of strokes, but for a PDF: some 30 to 50 bytes a
/// segment until the end. Pens of unknown ink have eight colours; the ninth draws like the first, and pen 0 or less not at
/// all.
class Picture final : public PenSink {
public:
    explicit Picture(const Sheet &sheet, const PictureOptions &options = {});
    ~Picture() override;

    /// The format follows the path's ending: .svg, .png or .pdf, in any case, unless the options name one. "-" is standard
    /// output, which gets the picture as it is made. To be called once, before anything is drawn; without it strokes are
    /// taken and go nowhere.
    std::optional<PictureError> open(const std::string &path);
    /// A remark for the user on how the picture was made; mostly empty.
    const std::string &note() const { return note_; }

    /// What follows lies outside of what the pen reaches, and is drawn in grey whatever the pen; or no longer does.
    void setOutside(bool isOutside);
    void setPen(int pen, double widthMillimetres) override;
    void begin(Point at) override;
    void line(Point to) override;
    void fill(std::span<const Point> points, std::span<const size_t> ends) override;

    /// Ends the drawing and gives the file its name. Says the first error of the whole picture.
    std::optional<PictureError> finish();

private:
    void flush();
    void drawFrame(const Rectangle &edges);
    bool hasFormat(const char *format) const;
    Colour ink() const;
    std::optional<PictureError> failure(const std::string &what, int errnoValue = 0) const;

    Sheet sheet_;
    PictureOptions options_;
    std::string path_, note_;
    OutputFile file_;
    std::unique_ptr<Page> page_;
    int pen_ = 1;
    double width_ = 0.3;
    bool isOutside_ = false;
    Point last_;
    std::vector<Point> points_; // the strokes since the last flush
    std::vector<size_t> ends_;  // of all of them but the last
};

} // namespace virtual_plotter
