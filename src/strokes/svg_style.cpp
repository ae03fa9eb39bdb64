#include "strokes/svg_style.h"

#include <algorithm>
#include <cmath>

namespace strokes {

namespace {

double opacityOf(std::string_view text) {
    const double value = takeNumber(text).value_or(1);
    return std::clamp(std::isfinite(value) ? value : 1, 0.0, 1.0);
}

FillRule ruleOf(std::string_view text) { return text == "evenodd" ? FillRule::EvenOdd : FillRule::NonZero; }

struct Property {
    std::string_view name;
    void (*take)(SvgStyle &style, std::string_view value);
};

constexpr Property kProperties[] = {
    {"clip-path", [](SvgStyle &style, std::string_view value) { style.clip = nameIn(value); }},
    {"clip-rule", [](SvgStyle &style, std::string_view value) { style.clipRule = ruleOf(value); }},
    {"fill", [](SvgStyle &style, std::string_view value) { style.fill = paintOf(value); }},
    {"fill-opacity", [](SvgStyle &style, std::string_view value) { style.fillOpacity = opacityOf(value); }},
    {"fill-rule", [](SvgStyle &style, std::string_view value) { style.fillRule = ruleOf(value); }},
    {"filter", [](SvgStyle &style, std::string_view value) { style.filter = nameIn(value); }},
    {"mask", [](SvgStyle &style, std::string_view value) { style.mask = nameIn(value); }},
    {"opacity", [](SvgStyle &style, std::string_view value) { style.opacity *= opacityOf(value); }},
    {"stroke", [](SvgStyle &style, std::string_view value) { style.line = paintOf(value); }},
    {"stroke-dasharray", [](SvgStyle &style, std::string_view value) { style.dashes.lengths = numbersOf(value); }},
    {"stroke-dashoffset",
     [](SvgStyle &style, std::string_view value) { style.dashes.offset = takeNumber(value).value_or(0); }},
    {"stroke-linecap", [](SvgStyle &style, std::string_view value) { style.isButt = value == "butt"; }},
    {"stroke-opacity", [](SvgStyle &style, std::string_view value) { style.lineOpacity = opacityOf(value); }},
};

void take(SvgStyle &style, std::string_view name, std::string_view value) {
    const auto property = std::find_if(std::begin(kProperties), std::end(kProperties),
                                       [name](const Property &row) { return row.name == name; });
    if (property != std::end(kProperties)) property->take(style, value);
}

/// "name:value;name:value".
void takeAll(SvgStyle &style, std::string_view declarations) {
    while (!declarations.empty()) {
        const size_t end = std::min(declarations.find(';'), declarations.size());
        const std::string_view one = declarations.substr(0, end);
        declarations.remove_prefix(std::min(end + 1, declarations.size()));
        const size_t colon = one.find(':');
        if (colon != std::string_view::npos) take(style, trimmed(one.substr(0, colon)), trimmed(one.substr(colon + 1)));
    }
}

} // namespace

SvgStyle SvgStyle::of(pugi::xml_node element) const {
    SvgStyle style = *this;
    style.clip = style.mask = style.filter = {};
    for (const pugi::xml_attribute attribute : element.attributes())
        take(style, attribute.name(), attribute.value());
    takeAll(style, element.attribute("style").value());
    return style;
}

} // namespace strokes
