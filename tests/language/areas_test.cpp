// HP-GL's polygons and fills, and its labels.
#include "language/recording_sink.h"

#include "language/stroke_font.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace language {
namespace {

constexpr StrokeCase kPolygons[] = {
    {"outline, closed with the pen down", "PU100,100PM0PD200,100,200,200PM2EP", "100,100 200,100 200,200 100,100"},
    {"edges with the pen up are not outlined", "PU100,100PM;PD200,100;PU200,200PM2EP", "100,100 200,100"},
    {"but they bound the filled area", "PU100,100PM0PD200,100PU200,200PM2FP", "{100,100 200,100 200,200 100,100}"},
    {"an arc within", "PU60,50PM0PDAA50,50,180,90PM2EP", "60,50 50,60 40,50 60,50"},
    {"encoded points go into it as well", "PU5,5PM0PE\xC9\xBF\xBF\xC9;PM2EP", "5,5 10,5 10,10 5,5"},
    {"nothing in the buffer", "EP;FP;PM0PM2EP;FP", ""},
    {"rectangles", "PU100,100EA200,300;ER-50,50;PD0,0",
     "100,100 200,100 200,300 100,300 100,100 | 100,100 50,100 50,150 100,150 100,100 | 100,100 0,0"},
    {"a rectangle stays in the buffer", "PU1,1RA2,2EP", "{1,1 2,1 2,2 1,2 1,1} 1,1 2,1 2,2 1,2 1,1"},
    {"wedges", "PU500,500WG100,0,90,45;EW-100,0,90,90",
     "{500,500 600,500 570.71,570.71 500,600 500,500} 500,500 400,500 500,400 500,500"},
    {"a whole one has no corner", "PU500,500WG100,90,360,120", "{500,600 413.4,450 586.6,450 500,600}"},
    {"a fill is clipped", "PU-100,-100RA100,100;PU9000,9000RR-20000,-20000",
     "{0,0 100,0 100,100 0,100} {0,8000 0,0 9000,0 9000,8000}"},
    {"hatched, to and fro, from P1 on", "FT3,1000;PU0,500RA4000,3500",
     "0,1000 4000,1000 | 4000,2000 0,2000 | 0,3000 4000,3000"},
    {"shaded by half", "PW1;FT10,50;PU0,0RA200,200", "[1 1] 113.14,0 200,86.86 | 200,200 0,0 | 0,113.14 86.86,200"},
    {"cross-hatched", "FT4,1000;PU500,500RA1500,1500", "1000,500 1000,1500 | 500,1000 1500,1000"},
    {"a hole stays empty", "FT3,1000;PU0,500PM0PD9000,500,9000,1500,0,1500PM1PU3000,700PD6000,700,6000,1200,3000,1200PM2FP",
     "0,1000 3000,1000 | 6000,1000 9000,1000"},
    {"hatching within the window, however large the area", "IW0,0,100,2500;FT3,1000;PU-90000000,500;RA90000000,90000000",
     "0,1000 100,1000 | 100,2000 0,2000"},
    {"not within a definition", "PU5,5PM0RA9,9;EP;LBx\x03PD6,6,7,5PM2EP;PM2", "5,5 6,6 7,5 5,5"},
    {"texts that are not drawn", "BLPD9,9;\3WDtext PD\3CO\"PD5,5;\";CO PD8,\"8;BP5,\"PD;\",1;PU1,1PD2,2", "1,1 2,2"},
};

TEST(HpglAreas, Strokes) { expectStrokes(kPolygons); }

TEST(HpglAreas, HatchingIsNeverFinerThanThePen) {
    // 0.5 mm is 20 units; 12.8 units is a thousandth of the sheet's diagonal.
    EXPECT_EQ(Job("PW.5;FT3,0.001;PU0,1RA4000,401").findings().strokes, 20u);
    EXPECT_EQ(Job("PW0;FT3,0.001;PU0,1RA4000,641").findings().strokes, 50u);
}

// ---- Labels: where the pen is after them, and what they cover ----

constexpr std::string_view kSetUp = "PU1000,1000;SI0.2,0.3;"; // capitals of 80 by 120 units, cells of 120 by 240

struct LabelCase {
    const char *what;
    std::string_view text;
    Point at;
};

constexpr LabelCase kLabels[] = {
    {"two characters", "LO1;LBab\x03", {1240, 1000}},
    {"line ends", "LBab\r\nc\r\nd\x03", {1120, 520}},
    {"a line end leads back to where the first label began", "LBab\x03LBcd\r\n\x03", {1000, 760}},
    {"backspace", "LBab\b\x03", {1120, 1000}},
    {"tab", "LBab\tc\x03", {2080, 1000}},
    {"other control bytes", "LBa\x0e\x0f\x02z\x03", {1240, 1000}},
    {"the terminator printed", "DT#,0;LBa#", {1240, 1000}},
    {"the old terminator", "DT#;DT;LBa#\x03", {1240, 1000}},
    {"direction by P1 and P2", "IP0,0,100,200;DR100,0;LBab\x03", {1240, 1000}},
    {"diagonally by P1 and P2", "IP0,0,300,400;DR1,1;LBab\x03", {1144, 1192}},
    {"size by P1 and P2", "SR1,2;LBab\n\x03", {1300, 680}},
    {"by cells", "CP2,-1", {1240, 760}},
    {"by a line", "LBabc\3CP;", {1000, 760}},
    {"lines of CP count for the line end", "CP3,-1;LBa\r\x03", {1000, 760}},
    {"a character of the plot's own", "UC0,8,99,4,0;UC;LBa\3", {1240, 1000}},
};

TEST(HpglLabels, PenPositions) {
    for (const LabelCase &c : kLabels) {
        const Job job(std::string(kSetUp) + std::string(c.text));
        const Point at = job.reader->status().at;
        EXPECT_NEAR(at.x, c.at.x, 1e-6) << c.what;
        EXPECT_NEAR(at.y, c.at.y, 1e-6) << c.what;
        EXPECT_EQ(job.oddities(), "") << c.what;
    }
}

TEST(HpglLabels, WhatIsCovered) {
    // What the letter H covers: all of its points, in plotter units.
    const auto [left, right] = std::ranges::minmax(glyph('H'), {}, &GlyphPoint::x);
    const auto [bottom, top] = std::ranges::minmax(glyph('H'), {}, &GlyphPoint::y);
    const double x = 120.0 / kAdvance, y = 120.0 / kCapHeight;
    const Rectangle h{{left.x * x, bottom.y * y}, {right.x * x, top.y * y}};
    const struct {
        const char *what;
        const char *text;
        Rectangle covered;
    } cases[] = {
        {"the second of two", "LB H\x03", {{120 + h.lower.x, h.lower.y}, {120 + h.upper.x, h.upper.y}}},
        {"upwards", "DI0,1;LBH\x03", {{-h.upper.y, h.lower.x}, {-h.lower.y, h.upper.x}}},
        {"slanted", "SL1;LBH\x03", {{h.lower.x + h.lower.y, h.lower.y}, {h.upper.x + h.upper.y, h.upper.y}}},
        {"mirrored", "SI-0.2,0.3;LBH\x03", {{-h.upper.x, h.lower.y}, {-h.lower.x, h.upper.y}}},
        {"pen at the middle", "LO5;LBH\x03", {{h.lower.x - 40, h.lower.y - 60}, {h.upper.x - 40, h.upper.y - 60}}},
        {"apart at the right", "LO19;LBH\3", {{h.lower.x - 120, h.lower.y - 180}, {h.upper.x - 120, h.upper.y - 180}}},
        {"a character of the plot's own", "UC2,0,99,1,4,-99,9,9;", {{40, 0}, {60, 60}}},
        {"marks at points", "SMH;PA1000,1000;", {{h.lower.x - 40, h.lower.y - 60}, {h.upper.x - 40, h.upper.y - 60}}},
    };
    for (const auto &c : cases) {
        const Job job(std::string(kSetUp) + c.text);
        const Rectangle &demand = job.findings().demand;
        EXPECT_NEAR(demand.lower.x - 1000, c.covered.lower.x, 1e-6) << c.what;
        EXPECT_NEAR(demand.lower.y - 1000, c.covered.lower.y, 1e-6) << c.what;
        EXPECT_NEAR(demand.upper.x - 1000, c.covered.upper.x, 1e-6) << c.what;
        EXPECT_NEAR(demand.upper.y - 1000, c.covered.upper.y, 1e-6) << c.what;
    }
    EXPECT_EQ(Job(std::string(kSetUp) + "LT2,1,1;LBH\x03").strokes(), Job(std::string(kSetUp) + "LBH\x03").strokes());
}

} // namespace
} // namespace language
