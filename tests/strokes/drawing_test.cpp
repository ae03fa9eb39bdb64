// What is done to strokes on their way: pens, place, order.
#include "strokes/order.h"
#include "strokes/pens.h"
#include "strokes/place.h"
#include "strokes/simplify.h"

#include <gtest/gtest.h>

#include <random>

namespace strokes {

namespace {

using Points = std::vector<Point>;
using Turn = Placement::Turn;

Drawing drawingOf(std::vector<Points> lines) {
    Drawing drawing;
    for (Points &points : lines)
        drawing.strokes.push_back({.points = std::move(points)});
    return drawing;
}

TEST(Pens, ByAppearanceByRuleAndByTheNearestColour) {
    struct {
        const char *rules;
        int carousel;
        std::vector<uint32_t> colours;
        std::vector<int> pens;
        size_t notes;
        PenColours taken = {};
    } cases[] = {
        {"", 8, {0x123456, 0xFF, 0x123456}, {1, 2, 1}, 0},
        {"", 3, {0xFF0000, 0x123456, 0xFF, 0xFE}, {2, 3, 1, 1}, 1, {{1, 0xFF}, {2, 0xFF0000}}},
        {"", 2, {0x000000, 0x00FF00, 0x008000, 0x202020}, {1, 2, 2, 1}, 1},
        {"black=3,red=7,#00f=1", 8, {0xFF, 0, 0xFF0000, 0xD01010}, {1, 3, 7, 7}, 1},
    };
    for (const auto &c : cases) {
        Drawing drawing;
        for (uint32_t colour : c.colours)
            drawing.strokes.push_back({.colour = colour, .points = {{}}});
        assignPens(drawing, *c.rules ? parsePens(c.rules) : std::vector<PenRule>{}, c.carousel, c.taken);
        for (size_t i = 0; i < c.pens.size(); ++i)
            EXPECT_EQ(drawing.strokes[i].pen, c.pens[i]) << c.rules << " " << i;
        EXPECT_EQ(drawing.notes.size(), c.notes);
    }
    for (const char *wrong :
         {"", "black", "black=", "=1", "blak=1", "#12345=1", "#-12=1", "1=0", "1=256", "red=1,", "red=1 "})
        EXPECT_THROW(parsePens(wrong), std::invalid_argument) << wrong;
}

TEST(Place, PutsTheDrawingWhereItIsSaid) {
    // A line from 10, 20 to 40, 30 on an area of 100 x 200 that begins 5, 5 from the paper's edges.
    constexpr Placement kAsIs{.paper = {{-5, -5}, {105, 205}}, .area = {{0, 0}, {100, 200}}, .at = {}};
    auto with = [&](auto change) {
        Placement placement = kAsIs;
        change(placement);
        return placement;
    };
    struct {
        Placement placement;
        bool hasPage;
        Points line;
    } cases[] = {
        {kAsIs, false, {{10, 20}, {40, 30}}},
        {kAsIs, true, {{5, 15}, {35, 25}}},
        {with([](Placement &p) { p.isMirrored = true; }), false, {{40, 20}, {10, 30}}},
        {with([](Placement &p) { p.turn = Turn::Quarter; }), false, {{20, 20}, {10, 50}}},
        {with([](Placement &p) { p.turn = Turn::Quarter, p.isMirrored = true; }), false, {{20, 50}, {10, 20}}},
        {with([](Placement &p) { p.turn = Turn::ThreeQuarters; }), true, {{15, 85}, {25, 55}}}, // the page is 100 wide
        {with([](Placement &p) { p.scale = 2, p.turn = Turn::Half; }), false, {{70, 40}, {10, 20}}},
        {with([](Placement &p) { p.isCentred = true; }), false, {{35, 95}, {65, 105}}},
        {with([](Placement &p) {
             p.at = {0, 1};
         }),
         false,
         {{0, 1}, {30, 11}}},
        {with([](Placement &p) { p.isFitted = true, p.turn = Turn::Automatic; }), false, {{80, 10}, {20, 190}}},
        {with([](Placement &p) { p.turn = Turn::Automatic; }), false, {{10, 20}, {40, 30}}},
        {with([](Placement &p) { p.turn = Turn::Automatic, p.scale = 4; }), false, {{50, 20}, {10, 140}}},
    };
    cases[9].placement.area = {{0, 10}, {100, 190}};
    for (const auto &c : cases) {
        Drawing drawing = drawingOf({{{10, 20}, {40, 30}}});
        if (c.hasPage) drawing.width = 100, drawing.height = 50;
        place(drawing, c.placement);
        for (size_t i = 0; i < 2; ++i) {
            const Point p = drawing.strokes[0].points[i], wanted = c.line[i];
            EXPECT_LT(distance(p, wanted), 1e-9)
                << &c - cases << ": " << p.x << ", " << p.y << " for " << wanted.x << ", " << wanted.y;
        }
    }
}

TEST(Order, TakesTheNearestEndTurnsAndJoins) {
    Drawing drawing =
        drawingOf({{{50, 0}, {60, 0}}, {{30, 0}, {20.02, 0}}, {{10, 0}, {20, 0}}, {{49, 0}, {40, 0}}, {{0, 1}}});
    drawing.strokes[0].pen = 2;
    orderNearest(drawing);
    ASSERT_EQ(drawing.strokes.size(), 4U);
    EXPECT_EQ(drawing.strokes[0].pen, 2) << "which appears first";
    EXPECT_EQ(drawing.strokes[1].points, (Points{{49, 0}, {40, 0}}));
    EXPECT_EQ(drawing.strokes[2].points, (Points{{30, 0}, {20.02, 0}, {20, 0}, {10, 0}}));
    EXPECT_EQ(drawing.strokes[3].points, (Points{{0, 1}}));
}

TEST(Order, KeepsAllStrokesOfAStarAndTakesNoLongerWay) {
    std::mt19937 random(1);
    std::uniform_real_distribution<double> anywhere(-500, 500);
    Drawing drawing;
    for (int i = 0; i < 20'000; ++i) { // each end of the star would be looked for among all others at its place
        const Point end = {anywhere(random), anywhere(random)};
        drawing.strokes.push_back({.points = {i % 2 == 0 ? Point{} : Point{end.x + 1, end.y}, end}});
    }
    const Travel before = travelOf(drawing);
    orderNearest(drawing);
    EXPECT_NEAR(travelOf(drawing).down, before.down, 1e-3 * before.down);
    EXPECT_LT(travelOf(drawing).up, before.up / 10);
    const Travel nearest = travelOf(drawing);
    orderNearest(drawing);
    EXPECT_LE(travelOf(drawing).up, nearest.up + 1e-6);
}

double toSegment(Point p, Point a, Point b) {
    const double length = distance(a, b);
    if (length == 0) return distance(p, a);
    const double along = ((p.x - a.x) * (b.x - a.x) + (p.y - a.y) * (b.y - a.y)) / length / length;
    const double part = std::clamp(along, 0.0, 1.0);
    return distance(p, {a.x + part * (b.x - a.x), a.y + part * (b.y - a.y)});
}

TEST(Simplify, StaysWithinTheTolerance) {
    std::mt19937 random(1);
    std::uniform_real_distribution<double> step(-1, 1);
    Points line{{0, 0}};
    for (int i = 0; i < 20'000; ++i) // now and then back on itself
        line.push_back(
            {line.back().x + (i % 50 == 49 ? -3 : 0.3) * std::abs(step(random)), line.back().y + 0.05 * step(random)});
    Drawing drawing = drawingOf({line, {{5, 5}}, {{0, 0}, {1, 0}, {2, 0}, {2, 0}, {1, 0}}});
    simplify(drawing, 0.1);
    const Points &simple = drawing.strokes[0].points;
    EXPECT_LT(simple.size(), line.size() / 4);
    EXPECT_EQ(simple.back(), line.back());
    size_t at = 1;
    for (Point p : line) { // each is near the part that stands for it: parts come in the line's order
        while (at + 1 < simple.size() && toSegment(p, simple[at - 1], simple[at]) > 0.1 + 1e-9)
            ++at;
        ASSERT_LE(toSegment(p, simple[at - 1], simple[at]), 0.1 + 1e-9) << at;
    }
    EXPECT_EQ(drawing.strokes[1].points, (Points{{5, 5}}));
    EXPECT_EQ(drawing.strokes[2].points, (Points{{0, 0}, {2, 0}, {1, 0}}));
}

} // namespace

} // namespace strokes
