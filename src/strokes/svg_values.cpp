#include "strokes/svg_values.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>

namespace strokes {

namespace {

constexpr std::string_view kBlanks = " \t\r\n";
constexpr double kMillimetresPerInch = 25.4;

void skip(std::string_view &text, std::string_view characters) {
    text.remove_prefix(std::min(text.find_first_not_of(characters), text.size()));
}

/// CSS Values and Units Module, 5.2: absolute lengths.
constexpr struct {
    std::string_view name;
    double millimetres;
} kUnits[] = {
    {"", kMillimetresPerInch / 96},
    {"px", kMillimetresPerInch / 96},
    {"pt", kMillimetresPerInch / 72},
    {"pc", kMillimetresPerInch / 6},
    {"in", kMillimetresPerInch},
    {"mm", 1},
    {"cm", 10},
};

std::optional<Affine> mapOf(std::string_view name, const std::vector<double> &v) {
    if (!std::all_of(v.begin(), v.end(), [](double number) { return std::isfinite(number); })) return {};
    const bool isPair = v.size() == 2;
    if (name == "matrix" && v.size() == 6) return Affine{v[0], v[1], v[2], v[3], v[4], v[5]};
    if (name == "translate" && (v.size() == 1 || isPair)) return Affine{1, 0, 0, 1, v[0], isPair ? v[1] : 0};
    if (name == "scale" && (v.size() == 1 || isPair)) return Affine{v[0], 0, 0, isPair ? v[1] : v[0], 0, 0};
    return {};
}

uint32_t byteOf(double value) { return static_cast<uint32_t>(std::lround(std::clamp(value, 0.0, 255.0))); }

uint32_t hexColour(std::string_view digits) {
    uint32_t value = 0;
    std::from_chars(digits.data(), digits.data() + digits.size(), value, 16);
    if (digits.size() > 3) return value & 0xFFFFFF;
    return (value >> 8 & 15) * 0x110000 + (value >> 4 & 15) * 0x1100 + (value & 15) * 0x11;
}

uint32_t rgbColour(std::string_view list) {
    uint32_t colour = 0;
    for (int i = 0; i < 3; ++i) {
        const double value = takeNumber(list).value_or(0);
        const bool isPercentage = list.starts_with('%');
        if (isPercentage) list.remove_prefix(1);
        colour = colour << 8 | byteOf(isPercentage ? value * 2.55 : value);
    }
    return colour;
}

} // namespace

std::string_view trimmed(std::string_view text) {
    skip(text, kBlanks);
    return text.substr(0, text.find_last_not_of(kBlanks) + 1);
}

std::optional<double> takeNumber(std::string_view &text) {
    skip(text, " \t\r\n,");
    std::string_view digits = text;
    if (digits.starts_with('+')) digits.remove_prefix(1);
    double value = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), value);
    if (error == std::errc::invalid_argument) return {};
    if (error == std::errc::result_out_of_range) value = std::numeric_limits<double>::infinity();
    text.remove_prefix(static_cast<size_t>(end - text.data()));
    return value;
}

std::vector<double> numbersOf(std::string_view text) {
    std::vector<double> result;
    while (const auto value = takeNumber(text))
        result.push_back(*value);
    return result;
}

std::optional<double> lengthOf(std::string_view text) {
    const auto value = takeNumber(text);
    const auto unit = std::find_if(std::begin(kUnits), std::end(kUnits),
                                   [name = trimmed(text)](const auto &row) { return row.name == name; });
    if (!value || unit == std::end(kUnits)) return {};
    return *value * unit->millimetres;
}

std::optional<Affine> transformOf(std::string_view text) {
    Affine all;
    for (skip(text, " \t\r\n,"); !text.empty(); skip(text, " \t\r\n,")) {
        const size_t open = text.find('('), close = text.find(')');
        if (open == std::string_view::npos || close == std::string_view::npos || close < open) return {};
        const auto map = mapOf(trimmed(text.substr(0, open)), numbersOf(text.substr(open + 1, close - open - 1)));
        if (!map) return {};
        all = all * *map;
        text.remove_prefix(close + 1);
    }
    return all;
}

Paint paintOf(std::string_view text) {
    text = trimmed(text);
    if (text.empty() || text == "none") return {};
    if (text.starts_with("url(")) return {Paint::Kind::Server, 0, nameIn(text)};
    Paint paint{Paint::Kind::Plain};
    if (text.starts_with('#')) paint.colour = hexColour(text.substr(1));
    if (text.starts_with("rgb(")) paint.colour = rgbColour(text.substr(4));
    return paint;
}

std::string_view nameIn(std::string_view reference) {
    reference = trimmed(reference);
    if (reference.starts_with("url(")) reference = reference.substr(4, reference.find(')') - 4);
    return reference.starts_with('#') ? reference.substr(1) : std::string_view();
}

} // namespace strokes
