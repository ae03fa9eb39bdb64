// What HP-GL draws: lines, arcs and encoded polylines; polygons and fills; labels.
#include "language/recording_sink.h"

#include "language/stroke_font.h"

#include <gtest/gtest.h>

namespace language {
namespace {

constexpr StrokeCase kLines[] = {
    // Moves, pens and the window.
    {"pen down with pairs", "PU10,10;PD20,10,20,20;PU;", "10,10 20,10 20,20"},
    {"lower case, blanks and line ends", "pa 100 200 pd\r\n 300\n400 ;", "100,200 300,400"},
    {"fractions, bare points, zeros in front", "PU.5,1.PD0002.250,1.75000", "0.5,1 2.25,1.75"},
    {"relative, and back", "PU100,100;PR;PD50,0,0,50;PA0,0", "100,100 150,100 150,150 0,0"},
    {"PA and PR draw with the pen as it is", "PA5,5;PD;PA6,6;PR1,1;PU;PR9,9", "5,5 6,6 7,7"},
    {"a dot", "PU5,5;PD;PU;PU7,7;PD7,7", "5,5 | 7,7"},
    {"pens; none draws nothing", "SP2;PU1,1PD2,2;SP;PD3,3;SP3PD4,4", "[2 0.35] 1,1 2,2 [0 0.35] [3 0.35] 3,3 4,4"},
    {"a job without pens after one that put it away", "SP0;IN;PU1,1PD2,2", "[0 0.35] [1 0.35] 1,1 2,2"},
    {"widths: for all pens, for one, of no width, in percent", "PW1;PU1,1PD2,2;PW.5,2;PD3,3;SP2;PW0;WU1;PW1;",
     "[1 1] 1,1 2,2 3,3 [2 0.5] [2 0.05] [2 0.32] [2 3.2]"},
    {"clipped", "PU-100,50PD200,50,200,9000,300,9000,300,7000", "0,50 200,50 200,8000 | 300,8000 300,7000"},
    {"numbers beyond all measure", "PU5,5PD99999999999999999999999,5,5,5,5,-99999999999999999999999", "5,5 10000,5 5,5 5,0"},
    {"window", "IW100,100,200,200PU0,150PD300,150;IW;PD300,160", "100,150 200,150 | 300,150 300,160"},
    {"window from the other corners, beyond the sheet", "IW20000,9000,9000,7000;PU0,7500PD30000,7500",
     "9000,7500 10000,7500"},
    {"ticks", "TL1,2;PU500,500;XT;YT;TL1;XT;TL;YT", "500,340 500,580 | 300,500 600,500 | 500,500 500,580 | 450,500 550,500"},
    {"a new start leaves nothing behind", "SC0,9,0,9;RO90;LT2;PR;IW5,5,6,6;PD;IN;PU1,1PD2,1", "1,1 2,1"},
    // Scales.
    {"by P1 and P2, at first the hard-clip area", "SC0,100,0,80;PU10,10PD20,20;SC;PD5,5", "1000,1000 2000,2000 5,5"},
    {"P2 follows P1", "IP1000,1000,2000,3000;IP0,0;SC0,10,0,10;PU0,0PD10,10", "0,0 1000,2000"},
    {"IP after SC moves the units", "SC0,10,0,10;IP0,0,100,100;PU1,1PD2,2;IP;PD0,1", "10,10 20,20 0,800"},
    {"y downwards", "SC0,100,80,0;PU0,0PD10,10", "0,8000 1000,7000"},
    {"equal units, to the left, y downwards", "SC0,100,100,0,1,0,50;PU0,0PD100,100", "0,8000 8000,0"},
    {"steps are scaled too", "SC-50,50,0,80;PU0,10;PR;PD10,10", "5000,1000 6000,2000"},
    {"percent of the area", "IR10,10,20,20;SC0,1,0,1;PU0,0PD1,1;IR0,50;PU0,0PD1,1", "1000,800 2000,1600 | 0,4000 1000,4800"},
    {"turned by 90 degrees", "RO90;PU0,0PD100,50", "10000,0 9950,100"},
    {"turning leaves the pen in place", "PU300,200;RO90;PR;PD10,0;RO;PD10,0", "300,200 300,210 310,210"},
    {"P2 of the area turned by 270 degrees", "RO270;IP;SC0,1,0,1;PU0,0PD1,1", "0,8000 10000,0"},
    {"nonsense changes nothing", "SC0,100,0,80;SC5,5,1,2;SC1,2,3;IP5,5,5,9;RO45;PU1,1PD2,2", "100,100 200,200"},
    // Line types.
    {"halves of 10 mm", "LT2,10,1;PU0,0PD1000,0", "0,0 200,0 | 400,0 600,0 | 800,0 1000,0"},
    {"round a corner", "LT2,10,1;PU0,0PD500,0,500,500", "0,0 200,0 | 400,0 500,0 500,100 | 500,300 500,500"},
    {"what is clipped counts", "LT2,10,1;PU-100,0PD700,0", "0,0 100,0 | 300,0 500,0"},
    {"a move begins the pattern again", "LT2,10,1;PU0,0PD100,0PU0,9PD300,9", "0,0 100,0 | 0,9 200,9"},
    {"in percent of the diagonal", "IP0,0,300,400;LT2,80;PU0,0PD500,0", "0,0 200,0 | 400,0 500,0"},
    {"dots", "LT1,10,1;PU0,0PD1000,0", "0,0 | 400,0 | 800,0"},
    {"adaptive", "LT-2,10,1;PU0,0PD1000,0", "0,0 250,0 | 500,0 750,0"},
    {"dots at the ends", "LT0;PU0,0PD100,0,200,0", "0,0 | 100,0 | 200,0"},
    {"of one's own, and back", "UL2,3,1;LT2,10,1;PU0,0PD500,0;UL2;PU0,9PD300,9", "0,0 300,0 | 400,0 500,0 | 0,9 200,9"},
    {"no pattern below 1 mm", "LT2,0.0001,1;PU0,0PD100,0", "0,0 20,0 | 40,0 60,0 | 80,0 100,0"},
    // Arcs and curves.
    {"circle in four chords; draws with the pen up", "PU500,500CI100,90;PD510,500",
     "600,500 500,600 400,500 500,400 600,500 | 500,500 510,500"},
    {"counterclockwise through a point, the long way", "PU600,500PDAT400,500,500,400,90", "600,500 500,600 400,500 500,400"},
    {"clockwise through a point, the long way", "PU600,500PDRT-200,0,-100,100,90", "600,500 500,400 400,500 500,600"},
    {"through a point, back to the beginning", "PU600,500PDAT400,500,600,500,90", "600,500 500,600 400,500 500,400 600,500"},
    {"through a point on the line", "PU100,100PDAT200,200,400,400;RT0,0,10,0", "100,100 400,400 410,400"},
    {"through a point, round in user units", "SC0,100,0,400;PU60,200PDAT50,210,40,200,90", "6000,4000 5000,4200 4000,4000"},
    {"curve", "PU100,100PDBZ102,100,102,104,104,104", "100,100 101.48,101.04 102.52,102.96 104,104"},
    {"straight curves, relative to where each begins", "PDBR1,1,2,2,3,3,1,0,2,0,3,0PD9,9", "0,0 3,3 6,3 9,9"},
    {"round in user units", "SC0,100,0,400;PU50,200CI10,90", "6000,4000 5000,4200 4000,4000 5000,3800 6000,4000"},
    {"chords by deviation", "CT1;PU500,500CI100,29.2893218813", "600,500 500,600 400,500 500,400 600,500"},
    {"a clipped circle", "PU50,50CI120,90", "170,50 50,170 0,120 | 120,0 170,50"},
    // Encoded polylines. 1 is \301, -1 \302, 7 \315, 100 G\302; with 7 bits 1 is a, 100 Ge.
    {"encoded points of several digits", "PEG\302O\305d\300o\\\300;", "0,0 100,200 50,3200"},
    {"encoded with 7 bits", "PE7GeOkDbOZd;", "0,0 100,200 50,3200"},
    {"up, absolute", "PE<=G\302O\305=\375\277\301\301;PA40,40", "100,200 31,0 32,1 40,40"},
    {"binary places", "PE>\303<=Q\300\303\302\307;", "10.25,0.5 10,1.5"},
    {"pen of an encoded line", "PE:\305\315\315;", "[3 0.35] 0,0 7,7"},
    {"blanks and line ends within", "PE\r\n\315\315 \n\301\301;", "0,0 7,7 8,8"},
    {"encoded in user units", "SC0,100,0,80;PE<=\323\323\301\302;", "1000,1000 1100,900"},
    {"rubbish within is passed over", "PE1\311\311;", "0,0 5,5"},
};

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
    {"hatched to and fro from P1", "FT3,1000;PU0,500RA4000,3500", "0,1000 4000,1000 | 4000,2000 0,2000 | 0,3000 4000,3000"},
    {"shaded by half", "PW1;FT10,50;PU0,0RA200,200", "[1 1] 113.14,0 200,86.86 | 200,200 0,0 | 0,113.14 86.86,200"},
    {"cross-hatched", "FT4,1000;PU500,500RA1500,1500", "1000,500 1000,1500 | 500,1000 1500,1000"},
    {"a hole stays empty", "FT3,1000;PU0,500PM0PD9000,500,9000,1500,0,1500PM1PU3000,700PD6000,700,6000,1200,3000,1200PM2FP",
     "0,1000 3000,1000 | 6000,1000 9000,1000"},
    {"hatching within the window, however large the area", "IW0,0,100,2500;FT3,1000;PU-90000000,500;RA90000000,90000000",
     "0,1000 100,1000 | 100,2000 0,2000"},
    {"not within a definition", "PU5,5PM0RA9,9;EP;LBx\x03PD6,6,7,5PM2EP;PM2", "5,5 6,6 7,5 5,5"},
    {"texts that are not drawn", "BLPD9,9;\3WDtext PD\3CO\"PD5,5;\";CO PD8,\"8;BP5,\"PD;\",1;PU1,1PD2,2", "1,1 2,2"},
};

// Characters of 56 by 168 units in cells of 84 by 336; a slash goes from 4,-24 to 52,168 in its cell.
constexpr std::string_view kLabelSetUp = "PU1000,1000;SI0.14,0.42;";

constexpr StrokeCase kLabels[] = {
    {"line ends", "LB  \r\n \r\n \3PD", "1084,328"},
    {"a line end leads back to where the first label began", "LB  \3LB  \r\n\3PD", "1000,664"},
    {"backspace", "LB  \b\3PD", "1084,1000"},
    {"tab, from where the line begins", "LB  \r \t \3PD", "1756,1000"},
    {"other control bytes", "LB \x0e\x0f\2 \3PD", "1168,1000"},
    {"the terminator printed", "DT/,0;LB /PD", "1088,976 1136,1168 | 1168,1000"},
    {"the old terminator", "DT/;DT;LB /\3PD", "1088,976 1136,1168 | 1168,1000"},
    {"diagonally by P1 and P2", "IP0,0,300,400;DR1,1;LB  \3PD", "1100.8,1134.4"},
    {"size by P1 and P2", "SR1,2;LB  \n\3PD", "1300,680"},
    {"by cells", "CP2,-1;PD", "1168,664"},
    {"by a line", "LB   \3CP;PD", "1000,664"},
    {"lines of CP count for the line end", "CP3,-1;LB \r\3PD", "1000,664"},
    {"a character of the plot's own", "UC2,0,99,1,4,-99,9,9;UC;LB \3PD", "1028,1000 1042,1084 | 1168,1000"},
    {"without the line type", "LT2,1,1;LB/\3", "1004,976 1052,1168"},
    {"upwards", "DI0,1;LB/\3", "1024,1004 832,1052"},
    {"slanted", "SL1;LB/\3", "980,976 1220,1168"},
    {"mirrored", "SI-0.14,0.42;LB/\3", "996,976 948,1168"},
    {"apart at the right", "LO19;LB/\3", "920,724 968,916"},
    {"marks at points", "SM/;PA1000,1000;", "976,892 1024,1084"},
};

TEST(Hpgl, Strokes) {
    expectStrokes(kLines);
    expectStrokes(kPolygons);
    expectStrokes(kLabels, Language::Hpgl, kLabelSetUp);
}

TEST(Hpgl, ChordsOfACircle) {
    for (const auto &[chords, text] :
         {std::pair{72, "CI100"}, {36, "CI100,-10"}, {52, "CI100,7"}, {1000, "CI100,0.0000001"}, {2, "CI100,999"}}) {
        const std::string strokes = Job("PU500,500" + std::string(text)).strokes();
        EXPECT_EQ(std::ranges::count(strokes, ' '), chords) << text;
        EXPECT_TRUE(strokes.starts_with("600,500 ") && strokes.ends_with(" 600,500")) << strokes;
    }
}

TEST(Hpgl, HatchingIsNeverFinerThanThePen) {
    // 0.5 mm is 20 units; 12.8 units is a thousandth of the sheet's diagonal.
    EXPECT_EQ(Job("PW.5;FT3,0.001;PU0,1RA4000,401").findings().strokes, 20u);
    EXPECT_EQ(Job("PW0;FT3,0.001;PU0,1RA4000,641").findings().strokes, 50u);
}

TEST(Hpgl, Measures) {
    Job job("VS10;PU0,0;PD4000,0;PU4000,4000;PD4000,8000,4000,12000;SP2;PD;SP0;PD9,9");
    const Findings &f = job.findings();
    EXPECT_DOUBLE_EQ(f.downMillimetres, 200) << "what lies outside the sheet is not drawn";
    EXPECT_DOUBLE_EQ(f.upMillimetres, 100);
    EXPECT_EQ(f.strokes, 2u);
    EXPECT_NEAR(f.seconds, 2.0 + 0.2 + 0.2 + 1.0, 1e-9);
    EXPECT_EQ(f.byPen[1].strokes, 2u);
    EXPECT_EQ(f.byPen[2].strokes, 0u);
    EXPECT_TRUE(f.outsideHardClip);
    EXPECT_EQ(f.demand.lower, (Point{0, 0}));
    EXPECT_EQ(f.demand.upper, (Point{4000, 12000}));
    EXPECT_FALSE(Job("PU90000,0;PU5,5;").findings().anyDemand) << "moves demand nothing";
}

TEST(Hpgl, TheSlowerOfLineAndPenSetsThePace) {
    const auto seconds = [](const std::string &text) {
        return Job(text, Language::Hpgl, SIZE_MAX, 0.01).findings().seconds;
    };
    const std::string slow = "VS1;PU0,0;PD400,0;", idle(200, ' '); // 1 s of drawing
    EXPECT_NEAR(seconds(slow), 0.11 + 0.1 + 1, 1e-9) << "the pen waits for the line, here for the D of PD";
    EXPECT_NEAR(seconds(slow + idle + "PD800,0;"), 2.25 + 1, 1e-9) << "it waits again, behind what the line is ahead";
    EXPECT_NEAR(seconds(slow + idle), 2.18, 1e-9) << "the last byte is waited for, too";
    EXPECT_NEAR(seconds("VS1;PU0,0;PD8000,0;PD0,0;" + std::string(4000, ' ')), 20.21 - 10.48 + 40.25, 1e-9)
        << "a full buffer holds the line until the second instruction begins";
}

TEST(Hpgl, LettersStayInTheirCells) {
    for (int c = '!'; c <= 0x7F; ++c)
        for (const GlyphPoint &p : glyph(static_cast<unsigned char>(c)))
            EXPECT_TRUE(p.x >= 0 && p.x <= kAdvance - 7 && p.y >= -7 && p.y <= kCapHeight) << c;
}

} // namespace
} // namespace language
