#include "virtual_plotter/drawing/sheet.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <utility>

namespace virtual_plotter {

namespace {

struct NamedSheet {
    std::string_view name;
    double width, height;         // millimetres
    double areaWidth, areaHeight; // plotter units; 0: by the margins
};

constexpr NamedSheet kSheets[] = {
    {"a4", 297, 210, 10900, 7650},
    {"a3", 420, 297, 16158, 11040},
    {"a2", 594, 420, 0, 0},
    {"a1", 841, 594, 0, 0},
    {"a0", 1189, 841, 0, 0},
    {"letter", 279.4, 215.9, 10365, 7962},
    {"tabloid", 431.8, 279.4, 16640, 10365},
};

constexpr double kShortest = 10, kLongest = 20000;

double areaOf(double side) { return std::floor((side - 2 * std::min(10.0, side / 10)) * kUnitsPerMillimetre); }

Sheet sheetOf(const NamedSheet &named) {
    Sheet sheet{named.width, named.height, {}};
    sheet.hardClip.upper =
        named.areaWidth > 0 ? Point{named.areaWidth, named.areaHeight} : Point{areaOf(named.width), areaOf(named.height)};
    return sheet;
}

bool fits(double side) { return side >= kShortest && side <= kLongest; } // false for NaN

// False when the text is no number or holds anything beside it.
bool readSide(std::string_view text, double &side) {
    const char *end = text.data() + text.size();
    const auto [stop, code] = std::from_chars(text.data(), end, side, std::chars_format::fixed);
    return code == std::errc() && stop == end;
}

} // namespace

std::optional<Sheet> parseSheet(std::string_view text, std::string &error) {
    constexpr std::string_view kPortrait = "-portrait";
    std::string lower(text);
    for (char &c : lower)
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    std::string_view name = lower;
    const bool portrait = name.ends_with(kPortrait);
    if (portrait) name.remove_suffix(kPortrait.size());

    for (const NamedSheet &named : kSheets) {
        if (name != named.name) continue;
        Sheet sheet = sheetOf(named);
        if (portrait) {
            std::swap(sheet.width, sheet.height);
            std::swap(sheet.hardClip.upper.x, sheet.hardClip.upper.y);
        }
        return sheet;
    }

    const size_t cross = lower.find('x');
    NamedSheet custom = {};
    if (cross == std::string::npos || !readSide(std::string_view(lower).substr(0, cross), custom.width) ||
        !readSide(std::string_view(lower).substr(cross + 1), custom.height)) {
        error = "unknown sheet \"" + std::string(text) +
                "\"; use a0, a1, a2, a3, a4, letter, tabloid (each also with -portrait), or WIDTHxHEIGHT in "
                "millimetres, as in 297x210";
        return std::nullopt;
    }
    if (!fits(custom.width) || !fits(custom.height)) {
        error = "sheet " + std::string(text) + ": each side must be 10 to 20000 millimetres long";
        return std::nullopt;
    }
    return sheetOf(custom);
}

} // namespace virtual_plotter
