#include "virtual_plotter/drawing/sheet.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <span>
#include <utility>

namespace virtual_plotter {

namespace {

struct Size {
    std::string_view name;
    double width, height;         // millimetres
    double areaWidth, areaHeight; // plotter units; 0: by the margins
};

constexpr Size kSheets[] = {
    {"a4", 297, 210, 10900, 7650},
    {"a3", 420, 297, 16158, 11040},
    {"a2", 594, 420, 0, 0},
    {"a1", 841, 594, 0, 0},
    {"a0", 1189, 841, 0, 0},
    {"letter", 279.4, 215.9, 10365, 7962},
    {"tabloid", 431.8, 279.4, 16640, 10365},
};

constexpr double kShortest = 10, kLongest = 20000, kFarthest = 100'000; // millimetres

double areaOf(double side) { return std::floor((side - 2 * std::min(10.0, side / 10)) * kUnitsPerMillimetre); }

Sheet sheetOf(const Size &size) {
    Sheet sheet{size.width, size.height, {}};
    sheet.hardClip.upper =
        size.areaWidth > 0 ? Point{size.areaWidth, size.areaHeight} : Point{areaOf(size.width), areaOf(size.height)};
    return sheet;
}

Sheet standing(Sheet sheet) {
    std::swap(sheet.width, sheet.height);
    std::swap(sheet.hardClip.upper.x, sheet.hardClip.upper.y);
    return sheet;
}

bool fits(double side) { return side >= kShortest && side <= kLongest; } // false for NaN

// False when the text is no number or holds anything beside it.
bool readNumber(std::string_view text, double &number) {
    const char *end = text.data() + text.size();
    const auto [stop, code] = std::from_chars(text.data(), end, number, std::chars_format::fixed);
    return code == std::errc() && stop == end;
}

// False unless the text is as many numbers as there is room for, parted by the mark.
bool readNumbers(std::string_view text, char mark, std::span<double> numbers) {
    for (double &number : numbers.first(numbers.size() - 1)) {
        const size_t end = text.find(mark);
        if (end == std::string_view::npos || !readNumber(text.substr(0, end), number)) return false;
        text.remove_prefix(end + 1);
    }
    return readNumber(text, numbers.back());
}

constexpr std::string_view kPortrait = "-portrait";

} // namespace

std::optional<Sheet> parseSheet(std::string_view text, std::string &error) {
    std::string lower(text);
    for (char &c : lower)
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    std::string_view name = lower;
    const bool portrait = name.ends_with(kPortrait);
    if (portrait) name.remove_suffix(kPortrait.size());

    for (const Size &size : kSheets) {
        if (name == size.name) return portrait ? standing(sheetOf(size)) : sheetOf(size);
    }

    double sides[2];
    if (!readNumbers(lower, 'x', sides)) {
        error = "unknown sheet \"" + std::string(text) +
                "\"; use a0, a1, a2, a3, a4, letter, tabloid (each also with -portrait), or WIDTHxHEIGHT in "
                "millimetres, as in 297x210";
        return std::nullopt;
    }
    if (!fits(sides[0]) || !fits(sides[1])) {
        error = "sheet " + std::string(text) + ": each side must be 10 to 20000 millimetres long";
        return std::nullopt;
    }
    return sheetOf({"", sides[0], sides[1], 0, 0});
}

std::optional<Sheet> parseArea(std::string_view text, std::string &error) {
    std::string numbers(text);
    std::erase(numbers, ' ');
    double corners[4];
    if (!readNumbers(numbers, ',', corners)) {
        error = "unknown area \"" + std::string(text) +
                "\"; use X1,Y1,X2,Y2 in millimetres, lower left and upper right, as in 0,0,272.5,191.25";
        return std::nullopt;
    }
    const auto [left, lower, right, upper] = corners;
    const auto isFar = [](double corner) { return !(std::abs(corner) <= kFarthest); }; // true for NaN
    if (std::ranges::any_of(corners, isFar) || right - left < kShortest || upper - lower < kShortest) {
        error = "area " + std::string(text) +
                ": the second corner must lie 10 millimetres or more to the right of the first and above it, and none "
                "farther than 100000 from 0,0";
        return std::nullopt;
    }
    return sheetWithin({{left * kUnitsPerMillimetre, lower * kUnitsPerMillimetre},
                        {right * kUnitsPerMillimetre, upper * kUnitsPerMillimetre}});
}

std::vector<NamedSheet> namedSheets() {
    std::vector<NamedSheet> sheets;
    for (const Size &size : kSheets) {
        sheets.push_back({std::string(size.name), sheetOf(size)});
        sheets.push_back({std::string(size.name) + std::string(kPortrait), standing(sheets.back().sheet)});
    }
    std::ranges::stable_sort(sheets, {}, [](const NamedSheet &named) { return named.sheet.width * named.sheet.height; });
    return sheets;
}

} // namespace virtual_plotter
