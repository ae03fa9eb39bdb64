#include "language/hpgl_instructions.h"

#include "language/hpgl_handlers.h"

#include <array>

namespace language::hpgl {

namespace {

constexpr Instruction kInstructions[] = {
    {"IN", initializeInstruction},
    {"DF", setDefaults, 0, 0},
    {"IP", scalingPoints, 0, 4},
    {"IR", relativeScalingPoints, 0, 4},
    {"SC", scale, 0, 7},
    {"IW", inputWindow, 0, 4},
    {"RO", rotateCoordinates, 0, 1},

    {"SP", selectPen, 0, 1},
    {"PW", penWidth, 0, 2},
    {"WU", widthUnit, 0, 1},
    {"VS", velocity, 0, 2},
    {"LT", lineType, 0, 3},
    {"UL", userLineType, 0, LineType::kMaxParts + 1},

    {.name = "PA", .handler = plotAbsolute, .form = Form::Groups},
    {.name = "PR", .handler = plotRelative, .form = Form::Groups},
    {.name = "PU", .handler = penUp, .form = Form::Groups},
    {.name = "PD", .handler = penDown, .form = Form::Groups},
    {.name = "PE", .form = Form::Polyline},
    {.name = "SM", .form = Form::Symbol},
    {"TL", tickLength, 0, 2},
    {"XT", xTick, 0, 0, true},
    {"YT", yTick, 0, 0, true},

    {"AA", arcAbsolute, 3, 4},
    {"AR", arcRelative, 3, 4},
    {"AT", arcThroughAbsolute, 4, 5},
    {"RT", arcThroughRelative, 4, 5},
    {.name = "BZ", .handler = curveAbsolute, .form = Form::Groups, .group = 6},
    {.name = "BR", .handler = curveRelative, .form = Form::Groups, .group = 6},
    {"CI", circle, 1, 2},
    {"CT", chordTolerance, 0, 1},

    {"PM", polygonMode, 0, 1},
    {"EP", edgePolygon, 0, 0, true},
    {"FP", fillPolygon, 0, 1, true},
    {"FT", fillType, 0, 3},
    {"EA", edgeRectangleAbsolute, 2, 2, true},
    {"ER", edgeRectangleRelative, 2, 2, true},
    {"RA", fillRectangleAbsolute, 2, 2, true},
    {"RR", fillRectangleRelative, 2, 2, true},
    {"EW", edgeWedge, 3, 4, true},
    {"WG", fillWedge, 3, 4, true},

    {.name = "LB", .draws = true, .form = Form::Label},
    {.name = "UC", .draws = true, .form = Form::Strokes},
    {.name = "DT", .form = Form::Terminator},
    {"SI", absoluteSize, 0, 2},
    {"SR", relativeSize, 0, 2},
    {"DI", absoluteDirection, 0, 2},
    {"DR", relativeDirection, 0, 2},
    {"SL", slant, 0, 1},
    {"ES", extraSpace, 0, 2},
    {"LO", labelOrigin, 0, 1},
    {"CP", characterPlot, 0, 2, true},

    // Texts that are not drawn: the label buffer, the display, messages and comments.
    {.name = "BL", .form = Form::Text},
    {.name = "WD", .form = Form::Text},
    {.name = "BP", .form = Form::Remark},
    {.name = "CO", .form = Form::Comment},
    {.name = "MG", .form = Form::Remark},

    // Questions.
    {.name = "OA", .form = Form::Request},
    {.name = "OC", .form = Form::Request},
    {.name = "OD", .form = Form::Request},
    {.name = "OE", .form = Form::Request},
    {.name = "OF", .form = Form::Request},
    {.name = "OG", .form = Form::Request},
    {.name = "OH", .form = Form::Request},
    {.name = "OI", .form = Form::Request},
    {.name = "OK", .form = Form::Request},
    {.name = "OL", .form = Form::Request},
    {.name = "OO", .form = Form::Request},
    {.name = "OP", .form = Form::Request},
    {.name = "OS", .form = Form::Request},
    {.name = "OT", .form = Form::Request},
    {.name = "OW", .form = Form::Request},

    // Paper, pen handling and speed.
    {"AF"},
    {"AH"},
    {"AP"},
    {"AS"},
    {"EC"},
    {"FR"},
    {"FS"},
    {"MT"},
    {"NP"},
    {"NR"},
    {"PB"},
    {"PC"},
    {"PG"},
    {"PS"},
    {"PT"},
    {"QL"},
    {"RP"},
    {"SG"},
    {"ST"},
    {"VA"},
    {"VN"},

    // How lines end and fills overlap, colours and patterns.
    {"AC"},
    {"CR"},
    {"CV"},
    {"LA"},
    {"MC"},
    {"PP"},
    {"RF"},
    {"SV"},
    {"TR"},

    // Fonts and character sets.
    {"AD"},
    {"CA"},
    {"CC"},
    {"CF"},
    {"CM"},
    {"CS"},
    {"DL"},
    {"DS"},
    {"DV"},
    {"FI"},
    {"FN"},
    {"IV"},
    {"LM"},
    {"SA"},
    {"SB"},
    {"SD"},
    {"SS"},
    {"TD"},

    // Digitizing, masks, memory and keys.
    {"DC"},
    {"DP"},
    {"GC"},
    {"GM"},
    {"IM"},
    {"KY"},
};

constexpr size_t kLetters = 26;

constexpr auto kIndex = [] {
    std::array<uint8_t, kLetters * kLetters> index{};
    static_assert(std::size(kInstructions) < 255);
    for (size_t i = 0; i < std::size(kInstructions); ++i) {
        const std::string_view name = kInstructions[i].name;
        index[static_cast<size_t>(name[0] - 'A') * kLetters + static_cast<size_t>(name[1] - 'A')] =
            static_cast<uint8_t>(i + 1);
    }
    return index;
}();

constexpr bool eachOnce() {
    size_t used = 0;
    for (uint8_t entry : kIndex)
        used += entry != 0;
    return used == std::size(kInstructions);
}

} // namespace

const Instruction *findInstruction(unsigned char first, unsigned char second) noexcept {
    const size_t one = (first | 0x20u) - 'a';
    const size_t two = (second | 0x20u) - 'a';
    if (one >= kLetters || two >= kLetters) return nullptr;
    const uint8_t entry = kIndex[one * kLetters + two];
    return entry == 0 ? nullptr : &kInstructions[entry - 1];
}

static_assert(eachOnce(), "a mnemonic stands in the table twice");

} // namespace language::hpgl
