#include "strokes/svg_document.h"

#include "strokes/unreadable.h"

#include <cmath>

namespace strokes {

namespace {

constexpr double kLargestPage = 1e6; // millimetres
constexpr double kPaper = 235;       // of 255: a light grey of #EBEBEB

struct Naming final : pugi::xml_tree_walker {
    bool for_each(pugi::xml_node &node) override {
        if (const auto id = node.attribute("id")) names.emplace(id.value(), node);
        return true;
    }
    std::unordered_map<std::string_view, pugi::xml_node> names;
};

std::string_view reference(pugi::xml_node element) {
    const auto link = element.attribute("xlink:href");
    return nameIn((link ? link : element.attribute("href")).value());
}

/// What a property of a stop says, in its style or on its own.
std::string_view stopProperty(pugi::xml_node stop, const std::string &name) {
    if (const auto attribute = stop.attribute(name.c_str())) return attribute.value();
    const std::string_view style = stop.attribute("style").value();
    const size_t at = style.find(name + ':');
    if (at == std::string_view::npos) return {};
    return style.substr(at + name.size() + 1, style.find(';', at) - at - name.size() - 1);
}

} // namespace

SvgDocument::SvgDocument(std::string svg) : text_(std::move(svg)) {
    const auto result = document_.load_buffer_inplace(
        text_.data(), text_.size(), pugi::parse_minimal | pugi::parse_escapes | pugi::parse_wconv_attribute,
        pugi::encoding_utf8);
    root_ = document_.child("svg");
    if (!result || !root_) throw Unreadable("no whole SVG drawing; save it again");
    Naming naming;
    document_.traverse(naming);
    named_ = std::move(naming.names);
    setPage();
}

void SvgDocument::setPage() {
    const auto view = numbersOf(root_.attribute("viewBox").value());
    const bool hasView = view.size() == 4;
    const auto length = [&](const char *name, size_t index) {
        return lengthOf(root_.attribute(name).value()).value_or(hasView ? view[index] * *lengthOf("1") : 0);
    };
    const double width = length("width", 2), height = length("height", 3);
    const bool isPage = width > 0 && height > 0 && (!hasView || (view[2] > 0 && view[3] > 0));
    if (!isPage) throw Unreadable("its page has no size; give it a width and a height");
    if (!(width <= kLargestPage && height <= kLargestPage))
        throw Unreadable("its page is larger than a kilometre; make it smaller");
    page_ = {{0, 0}, {width, height}};
    const double x = hasView ? view[0] : 0, y = hasView ? view[1] : 0;
    const double across = hasView ? width / view[2] : *lengthOf("1"), up = hasView ? height / view[3] : *lengthOf("1");
    toPage_ = {across, 0, 0, -up, -x * across, height + y * up};
}

pugi::xml_node SvgDocument::named(std::string_view name) const {
    const auto found = named_.find(name);
    return found == named_.end() ? pugi::xml_node() : found->second;
}

pugi::xml_node SvgDocument::target(pugi::xml_node use) const { return named(reference(use)); }

std::optional<SvgDocument::Gradient> SvgDocument::gradient(std::string_view name) const {
    pugi::xml_node node = named(name);
    if (!std::string_view(node.name()).ends_with("Gradient")) return {};
    if (!node.child("stop")) node = target(node);
    Gradient gradient{0xFFFFFF, true};
    for (const pugi::xml_node stop : node.children("stop")) {
        if (isPaperColour(gradient.colour)) gradient.colour = paintOf(stopProperty(stop, "stop-color")).colour;
        std::string_view opacity = stopProperty(stop, "stop-opacity");
        gradient.isOpaque = gradient.isOpaque && takeNumber(opacity).value_or(1) > 0.95;
    }
    return gradient;
}

bool isPaperColour(uint32_t colour) {
    const double red = colour >> 16 & 255, green = colour >> 8 & 255, blue = colour & 255;
    return 0.299 * red + 0.587 * green + 0.114 * blue > kPaper; // ITU-R BT.601
}

} // namespace strokes
