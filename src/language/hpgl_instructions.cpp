#include "language/hpgl_instructions.h"

#include "language/hpgl_handlers.h"

#include <array>

namespace language::hpgl {

namespace {

constexpr Instruction setting(Instruction instruction, Kept kept = Kept::Whole, std::string_view replaced = {}) {
    instruction.kept = kept;
    instruction.replaced = replaced;
    return instruction;
}

constexpr Instruction kInstructions[] = {
    {"IN", initializeInstruction, 0, 24},
    setting({"DF", setDefaults, 0, 0}),
    setting({"IP", scalingPoints, 0, 4}, Kept::Corners, "IR"),
    setting({"IR", relativeScalingPoints, 0, 4}, Kept::Corners, "IP"),
    setting({"SC", scale, 0, 7}),
    {"IW", inputWindow, 0, 4},
    setting({"RO", rotateCoordinates, 0, 1}),

    {"SP", selectPen, 0, 1},
    setting({"PW", penWidth, 0, 2}, Kept::BySecond),
    setting({"WU", widthUnit, 0, 1}, Kept::Whole, "PW"),
    setting({"VS", velocity, 0, 2}, Kept::BySecond),
    {"LT", lineType, 0, 3},
    setting({"UL", userLineType, 0, LineType::kMaxParts + 1}, Kept::ByFirst),

    {.name = "PA", .handler = plotAbsolute, .form = Form::Groups},
    {.name = "PR", .handler = plotRelative, .form = Form::Groups},
    {.name = "PU", .handler = penUp, .form = Form::Groups},
    {.name = "PD", .handler = penDown, .form = Form::Groups},
    {.name = "PE", .form = Form::Polyline},
    {.name = "SM", .form = Form::Symbol},
    setting({"TL", tickLength, 0, 2}),
    {"XT", xTick, 0, 0, true},
    {"YT", yTick, 0, 0, true},

    {"AA", arcAbsolute, 3, 4},
    {"AR", arcRelative, 3, 4},
    {"AT", arcThroughAbsolute, 4, 5},
    {"RT", arcThroughRelative, 4, 5},
    {.name = "BZ", .handler = curveAbsolute, .form = Form::Groups, .group = 6},
    {.name = "BR", .handler = curveRelative, .form = Form::Groups, .group = 6},
    {"CI", circle, 1, 2},
    setting({"CT", chordTolerance, 0, 1}),

    {"PM", polygonMode, 0, 1},
    {"EP", edgePolygon, 0, 0, true},
    {"FP", fillPolygon, 0, 1, true},
    setting({"FT", fillType, 0, 3}),
    {"EA", edgeRectangleAbsolute, 2, 2, true},
    {"ER", edgeRectangleRelative, 2, 2, true},
    {"RA", fillRectangleAbsolute, 2, 2, true},
    {"RR", fillRectangleRelative, 2, 2, true},
    {"EW", edgeWedge, 3, 4, true},
    {"WG", fillWedge, 3, 4, true},

    {.name = "LB", .draws = true, .form = Form::Label},
    {.name = "UC", .draws = true, .form = Form::Strokes},
    {.name = "DT", .form = Form::Terminator},
    setting({"SI", absoluteSize, 0, 2}, Kept::Whole, "SR"),
    setting({"SR", relativeSize, 0, 2}, Kept::Whole, "SI"),
    setting({"DI", absoluteDirection, 0, 2}, Kept::Whole, "DR"),
    setting({"DR", relativeDirection, 0, 2}, Kept::Whole, "DI"),
    setting({"SL", slant, 0, 1}),
    setting({"ES", extraSpace, 0, 2}),
    setting({"LO", labelOrigin, 0, 1}),
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

    // Paper, pen handling and speed. What advances the paper, waits for someone or draws again is no setting.
    {"AF"},
    {"AH"},
    setting({"AP"}),
    setting({"AS"}, Kept::BySecond),
    setting({"EC"}),
    {"FR"},
    setting({"FS"}, Kept::BySecond),
    setting({"MT"}),
    setting({"NP"}),
    {"NR"},
    {"PB"},
    setting({"PC"}, Kept::ByFirst),
    {"PG"},
    setting({"PS"}),
    setting({"PT"}),
    setting({"QL"}),
    {"RP"},
    setting({"SG"}),
    {"ST"},
    setting({"VA"}, Kept::Whole, "VN"),
    setting({"VN"}, Kept::Whole, "VA"),

    // How lines end and fills overlap, colours and patterns.
    setting({"AC"}),
    setting({"CR"}),
    setting({"CV"}),
    setting({"LA"}, Kept::ByFirst),
    setting({"MC"}),
    setting({"PP"}),
    setting({"RF"}, Kept::ByFirst),
    setting({"SV"}),
    setting({"TR"}),

    // Fonts and character sets.
    setting({"AD"}, Kept::ByFirst),
    setting({"CA"}),
    setting({"CC"}),
    setting({"CF"}),
    setting({"CM"}),
    setting({"CS"}),
    setting({"DL"}, Kept::ByFirst),
    setting({"DS"}, Kept::ByFirst),
    setting({"DV"}),
    setting({"FI"}, Kept::Whole, "FN"),
    setting({"FN"}, Kept::Whole, "FI"),
    setting({"IV"}),
    setting({"LM"}),
    setting({"SA"}, Kept::Whole, "SS"),
    setting({"SB"}),
    setting({"SD"}, Kept::ByFirst),
    setting({"SS"}, Kept::Whole, "SA"),
    setting({"TD"}),

    // Digitizing, masks, memory and keys.
    {"DC"},
    {"DP"},
    {"GC"},
    setting({"GM"}),
    setting({"IM"}),
    setting({"KY"}, Kept::ByFirst),
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
