#include "strokes/svg_reader.h"

#include "strokes/svg_document.h"
#include "strokes/svg_path.h"
#include "strokes/svg_style.h"

#include <array>
#include <iterator>
#include <numeric>
#include <optional>
#include <string_view>

namespace strokes {

namespace {

constexpr int kDeepest = 400;  // groups and references; the recursion takes about 1 KiB a step
constexpr double kSeen = 0.05; // opacity; what has less is not seen on paper
constexpr double kOpaque = 0.95;

/// What is not plotted as it is.
enum class Left { Pictures, Masks, Gradients, Patterns, Filters, Numbers, Unknown, Count };

constexpr struct {
    const char *one, *many;
} kLeft[] = {
    {"picture is not plotted", "pictures are not plotted"},
    {"part with a soft mask is not plotted", "parts with soft masks are not plotted"},
    {"gradient is plotted in one colour", "gradients are plotted in one colour each"},
    {"pattern is not plotted", "patterns are not plotted"},
    {"part with a filter is not plotted", "parts with filters are not plotted"},
    {"shape with unusable numbers is not plotted", "shapes with unusable numbers are not plotted"},
    {"element of an unknown kind is not plotted", "elements of unknown kinds are not plotted"},
};
static_assert(std::size(kLeft) == static_cast<size_t>(Left::Count));

class LeftOut {
public:
    void add(Left what) { ++counts_[static_cast<size_t>(what)]; }

    bool isOnly(Left what) const {
        const size_t count = counts_[static_cast<size_t>(what)];
        return count > 0 && count == std::reduce(counts_.begin(), counts_.end());
    }

    void tell(std::vector<std::string> &notes) const {
        for (size_t i = 0; i < counts_.size(); ++i)
            if (counts_[i] > 0)
                notes.push_back(std::to_string(counts_[i]) + ' ' + (counts_[i] == 1 ? kLeft[i].one : kLeft[i].many));
    }

private:
    std::array<size_t, std::size(kLeft)> counts_{};
};

/// What is in force at an element.
struct State {
    Affine toPage;
    SvgStyle style;
    Clip clip = {};
    int depth = 0;
    bool isMask = false; ///< within one: its filter turns opacity to brightness, and is no more than that
};

/// What a clip path or a mask lets through.
struct Opening {
    std::vector<Contour> contours;
    FillRule rule = FillRule::NonZero;
    Clip clip;          ///< of the last shape
    double opacity = 1; ///< of the last shape
    size_t shapes = 0;
    bool isPlain = true; ///< of plainly filled shapes alone
};

class Reader {
public:
    Reader(const SvgDocument &document, const SvgOptions &options)
        : document_(document), painter_(document.page(), options.fill, options.hides, options.limits),
          mostElements_(options.limits.elements) {}

    void read() { children(document_.root(), {document_.toPage(), SvgStyle().of(document_.root())}); }

    void take(Drawing &drawing) {
        leftOut_.tell(drawing.notes);
        drawing.strokes = painter_.take(drawing.notes);
        drawing.isPicturesOnly = drawing.strokes.empty() && leftOut_.isOnly(Left::Pictures);
    }

private:
    using Draw = void (Reader::*)(pugi::xml_node element, const State &state);
    struct Kind {
        std::string_view name;
        Draw draw; ///< none for what is drawn only where it is referred to, or never
    };
    static const Kind kKinds[];

    void children(pugi::xml_node parent, const State &state);
    void element(pugi::xml_node element, const State &outer);
    std::optional<State> entered(pugi::xml_node element, const State &outer);
    bool clipAndMask(pugi::xml_node element, State &state);
    bool mask(pugi::xml_node element, State &state);
    bool clipWith(Region region, State &state);

    bool isPicture(pugi::xml_node element) const;
    std::optional<State> placed(pugi::xml_node use, const State &state) const;
    void use(pugi::xml_node element, const State &state);
    void picture(pugi::xml_node, const State &) { leftOut_.add(Left::Pictures); }
    void shape(pugi::xml_node element, const State &state);
    std::optional<std::vector<Contour>> contours(pugi::xml_node element, const State &state);
    void fill(const std::vector<Contour> &contours, const State &state, bool hasLine);
    std::optional<ShapePainter::Colour> colourOf(const Paint &paint, double opacity);

    void gather(pugi::xml_node element, const State &outer, Opening &opening);
    void gatherAll(pugi::xml_node parent, const State &state, Opening &opening);
    void gatherUse(pugi::xml_node element, const State &state, Opening &opening);
    void gatherShape(pugi::xml_node element, const State &state, Opening &opening);
    Region regionOf(const Opening &opening);

    const SvgDocument &document_;
    ShapePainter painter_;
    LeftOut leftOut_;
    size_t mostElements_, elements_ = 0;
};

constexpr Reader::Kind Reader::kKinds[] = {
    {"path", &Reader::shape},    {"g", &Reader::children}, {"use", &Reader::use}, {"rect", &Reader::shape},
    {"image", &Reader::picture}, {"defs", nullptr},        {"symbol", nullptr},   {"clipPath", nullptr},
    {"mask", nullptr},           {"pattern", nullptr},     {"filter", nullptr},   {"linearGradient", nullptr},
    {"radialGradient", nullptr}, {"metadata", nullptr},    {"title", nullptr},
};

// The recursion: as deep as kDeepest.
// NOLINTBEGIN(misc-no-recursion)
void Reader::children(pugi::xml_node parent, const State &state) {
    for (const pugi::xml_node child : parent.children())
        element(child, state);
}

void Reader::element(pugi::xml_node element, const State &outer) {
    const auto kind = std::find_if(std::begin(kKinds), std::end(kKinds),
                                   [name = std::string_view(element.name())](const Kind &row) { return row.name == name; });
    if (kind == std::end(kKinds) && element.type() == pugi::node_element) leftOut_.add(Left::Unknown);
    if (kind == std::end(kKinds) || !kind->draw) return;
    if (const auto state = entered(element, outer)) (this->*kind->draw)(element, *state);
}

/// What is in force within the element; nothing when nothing of it is plotted.
std::optional<State> Reader::entered(pugi::xml_node element, const State &outer) {
    if (++elements_ > mostElements_) throw Unreadable("it has millions of elements; plot it in parts");
    if (outer.depth == kDeepest) throw Unreadable("its groups are nested more than 400 deep; take groups apart");
    const auto map = transformOf(element.attribute("transform").value());
    if (!map) {
        leftOut_.add(Left::Numbers);
        return {};
    }
    State state{outer.toPage * *map, outer.style.of(element), outer.clip, outer.depth + 1, outer.isMask};
    if (!clipAndMask(element, state)) return {};
    return state;
}

bool Reader::clipAndMask(pugi::xml_node element, State &state) {
    if (const pugi::xml_node clip = document_.named(state.style.clip)) {
        Opening opening;
        gatherAll(clip, {state.toPage, state.style.of(clip), {}, state.depth}, opening);
        if (!clipWith(regionOf(opening), state)) return false;
    }
    if (!state.style.filter.empty() && !state.isMask) {
        leftOut_.add(isPicture(element) ? Left::Pictures : Left::Filters);
        return false;
    }
    return state.style.mask.empty() || mask(element, state);
}

/// A mask of one plain shape is a clip and an opacity: so cairo writes groups that are less than opaque.
bool Reader::mask(pugi::xml_node element, State &state) {
    Opening opening;
    if (const pugi::xml_node mask = document_.named(state.style.mask)) {
        gatherAll(mask, {state.toPage, {}, {}, state.depth, true}, opening);
    }
    if (opening.shapes != 1 || !opening.isPlain || isPicture(element)) {
        leftOut_.add(isPicture(element) ? Left::Pictures : Left::Masks);
        return false;
    }
    state.style.opacity *= opening.opacity;
    return clipWith(regionOf(opening), state);
}

/// False when nothing is left to be seen.
bool Reader::clipWith(Region region, State &state) {
    if (!region.isRectangle() || !region.box().holds(document_.page())) {
        state.clip = std::make_shared<const Region>(state.clip ? painter_.common(*state.clip, region) : std::move(region));
        return !state.clip->isEmpty();
    }
    return true;
}

std::optional<State> Reader::placed(pugi::xml_node use, const State &state) const {
    const double x = use.attribute("x").as_double(), y = use.attribute("y").as_double();
    if (!std::isfinite(x) || !std::isfinite(y)) return {};
    State placed = state;
    placed.toPage = state.toPage * Affine{1, 0, 0, 1, x, y};
    return placed;
}

bool Reader::isPicture(pugi::xml_node element) const {
    const pugi::xml_node what = std::string_view(element.name()) == "use" ? document_.target(element) : element;
    return std::string_view(what.name()) == "image";
}

void Reader::use(pugi::xml_node element, const State &state) {
    const pugi::xml_node target = document_.target(element);
    const auto place = placed(element, state);
    if (!place) return leftOut_.add(Left::Numbers);
    if (std::string_view(target.name()) == "symbol")
        children(target, *place);
    else if (target)
        this->element(target, *place);
}

void Reader::gather(pugi::xml_node element, const State &outer, Opening &opening) {
    const std::string_view name = element.name();
    const auto own = entered(element, outer);
    if (own && name == "g")
        gatherAll(element, *own, opening);
    else if (own && name == "use")
        gatherUse(element, *own, opening);
    else if (own && (name == "path" || name == "rect"))
        gatherShape(element, *own, opening);
    else
        opening.isPlain = false;
}

void Reader::gatherAll(pugi::xml_node parent, const State &state, Opening &opening) {
    for (const pugi::xml_node child : parent.children())
        gather(child, state, opening);
}

void Reader::gatherUse(pugi::xml_node element, const State &state, Opening &opening) {
    const pugi::xml_node target = document_.target(element);
    const auto place = placed(element, state);
    if (!place || !target)
        opening.isPlain = false;
    else if (std::string_view(target.name()) == "symbol")
        gatherAll(target, *place, opening);
    else
        gather(target, *place, opening);
}
// NOLINTEND(misc-no-recursion)

void Reader::gatherShape(pugi::xml_node element, const State &state, Opening &opening) {
    auto own = contours(element, state);
    const SvgStyle &style = state.style;
    const bool isPlain = own && style.fill.kind == Paint::Kind::Plain && style.line.kind == Paint::Kind::None;
    opening.isPlain = opening.isPlain && isPlain;
    opening.rule = state.isMask ? style.fillRule : style.clipRule;
    opening.clip = state.clip;
    opening.opacity = style.opacity * style.fillOpacity;
    ++opening.shapes;
    if (own) std::move(own->begin(), own->end(), std::back_inserter(opening.contours));
}

Region Reader::regionOf(const Opening &opening) {
    Region region(opening.contours, opening.rule);
    return opening.clip ? painter_.common(*opening.clip, region) : region;
}

std::optional<std::vector<Contour>> Reader::contours(pugi::xml_node element, const State &state) {
    auto result = std::string_view(element.name()) == "rect"
                      ? rectangleContours({element.attribute("x").as_double(), element.attribute("y").as_double()},
                                          element.attribute("width").as_double(), element.attribute("height").as_double(),
                                          state.toPage)
                      : contoursOf(element.attribute("d").value(), state.toPage);
    if (!result) leftOut_.add(Left::Numbers);
    return result;
}

/// Nothing when nothing of the paint is seen.
std::optional<ShapePainter::Colour> Reader::colourOf(const Paint &paint, double opacity) {
    if (paint.kind == Paint::Kind::None || opacity < kSeen) return {};
    const bool isOpaque = opacity > kOpaque;
    if (paint.kind == Paint::Kind::Plain) return ShapePainter::Colour{paint.colour, !isPaperColour(paint.colour), isOpaque};
    const auto gradient = document_.gradient(paint.server);
    if (gradient)
        leftOut_.add(Left::Gradients);
    else // cairo paints pictures so, too
        leftOut_.add(isPicture(document_.named(paint.server).first_child()) ? Left::Pictures : Left::Patterns);
    if (!gradient) return {};
    return ShapePainter::Colour{gradient->colour, !isPaperColour(gradient->colour), isOpaque && gradient->isOpaque};
}

void Reader::shape(pugi::xml_node element, const State &state) {
    auto own = contours(element, state);
    if (!own) return;
    const SvgStyle &style = state.style;
    const auto fill = colourOf(style.fill, style.opacity * style.fillOpacity);
    const auto line = colourOf(style.line, style.opacity * style.lineOpacity);
    const bool hasLine = line && line->isSeen;
    if (fill) painter_.area(*own, style.fillRule, state.clip, *fill, hasLine);
    if (!hasLine) return;
    if (style.isButt) std::erase_if(*own, [](const Contour &contour) { return boxOf(contour.points).isPoint(); });
    painter_.line(*own, style.dashes, state.toPage, state.clip, line->colour);
}

} // namespace

Drawing readSvg(std::string svg, const SvgOptions &options) {
    const SvgDocument document(std::move(svg));
    Reader reader(document, options);
    reader.read();
    Drawing drawing{.width = document.page().upper.x, .height = document.page().upper.y, .strokes = {}, .notes = {}};
    reader.take(drawing);
    return drawing;
}

} // namespace strokes
