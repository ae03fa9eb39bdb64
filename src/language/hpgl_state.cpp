// HP-GL: the state at a place in a plot, as instructions. Settings come first, in the order in which they were made; then,
// in the units that are in effect by now, the window, the polygon buffer and the pen. What is to follow may be in the middle
// of anything that instructions can be between: a polygon's definition, a dashed line, a text with a line end to come.
#include "language/hpgl_handlers.h"
#include "language/hpgl_instructions.h"
#include "language/number_text.h"

#include <cmath>

namespace language::hpgl {

namespace {

std::string textOf(std::string_view name, Numbers numbers) {
    std::string text(name);
    for (size_t i = 0; i < numbers.size(); ++i) {
        if (i > 0) text += ',';
        appendNumber(text, numbers[i]);
    }
    return text += ';';
}

/// Writes instructions for places, in user units.
class Writer {
public:
    Writer(const Plotter &plotter, std::string &text) : p_(plotter), text_(text) {}

    void state() {
        begin();
        if (p_.pens.chosen) add("SP", {static_cast<double>(p_.pens.selected)});
        lineType();
        terminator();
        if (p_.window) window(*p_.window);
        if (p_.defining || (p_.defines && !p_.polygon.ends().empty())) polygon();
        if (p_.defining)
            text_ += p_.down ? "PD;" : "PU;";
        else
            place();
        if (p_.down && !p_.defining) lower();
        if (p_.lettering.symbol != 0) text_ += {'S', 'M', static_cast<char>(p_.lettering.symbol), ';'};
        if (p_.relative) text_ += "PR;";
    }

private:
    void add(std::string_view name, std::initializer_list<double> numbers) {
        text_ += textOf(name, Numbers(numbers.begin(), numbers.size()));
    }

    void go(std::string_view name, Point to) {
        const Point user = p_.frame.toUser(to);
        add(name, {user.x, user.y});
    }

    /// A plot that does not initialize may meet the plotter in this very state.
    void begin() {
        text_ += p_.initialized ? "IN;" : "PU;PA;";
        if (!p_.initialized && p_.lettering.symbol != 0) text_ += "SM;";
        p_.settings.append(text_);
    }

    void lineType() {
        const Lines &l = p_.lines;
        const bool own = l.millimetres || l.length != Lines().length;
        const auto type = static_cast<double>(l.type);
        if (l.millimetres)
            add("LT", {type, l.length, 1});
        else if (own)
            add("LT", {type, l.length});
        else if (l.kind != Lines::Solid)
            add("LT", {type});
        if (own && l.kind == Lines::Solid) text_ += "LT;";
    }

    void terminator() {
        const Lettering &l = p_.lettering;
        if (l.terminator == Lettering::kEtx && !l.printsTerminator) return;
        text_ += {'D', 'T', static_cast<char>(l.terminator)};
        text_ += l.printsTerminator ? ",0;" : ";";
    }

    void window(const Rectangle &r) {
        const Point lower = p_.frame.toUser(r.lower), upper = p_.frame.toUser(r.upper);
        add("IW", {lower.x, lower.y, upper.x, upper.y});
    }

    /// All contours; PM0 makes a vertex of the place where the pen is. Of a definition, as far as it has come.
    void polygon() {
        const auto ends = p_.polygon.ends();
        const auto points = p_.defining ? p_.polygon.points() : p_.polygon.points().first(ends.back());
        go("PU", points.empty() ? p_.at : points.front());
        text_ += "PM0;";
        auto end = ends.begin();
        for (size_t i = 1; i < points.size(); ++i) {
            if (end != ends.end() && *end == i) {
                text_ += "PM1;";
                ++end;
            }
            go(p_.polygon.edge(i) ? "PD" : "PU", points[i]);
        }
        if (!p_.defining) {
            text_ += "PM2;";
        } else if (!p_.polygon.open()) {
            if (!points.empty()) text_ += "PM1;";
            go("PU", p_.at); // a contour of one vertex is dropped
            text_ += "PM1;";
        }
    }

    /// With the pen up. A text that was begun goes on: a carriage return leads to where the last move did.
    void place() {
        const auto columns = p_.at == p_.lettering.lineStart ? std::nullopt : columnsWritten(p_);
        go("PU", columns ? p_.lettering.lineStart : p_.at);
        if (columns) add("CP", {*columns, 0});
    }

    /// The pen goes down where it is. To do so without a dot, and some way into a pattern, it comes from a line that a
    /// window hides, a dot wide and farthest away.
    void lower() {
        const double phase = p_.carriage.lineType().kind == LineType::Fixed ? p_.carriage.phase() : 0;
        if (p_.carriage.touched() && phase == 0) {
            text_ += "PD;";
            return;
        }
        const Rectangle area = p_.frame.area();
        const bool left = p_.at.x > (area.lower.x + area.upper.x) / 2;
        window(left ? Rectangle{area.lower, {area.lower.x + 1, area.lower.y + 1}}
                    : Rectangle{{area.upper.x - 1, area.upper.y - 1}, area.upper});
        if (phase > 0) go("PU", {p_.at.x + (left ? phase : -phase), p_.at.y});
        text_ += "PD;";
        if (phase > 0) go("PD", p_.at);
        if (p_.window)
            window(*p_.window);
        else
            text_ += "IW;";
    }

    const Plotter &p_;
    std::string &text_;
};

} // namespace

void keepSetting(Plotter &p, const Instruction &instruction, Numbers n) {
    if (instruction.kept == Kept::Corners && p.frame.turned() && (n.empty() || instruction.name == "IR")) {
        // Of the area as it lay then: it may lie otherwise by the time that this is repeated.
        const Point p1 = p.frame.p1(), p2 = p.frame.p2();
        p.settings.drop(instruction.replaced, KeptSettings::kWhole);
        const double corners[] = {p1.x, p1.y, p2.x, p2.y};
        return p.settings.keep(instruction.name, KeptSettings::kWhole, textOf("IP", corners));
    }
    double part = KeptSettings::kWhole;
    if (instruction.kept == Kept::ByFirst && !n.empty()) part = std::floor(std::abs(n[0]));
    if (instruction.kept == Kept::BySecond && n.size() > 1) part = std::floor(std::abs(n[1]));
    if (instruction.kept == Kept::Corners && n.size() == 2) part = 2;
    if (!instruction.replaced.empty()) p.settings.drop(instruction.replaced, part);
    p.settings.keep(instruction.name, part, textOf(instruction.name, n));
}

void appendState(const Plotter &plotter, std::string &text) { Writer(plotter, text).state(); }

bool stateCarriesAll(const Plotter &p) {
    const bool text = p.at == p.lettering.lineStart || (!p.defining && columnsWritten(p));
    const bool polygon = !p.defining || !p.polygon.open() || p.polygon.points().back() == p.at;
    const bool dashes = p.pens.selected != 0 || p.carriage.phase() == 0;
    return text && polygon && dashes && p.lettering.column == 0 && p.settings.complete();
}

} // namespace language::hpgl
