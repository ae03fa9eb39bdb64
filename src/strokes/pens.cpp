#include "strokes/pens.h"

#include <algorithm>
#include <charconv>
#include <iterator>
#include <limits>
#include <map>
#include <stdexcept>

namespace strokes {

namespace {

constexpr int kMostPens = 255;

/// Values: CSS Color Module Level 3, section 4.3.
constexpr struct {
    std::string_view name;
    uint32_t colour;
} kColours[] = {
    {"black", 0x000000},  {"silver", 0xC0C0C0}, {"gray", 0x808080},   {"grey", 0x808080},      {"white", 0xFFFFFF},
    {"maroon", 0x800000}, {"red", 0xFF0000},    {"purple", 0x800080}, {"fuchsia", 0xFF00FF},   {"magenta", 0xFF00FF},
    {"green", 0x008000},  {"lime", 0x00FF00},   {"olive", 0x808000},  {"yellow", 0xFFFF00},    {"navy", 0x000080},
    {"blue", 0x0000FF},   {"teal", 0x008080},   {"aqua", 0x00FFFF},   {"cyan", 0x00FFFF},      {"orange", 0xFFA500},
    {"brown", 0xA52A2A},  {"pink", 0xFFC0CB},   {"violet", 0xEE82EE}, {"turquoise", 0x40E0D0},
};

/// The whole text as a number; none when it is not one, or out of range.
std::optional<uint32_t> numberOf(std::string_view text, int base) {
    uint32_t value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value, base);
    const bool isWhole = error == std::errc() && end == text.data() + text.size();
    return isWhole ? std::optional(value) : std::nullopt;
}

std::optional<int> penOf(std::string_view text) {
    const std::optional<uint32_t> number = numberOf(text, 10);
    return number && *number >= 1 && *number <= kMostPens ? std::optional(static_cast<int>(*number)) : std::nullopt;
}

/// "#RGB", "#RRGGBB" or a name.
std::optional<uint32_t> colourOf(std::string_view text) {
    if (text.substr(0, 1) != "#") {
        const auto *row = std::ranges::find(kColours, text, [](const auto &r) { return r.name; });
        return row == std::end(kColours) ? std::nullopt : std::optional(row->colour);
    }
    std::string digits(text.substr(1));
    if (digits.size() == 3) digits = {digits[0], digits[0], digits[1], digits[1], digits[2], digits[2]};
    return digits.size() == 6 ? numberOf(digits, 16) : std::nullopt;
}

PenRule parseRule(std::string_view text) {
    const size_t equals = std::min(text.find('='), text.size());
    const std::string_view left = text.substr(0, equals);
    const std::optional<int> pen = penOf(text.substr(std::min(equals + 1, text.size())));
    const std::optional<int> from = penOf(left);
    const std::optional<uint32_t> colour = from ? std::nullopt : colourOf(left);
    if (!pen || (!from && !colour)) {
        throw std::invalid_argument("\"" + std::string(text) + "\" is not COLOUR=PEN or PEN=PEN; write it as in black=1, " +
                                    "#00f=2 or 3=1, with pens from 1 to 255");
    }
    return {colour, from.value_or(0), *pen};
}

/// How far apart two colours are for the eye, which tells greens best and blues worst: squares of the differences, weighted
/// as the brightness of a television picture is (Rec. 601).
int64_t difference(uint32_t a, uint32_t b) {
    constexpr int kWeights[] = {114, 587, 299}; // blue, green, red
    int64_t sum = 0;
    for (int weight : kWeights) {
        const int part = static_cast<int>(a & 0xFF) - static_cast<int>(b & 0xFF);
        sum += int64_t{weight} * part * part;
        a >>= 8;
        b >>= 8;
    }
    return sum;
}

/// The pens of colours, as they are handed out.
class Carousel {
public:
    Carousel(const std::vector<PenRule> &rules, int size, const PenColours &taken) : size_(size) {
        for (const PenRule &rule : rules) {
            if (rule.colour) slots_.push_back(rule);
        }
        isOpen_ = slots_.empty();
        for (const auto &[pen, colour] : isOpen_ ? taken : PenColours())
            slots_.push_back({.colour = colour, .pen = pen});
        for (const PenRule &slot : slots_)
            pens_.emplace(*slot.colour, slot.pen);
    }

    int penOf(uint32_t colour) {
        const auto known = pens_.find(colour);
        if (known != pens_.end()) return known->second;
        const int pen = isOpen_ && std::ssize(slots_) < size_ ? newPen(colour) : nearestPen(colour);
        pens_.emplace(colour, pen);
        return pen;
    }
    size_t strangers() const { return strangers_; }

private:
    int newPen(uint32_t colour) {
        const int pen = static_cast<int>(std::ssize(slots_)) + 1;
        slots_.push_back({.colour = colour, .pen = pen});
        return pen;
    }

    int nearestPen(uint32_t colour) {
        ++strangers_;
        return std::ranges::min_element(slots_, {}, [&](const PenRule &slot) { return difference(*slot.colour, colour); })
            ->pen;
    }

    int size_;
    bool isOpen_ = true;
    std::vector<PenRule> slots_;
    std::map<uint32_t, int> pens_; ///< of all colours so far
    size_t strangers_ = 0;         ///< those that had to take another's
};

} // namespace

std::vector<PenRule> parsePens(std::string_view text) {
    std::vector<PenRule> rules;
    while (true) {
        const size_t comma = text.find(',');
        rules.push_back(parseRule(text.substr(0, comma)));
        if (comma == std::string_view::npos) return rules;
        text.remove_prefix(comma + 1);
    }
}

void assignPens(Drawing &drawing, const std::vector<PenRule> &rules, int carousel, const PenColours &taken) {
    Carousel pens(rules, carousel, taken);
    for (Stroke &stroke : drawing.strokes)
        stroke.pen = pens.penOf(stroke.colour);
    if (const size_t count = pens.strangers()) {
        drawing.notes.push_back(std::to_string(count) + (count == 1 ? " colour has" : " colours have") +
                                " no pen, and the pen of the nearest colour draws in its place");
    }
}

PenColours coloursOf(const Drawing &drawing, const PenColours &taken) {
    PenColours colours;
    for (const Stroke &stroke : drawing.strokes) {
        const auto known = taken.find(stroke.pen);
        colours.try_emplace(stroke.pen, known == taken.end() ? stroke.colour : known->second);
    }
    return colours;
}

void exchangePens(Drawing &drawing, const std::vector<PenRule> &rules) {
    for (Stroke &stroke : drawing.strokes) {
        const auto rule = std::ranges::find(rules, stroke.pen, &PenRule::from);
        if (rule != rules.end()) stroke.pen = rule->pen;
    }
}

} // namespace strokes
