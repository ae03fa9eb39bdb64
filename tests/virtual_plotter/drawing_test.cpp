#include "language/stroke_font.h"
#include "virtual_plotter/drawing/sheet.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <tuple>
#include <vector>

namespace {

using namespace virtual_plotter;

std::vector<std::tuple<int, int, bool>> pointsOf(unsigned char character) {
    std::vector<std::tuple<int, int, bool>> points;
    for (const GlyphPoint &p : glyph(character))
        points.emplace_back(p.x, p.y, p.penDown);
    return points;
}

TEST(StrokeFont, EveryCharacterIsDrawnWithinItsCellAndLikeNoOther) {
    std::set<std::vector<std::tuple<int, int, bool>>> seen = {pointsOf(0x7F)};
    for (unsigned char c = '!'; c <= '~'; ++c) {
        const auto points = glyph(c);
        ASSERT_GE(points.size(), 2U) << c;
        EXPECT_FALSE(points.front().penDown) << c;
        for (size_t i = 0; i < points.size(); ++i) {
            EXPECT_TRUE(points[i].x >= 0 && points[i].x <= kAdvance - 7) << c << ": point " << i;
            EXPECT_TRUE(points[i].y >= -7 && points[i].y <= kCapHeight) << c << ": point " << i;
            // A stroke goes somewhere, and never stands still.
            if (points[i].penDown)
                EXPECT_TRUE(points[i].x != points[i - 1].x || points[i].y != points[i - 1].y) << c << ": point " << i;
            else
                EXPECT_TRUE(i + 1 < points.size() && points[i + 1].penDown) << c << ": point " << i;
        }
        EXPECT_TRUE(seen.insert(pointsOf(c)).second) << c;
    }
    EXPECT_TRUE(glyph(' ').empty());
}

TEST(Sheet, Sizes) {
    constexpr struct {
        const char *text;
        double width, height, areaWidth, areaHeight;
    } kSheetCases[] = {
        {"A4", 297, 210, 10900, 7650},        {"a4-portrait", 210, 297, 7650, 10900}, {"A3", 420, 297, 16158, 11040},
        {"a0", 1189, 841, 46760, 32840},      {"Letter", 279.4, 215.9, 10365, 7962},  {"297.5X100", 297.5, 100, 11100, 3200},
        {"10x20000", 10, 20000, 320, 799200}, // a narrow strip keeps most of its width
    };
    for (const auto &c : kSheetCases) {
        std::string error;
        const std::optional<Sheet> sheet = parseSheet(c.text, error);
        ASSERT_TRUE(sheet.has_value()) << c.text << ": " << error;
        EXPECT_EQ(sheet->width, c.width) << c.text;
        EXPECT_EQ(sheet->height, c.height) << c.text;
        EXPECT_EQ(sheet->hardClip.lower, Point()) << c.text;
        EXPECT_EQ(sheet->hardClip.upper, (Point{c.areaWidth, c.areaHeight})) << c.text;
        EXPECT_EQ(error, "") << c.text;
    }
}

TEST(Sheet, Refusals) {
    constexpr const char *kNoSheet = "use a0, a1, a2, a3, a4, letter, tabloid";
    constexpr const char *kSides = "each side must be 10 to 20000 millimetres long";
    const struct {
        const char *text, *error;
    } cases[] = {
        {"", kNoSheet},      {"a5", kNoSheet},        {"a4 ", kNoSheet},       {"297x", kNoSheet},
        {"x210", kNoSheet},  {"297x210mm", kNoSheet}, {"297 x 210", kNoSheet}, {"297x210-portrait", kNoSheet},
        {"9.9x100", kSides}, {"100x20001", kSides},   {"nanx100", kSides},     {"100xnan", kSides},
    };
    for (const auto &c : cases) {
        std::string error;
        EXPECT_FALSE(parseSheet(c.text, error).has_value()) << c.text;
        EXPECT_NE(error.find(c.error), std::string::npos) << c.text << ": " << error;
    }
}

} // namespace
