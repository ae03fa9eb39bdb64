// Written by hand and not by the drawing library: each stroke goes to the file at once, with the plotter's own coordinates.
#include "virtual_plotter/drawing/page.h"

#include <charconv>
#include <cmath>
#include <string_view>

namespace virtual_plotter {

namespace {

class SvgPage final : public Page {
public:
    SvgPage(const Sheet &sheet, OutputFile &file) : file_(file) {
        const Point origin = areaOrigin(sheet);
        text("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"");
        number(sheet.width).text("mm\" height=\"").number(sheet.height).text("mm\" viewBox=\"0 0 ");
        number(sheet.width).text(" ").number(sheet.height);
        text(
            "\">\n<rect width=\"100%\" height=\"100%\" fill=\"#ffffff\"/>\n"
            "<g fill=\"none\" fill-rule=\"evenodd\" stroke-linecap=\"round\" stroke-linejoin=\"round\" transform=\"matrix(");
        number(1 / kUnitsPerMillimetre).text(" 0 0 ").number(-1 / kUnitsPerMillimetre).text(" ");
        number(origin.x).text(" ").number(sheet.height - origin.y).text(")\">\n");
        write();
    }

    void stroke(const Contours &contours, Colour ink, double widthMillimetres) override {
        text("<path stroke=\"").colour(ink).text("\" stroke-width=\"").number(widthMillimetres * kUnitsPerMillimetre);
        text("\" d=\"").path(contours).text("\"/>\n");
        write();
    }

    void fill(const Contours &contours, Colour ink) override {
        text("<path fill=\"").colour(ink).text("\" d=\"").path(contours).text("\"/>\n");
        write();
    }

    std::string finish() override {
        text("</g>\n</svg>\n");
        write();
        return {};
    }

private:
    SvgPage &text(std::string_view more) {
        text_ += more;
        return *this;
    }

    // Three decimals: a micrometre of paper, and far less than the step of any plotter in its units.
    SvgPage &number(double value) {
        char digits[320]; // room for any double
        const auto end =
            std::to_chars(digits, digits + sizeof digits, std::round(value * 1000) / 1000, std::chars_format::fixed);
        return text({digits, end.ptr});
    }

    SvgPage &colour(Colour ink) {
        constexpr char kDigits[] = "0123456789abcdef";
        text("#");
        for (uint8_t part : {ink.red, ink.green, ink.blue})
            text_.append({kDigits[part / 16], kDigits[part % 16]});
        return *this;
    }

    SvgPage &path(const Contours &contours) {
        size_t i = 0;
        for (size_t end : contours.ends) {
            const size_t first = i;
            for (; i < end; ++i) {
                text(i == first ? "M" : i == first + 1 ? "L" : " ");
                number(contours.points[i].x).text(" ").number(contours.points[i].y);
            }
            if (i == first + 1) text("h0"); // a round dot
        }
        return *this;
    }

    void write() {
        file_.write(text_.data(), text_.size());
        text_.clear();
    }

    OutputFile &file_;
    std::string text_;
};

} // namespace

std::unique_ptr<Page> makeSvgPage(const Sheet &sheet, OutputFile &file) { return std::make_unique<SvgPage>(sheet, file); }

} // namespace virtual_plotter
