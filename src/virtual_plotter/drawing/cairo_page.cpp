#include "virtual_plotter/drawing/page.h"
#include "virtual_plotter/drawing/png_size_chunk.h"

#include <algorithm>
#include <cairo/cairo-pdf.h>
#include <cairo/cairo.h>
#include <cmath>
#include <utility>

namespace virtual_plotter {

namespace {

constexpr double kMillimetresPerInch = 25.4;
constexpr double kPointsPerInch = 72;

// A PNG page is held in memory with 4 bytes a dot: 256 MB at the most. The library takes no side longer than 32767 dots.
constexpr double kMostDots = 64e6, kLongestSide = 32767;

int dots(double millimetres, double dotsPerInch) {
    return std::max(1, static_cast<int>(std::lround(millimetres / kMillimetresPerInch * dotsPerInch)));
}

cairo_status_t writeTo(void *file, const unsigned char *bytes, unsigned size) {
    return static_cast<OutputFile *>(file)->write(bytes, size) == 0 ? CAIRO_STATUS_SUCCESS : CAIRO_STATUS_WRITE_ERROR;
}

class CairoPage : public Page {
public:
    // Takes the surface over. scale: its units per millimetre.
    CairoPage(cairo_surface_t *surface, const Sheet &sheet, double scale)
        : surface_(surface), cairo_(cairo_create(surface)) {
        cairo_set_source_rgb(cairo_, 1, 1, 1);
        cairo_paint(cairo_);
        const Point origin = areaOrigin(sheet);
        cairo_scale(cairo_, scale, scale);
        cairo_translate(cairo_, origin.x, sheet.height - origin.y);
        cairo_scale(cairo_, 1 / kUnitsPerMillimetre, -1 / kUnitsPerMillimetre);
        cairo_set_line_cap(cairo_, CAIRO_LINE_CAP_ROUND);
        cairo_set_line_join(cairo_, CAIRO_LINE_JOIN_ROUND);
        cairo_set_fill_rule(cairo_, CAIRO_FILL_RULE_EVEN_ODD);
    }
    CairoPage(const CairoPage &) = delete;
    CairoPage &operator=(const CairoPage &) = delete;
    ~CairoPage() override {
        cairo_destroy(cairo_);
        cairo_surface_destroy(surface_);
    }

    void stroke(const Contours &contours, Colour colour, double widthMillimetres) override {
        path(contours);
        setColour(colour);
        cairo_set_line_width(cairo_, widthMillimetres * kUnitsPerMillimetre);
        cairo_stroke(cairo_);
    }

    void fill(const Contours &contours, Colour colour) override {
        path(contours);
        setColour(colour);
        cairo_fill(cairo_);
    }

    std::string finish() override {
        cairo_status_t status = cairo_status(cairo_);
        if (status == CAIRO_STATUS_SUCCESS) status = writeOut(surface_);
        return status == CAIRO_STATUS_SUCCESS ? std::string() : cairo_status_to_string(status);
    }

private:
    virtual cairo_status_t writeOut(cairo_surface_t *surface) = 0;

    void path(const Contours &contours) {
        size_t i = 0;
        for (size_t end : contours.ends) {
            if (i >= end) continue;
            const Point &first = contours.points[i];
            cairo_move_to(cairo_, first.x, first.y);
            if (i + 1 == end) cairo_line_to(cairo_, first.x, first.y); // a round dot
            while (++i < end)
                cairo_line_to(cairo_, contours.points[i].x, contours.points[i].y);
        }
    }

    void setColour(Colour colour) {
        cairo_set_source_rgb(cairo_, colour.red / 255.0, colour.green / 255.0, colour.blue / 255.0);
    }

    cairo_surface_t *surface_;
    cairo_t *cairo_;
};

class PdfPage final : public CairoPage {
public:
    PdfPage(const Sheet &sheet, OutputFile &file)
        : CairoPage(surfaceOf(sheet, file), sheet, kPointsPerInch / kMillimetresPerInch) {}

private:
    static cairo_surface_t *surfaceOf(const Sheet &sheet, OutputFile &file) {
        constexpr double kScale = kPointsPerInch / kMillimetresPerInch;
        cairo_surface_t *surface =
            cairo_pdf_surface_create_for_stream(writeTo, &file, sheet.width * kScale, sheet.height * kScale);
        // No date: the same strokes give the same file.
        cairo_pdf_surface_set_metadata(surface, CAIRO_PDF_METADATA_CREATE_DATE, "");
        return surface;
    }

    cairo_status_t writeOut(cairo_surface_t *surface) override {
        cairo_surface_finish(surface);
        return cairo_surface_status(surface);
    }
};

class PngPage final : public CairoPage {
public:
    PngPage(const Sheet &sheet, double dotsPerInch, OutputFile &file)
        : CairoPage(cairo_image_surface_create(CAIRO_FORMAT_RGB24, dots(sheet.width, dotsPerInch),
                                               dots(sheet.height, dotsPerInch)),
                    sheet, dotsPerInch / kMillimetresPerInch),
          file_(file), dotsPerMetre_(dotsPerInch / kMillimetresPerInch * 1000) {}

private:
    cairo_status_t writeOut(cairo_surface_t *surface) override {
        return cairo_surface_write_to_png_stream(surface, writeWithSize, this);
    }

    // The library's own files say nothing of their resolution.
    static cairo_status_t writeWithSize(void *closure, const unsigned char *bytes, unsigned size) {
        auto &page = *static_cast<PngPage *>(closure);
        const unsigned before = static_cast<unsigned>(std::min<size_t>(size, kPngHeaderSize - page.header_));
        page.header_ += before;
        cairo_status_t status = writeTo(&page.file_, bytes, before);
        if (before > 0 && page.header_ == kPngHeaderSize && status == CAIRO_STATUS_SUCCESS) {
            const PngSizeChunk chunk = pngSizeChunk(static_cast<uint32_t>(std::lround(page.dotsPerMetre_)));
            status = writeTo(&page.file_, chunk.data(), static_cast<unsigned>(chunk.size()));
        }
        return status == CAIRO_STATUS_SUCCESS ? writeTo(&page.file_, bytes + before, size - before) : status;
    }

    OutputFile &file_;
    double dotsPerMetre_;
    size_t header_ = 0; // bytes of it that have been written
};

} // namespace

double pngResolution(const Sheet &sheet, double dotsPerInch) noexcept {
    const double width = sheet.width / kMillimetresPerInch, height = sheet.height / kMillimetresPerInch;
    return std::min({dotsPerInch, kLongestSide / std::max(width, height), std::sqrt(kMostDots / (width * height))});
}

std::unique_ptr<Page> makePdfPage(const Sheet &sheet, OutputFile &file) { return std::make_unique<PdfPage>(sheet, file); }

std::unique_ptr<Page> makePngPage(const Sheet &sheet, double dotsPerInch, OutputFile &file) {
    return std::make_unique<PngPage>(sheet, dotsPerInch, file);
}

} // namespace virtual_plotter
