#include "virtual_plotter/drawing/page.h"

#include <cairo/cairo-pdf.h>
#include <cairo/cairo.h>

namespace virtual_plotter {

namespace {

constexpr double kPointsPerMillimetre = 72 / 25.4;

cairo_status_t writeTo(void *file, const unsigned char *bytes, unsigned size) {
    return static_cast<OutputFile *>(file)->write(bytes, size) == 0 ? CAIRO_STATUS_SUCCESS : CAIRO_STATUS_WRITE_ERROR;
}

class PdfPage final : public Page {
public:
    PdfPage(const Sheet &sheet, OutputFile &file)
        : surface_(cairo_pdf_surface_create_for_stream(writeTo, &file, sheet.width * kPointsPerMillimetre,
                                                       sheet.height * kPointsPerMillimetre)) {
        // No date: the same strokes give the same file.
        cairo_pdf_surface_set_metadata(surface_, CAIRO_PDF_METADATA_CREATE_DATE, "");
        cairo_ = cairo_create(surface_);
        cairo_set_source_rgb(cairo_, 1, 1, 1);
        cairo_paint(cairo_);
        const Point origin = areaOrigin(sheet);
        cairo_scale(cairo_, kPointsPerMillimetre, kPointsPerMillimetre);
        cairo_translate(cairo_, origin.x, sheet.height - origin.y);
        cairo_scale(cairo_, 1 / kUnitsPerMillimetre, -1 / kUnitsPerMillimetre);
        cairo_set_line_cap(cairo_, CAIRO_LINE_CAP_ROUND);
        cairo_set_line_join(cairo_, CAIRO_LINE_JOIN_ROUND);
        cairo_set_fill_rule(cairo_, CAIRO_FILL_RULE_EVEN_ODD);
    }
    PdfPage(const PdfPage &) = delete;
    PdfPage &operator=(const PdfPage &) = delete;
    ~PdfPage() override {
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
        if (status == CAIRO_STATUS_SUCCESS) {
            cairo_surface_finish(surface_);
            status = cairo_surface_status(surface_);
        }
        return status == CAIRO_STATUS_SUCCESS ? std::string() : cairo_status_to_string(status);
    }

private:
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

} // namespace

std::unique_ptr<Page> makePdfPage(const Sheet &sheet, OutputFile &file) { return std::make_unique<PdfPage>(sheet, file); }

} // namespace virtual_plotter
