// HP-GL: labels, in the stroked font.
#include "language/hpgl_handlers.h"

#include "language/stroke_font.h"

#include <cmath>

namespace language::hpgl {

namespace {

enum : unsigned char { kBackspace = 8, kTab = 9, kLineFeed = 10, kVerticalTab = 11, kReturn = 13 };
constexpr double kTabStop = 8; // columns

/// The sizes and directions of letters, in plotter units, that the attributes amount to.
struct Layout {
    Point along; // with up: unit vectors of the label
    Point up;
    double width; // of a capital
    double height;
    double advance; // to the next character; a cell is one and a half capitals wide and two high
    double lineHeight;
};

Layout layoutOf(const Plotter &p) {
    const Lettering &l = p.lettering;
    const Point size{p.frame.p2().x - p.frame.p1().x, p.frame.p2().y - p.frame.p1().y};
    const Point run = l.relativeDirection ? Point{l.direction.x * size.x, l.direction.y * size.y} : l.direction;
    const double length = std::hypot(run.x, run.y);
    Layout layout{};
    layout.along = {run.x / length, run.y / length};
    layout.up = {-layout.along.y, layout.along.x};
    layout.width = l.relativeSize ? l.width / 100 * size.x : l.width;
    layout.height = l.relativeSize ? l.height / 100 * size.y : l.height;
    layout.advance = 1.5 * layout.width * (1 + l.extra.x);
    layout.lineHeight = 2 * layout.height * (1 + l.extra.y);
    return layout;
}

Point offset(const Layout &layout, Point from, double along, double up) {
    return clamped(
        Point{from.x + along * layout.along.x + up * layout.up.x, from.y + along * layout.along.y + up * layout.up.y});
}

void drawCharacter(Plotter &p, const Layout &layout, unsigned char character, Point origin) {
    const double x = 1.5 * layout.width / kAdvance;
    const double y = layout.height / kCapHeight;
    for (const GlyphPoint &g : glyph(character)) {
        const Point to = p.frame.toSheet(offset(layout, origin, g.x * x + g.y * y * p.lettering.slant, g.y * y));
        if (g.penDown)
            p.carriage.strokeTo(to);
        else
            p.carriage.moveTo(to);
    }
}

/// Where a line of characters begins in relation to the pen. Origins go up in columns: 1, 2, 3 hold the pen at the left,
/// 4, 5, 6 in the middle, 7, 8, 9 at the right, each at the foot, half way up and at the top; 11 to 19 keep a distance.
Point originOffset(const Layout &layout, int origin, double width) {
    const bool apart = origin > 10;
    const int place = (apart ? origin - 10 : origin) - 1;
    const int columns = place / 3;
    const int rows = place % 3;
    const double column = 0.5 * columns;
    const double row = 0.5 * rows;
    Point result{-column * width, -row * layout.height};
    if (apart) {
        result.x += (0.5 - column) * layout.width;
        result.y += (0.5 - row) * layout.height;
    }
    return result;
}

void flushLine(Plotter &p) {
    Lettering &l = p.lettering;
    if (l.length == 0) return;
    const Layout layout = layoutOf(p);
    const double count = static_cast<double>(l.length);
    const Point shift = originOffset(layout, l.origin, (count - 1) * layout.advance + layout.width);
    Point place = offset(layout, p.at, shift.x, shift.y);
    for (size_t i = 0; i < l.length; ++i) {
        drawCharacter(p, layout, l.line[i], place);
        place = offset(layout, place, layout.advance, 0);
    }
    const bool leftBound = l.origin % 10 <= 3;
    if (leftBound) p.at = offset(layout, p.at, count * layout.advance, 0);
    l.length = 0;
}

void control(Plotter &p, unsigned char character) {
    Lettering &l = p.lettering;
    const Layout layout = layoutOf(p);
    auto feed = [&](double lines) {
        p.at = offset(layout, p.at, 0, -lines * layout.lineHeight);
        l.lineStart = offset(layout, l.lineStart, 0, -lines * layout.lineHeight);
    };
    auto space = [&](double columns) {
        p.at = offset(layout, p.at, columns * layout.advance, 0);
        l.column += columns;
    };
    switch (character) {
    case kBackspace: space(-1); break;
    case kTab: space(kTabStop - (l.column - std::floor(l.column / kTabStop) * kTabStop)); break;
    case kLineFeed: feed(1); break;
    case kVerticalTab: feed(-1); break;
    case kReturn:
        p.at = l.lineStart;
        l.column = 0;
        break;
    default: break; // all others change character sets, or do nothing
    }
}

bool setDirection(Plotter &p, Numbers n, bool relative) {
    const Point direction = n.empty() ? Point{1, 0} : Point{n[0], n[1]};
    if (direction == Point{}) return false;
    p.lettering.direction = direction;
    p.lettering.relativeDirection = relative;
    p.lettering.lineStart = p.at;
    return true;
}

} // namespace

void label(Plotter &p, unsigned char character) {
    Lettering &l = p.lettering;
    if (character < ' ') {
        flushLine(p);
        control(p, character);
        return;
    }
    l.column += 1;
    if (l.origin != 1) {
        l.line[l.length++] = character;
        if (l.length == l.line.size()) flushLine(p);
        return;
    }
    const Layout layout = layoutOf(p);
    drawCharacter(p, layout, character, p.at);
    p.at = offset(layout, p.at, layout.advance, 0);
}

void endLabel(Plotter &p) {
    flushLine(p);
    p.lettering.column = 0;
    p.resume();
}

void beginOwnCharacter(Plotter &p) {
    p.ownCharacter = {};
    p.ownCharacter.at = p.at;
    if (!p.defining) p.carriage.moveTo(p.frame.toSheet(p.at));
}

/// Steps on a grid of which a capital is 4 wide and 8 high. Numbers past the grid lower and lift the pen.
void ownCharacterNumber(Plotter &p, double number) {
    constexpr double kPenControl = 99, kColumns = 4, kRows = 8;
    OwnCharacter &c = p.ownCharacter;
    c.any = true;
    if (!c.x && std::abs(number) >= kPenControl) {
        c.down = number > 0;
    } else if (!c.x) {
        c.x = number;
    } else {
        const Layout layout = layoutOf(p);
        const double up = number * layout.height / kRows;
        c.at = offset(layout, c.at, *c.x * layout.width / kColumns + up * p.lettering.slant, up);
        c.x.reset();
        if (p.defining) return;
        if (c.down)
            p.carriage.strokeTo(p.frame.toSheet(c.at));
        else
            p.carriage.moveTo(p.frame.toSheet(c.at));
    }
}

bool endOwnCharacter(Plotter &p) {
    if (p.defining) return false;
    if (p.ownCharacter.any) {
        p.at = offset(layoutOf(p), p.at, layoutOf(p).advance, 0);
        p.lettering.column += 1;
    }
    p.resume();
    return !p.ownCharacter.x;
}

void drawSymbol(Plotter &p) {
    const Layout layout = layoutOf(p);
    drawCharacter(p, layout, p.lettering.symbol, offset(layout, p.at, -layout.width / 2, -layout.height / 2));
    p.resume();
}

std::optional<double> columnsWritten(const Plotter &p) {
    constexpr double kNear = 1e-4; // plotter units
    const Layout layout = layoutOf(p);
    const Point way{p.at.x - p.lettering.lineStart.x, p.at.y - p.lettering.lineStart.y};
    const double columns = (way.x * layout.along.x + way.y * layout.along.y) / layout.advance;
    const Point reached = offset(layout, p.lettering.lineStart, columns * layout.advance, 0);
    const bool near = std::hypot(reached.x - p.at.x, reached.y - p.at.y) < kNear; // not if there is no advance
    return near && std::abs(columns) < kLargest ? std::optional(columns) : std::nullopt;
}

bool absoluteSize(Plotter &p, Numbers n) {
    if (n.size() == 1) return false;
    if (n.empty()) {
        defaultLetters(p.lettering, p.carriage.hardClip());
        return true;
    }
    p.lettering.relativeSize = false;
    p.lettering.width = n[0] * 10 * kUnitsPerMillimetre;
    p.lettering.height = n[1] * 10 * kUnitsPerMillimetre;
    return true;
}

bool relativeSize(Plotter &p, Numbers n) {
    if (n.size() == 1) return false;
    p.lettering.relativeSize = true;
    p.lettering.width = n.empty() ? 0.75 : n[0];
    p.lettering.height = n.empty() ? 1.5 : n[1];
    return true;
}

bool absoluteDirection(Plotter &p, Numbers n) { return n.size() != 1 && setDirection(p, n, false); }
bool relativeDirection(Plotter &p, Numbers n) { return n.size() != 1 && setDirection(p, n, true); }

bool slant(Plotter &p, Numbers n) {
    p.lettering.slant = n.empty() ? 0 : n[0];
    return true;
}

bool extraSpace(Plotter &p, Numbers n) {
    p.lettering.extra = {n.empty() ? 0 : n[0], n.size() > 1 ? n[1] : 0};
    return true;
}

bool labelOrigin(Plotter &p, Numbers n) {
    int origin = n.empty() ? 1 : static_cast<int>(n[0]);
    if (origin == 21) origin = 1; // as another language of such plotters has it: where a line of text begins
    if (origin < 1 || origin > 19 || origin == 10) return false;
    p.lettering.origin = origin;
    return true;
}

bool characterPlot(Plotter &p, Numbers n) {
    if (n.size() == 1) return false;
    if (n.empty()) {
        control(p, kReturn);
        control(p, kLineFeed);
    } else {
        const Layout layout = layoutOf(p);
        p.at = offset(layout, p.at, n[0] * layout.advance, n[1] * layout.lineHeight);
        p.lettering.lineStart = offset(layout, p.lettering.lineStart, 0, n[1] * layout.lineHeight);
    }
    p.resume();
    return true;
}

} // namespace language::hpgl
