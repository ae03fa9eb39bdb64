// A plot cut in two where an instruction starts: the first part, then the state there and the rest, draw what the whole
// does.
#include "language/recording_sink.h"

#include "language/places.h"

#include <fstream>
#include <iterator>
#include <utility>

namespace language {
namespace {

/// A point, the pen and its width, and how the pen came there.
using Step = std::array<double, 5>;

bool same(const Step &a, const Step &b, ptrdiff_t members = 5) {
    return std::equal(a.begin(), a.begin() + members, b.begin(), [](double x, double y) { return std::abs(x - y) < 1e-3; });
}

/// All that is drawn. What begins where the stroke before ended goes on with it: a stroke that was cut is one again.
struct Drawn final : PenSink {
    void setPen(int number, double width) override { pen = {0, 0, static_cast<double>(number), width, 0}; }
    void begin(Point at) override { add(at, 0); }
    void line(Point to) override { add(to, 1); }
    void fill(std::span<const Point> points, std::span<const size_t>) override {
        std::ranges::for_each(points, [this](Point p) { add(p, 2); });
    }
    void add(Point at, double how) {
        const Step step{at.x, at.y, pen[2], pen[3], how};
        if (steps.empty() || !same(step, steps.back(), 4)) steps.push_back(step);
    }
    Step pen{};
    std::vector<Step> steps;
};

void read(std::string_view text, Language language, Drawn &drawn) {
    const auto reader = makeReader(language, drawn, kTestSheet);
    reader->take(text);
    reader->finish();
}

/// Cuts the plot at every n-th instruction; returns at how many the state is said not to carry all.
size_t cutAtInstructions(const std::string &plot, Language language, size_t every = 1) {
    Drawn whole, first;
    read(plot, language, whole);
    const auto reader = makeReader(language, first, kTestSheet);
    size_t seen = 0, poor = 0;
    reader->onInstruction = [&] {
        const Place place = reader->place();
        poor += !place.carries;
        if (seen++ % every != 0 || !place.carries) return;
        Drawn parts = first;
        const std::string state = reader->state();
        read(state + plot.substr(place.offset), language, parts);
        EXPECT_TRUE(std::ranges::equal(parts.steps, whole.steps, [](auto &a, auto &b) { return same(a, b); }))
            << "cut at " << place.offset << ", before " << plot.substr(place.offset, 30) << ", behind " << state;
    };
    reader->take(plot);
    return poor;
}

const std::string kHpgl =
    "\x1b.I81;;17:IN;SP1;PU100,100PD300,150;PR50,50,-20,30;SP3PR10,0;PU;PR5,5PD5,5PA;VS10;IP500,500,5000,4000;IP600,700;"
    "SC0,100,0,80;PU10,10PD20,20;RO90;PD25,20;SC;IP;RO0;SC0,100,0,80;PD30,30;PR2,2;IW10,10,60,60;PU;PR9,0PD50,50;PA50,20;"
    "LT2,3;PA10,10;PD11,12,20,20;PU30,20PD;PA40,20,40,33;LT3,9,1;PD41,60;PR;PD3,3;SP0PD4,4;SP2;PD1,2,9,9;PA;LT;PD10,12;IW;"
    "LT-4,5;PD70,50,20,30;LT0;PD30,30;LT5;UL5,10,5,20,5;PD60,60;LT;PD62,60;UL;PW.8;PW.3,2;PD20,60;PW;WU1;PW.2;PD5,5;WU;"
    "PU20,20;SI.3,.5;LBa b\3LBc\r\nd\3;PD30,22;LBe\3PU;SR1,2;DI1,1;LBf\3LBg\r\n\3LBh\3;DR1,.5;LO4;LBmid\3LBdle\3;LO;SL.3;"
    "ES.2,.1;DT#,0;LBx#LB\ry#;DT;CP2,-1;LBz\3UC4,4,99,2,2,-99,1,1;LB!\3SM+;PA40,40;PD42,44;PR3,3;SM;PA;DI;SL;ES;CS33;SS;"
    "LBs\3TL3,1;XT;PD7,7;YT;CT1;PU50,50CI9,.5;CT;PD;CI5,30;AA30,50,120;AR4,4,-60;AT50,60,55,62;RT2,1,4,0;"
    "BZ10,10,20,30,40,50;BR1,2,3,4,5,6;PE>\303<=Q\300\303\302\307\305\305;PE:\305\315\315;PU30,30EA40,44;ER5,5;RA50,50;EP;"
    "FT3,2,30;RR5,6;EW9,0,70;WG8,30,-100;FT1;PU10,10;PM0;PD30,10;PU;PR;AR4,4,50;PD0,20;PU-20,0;PM1;PU5,-10;PD3,0;SP4;CI2;"
    "PU9,9;PD4,4;PM2;PA;EP;FT4,1.5,10;FP;PU60,60PD61,61;DF;PU1000,1000PD1100,1300;FP;SC-1,1,-1,1;LBlast\3\x1b%0B;PD.1,.1;"
    "\x1b.M1;2:BP;PU.3,.3;PM;PD.5,.5,.1,.6;PM2;FT;FP;IN;PD50,60;PG;RO90;IR10,20,60,90;SC0,1,0,1;PD1,1;RO;PD0,1,1,.5;LT2;"
    "\33EPD9,9;";

const std::string kDmpl =
    ";: ECN,U H L0,A100,100,R,U,342,-55,V100;,BP80;,P2;,D,60,0,58,16,U,9,9,D5,5,O,D7,7,A,D9,9,300,50;"
    "EC5,L3,U100,100,D300,300,U9,9,P3D50,60,R,CA20,0,180;CC30,30,EF;U5,5W0,0,900,900;D9,9U@;;:H EC1D20,30";

TEST(Places, EveryCutDrawsTheWhole) {
    EXPECT_EQ(cutAtInstructions(kHpgl, Language::Hpgl), 4u) << "dashes without a pen, UC, EP of a rectangle";
    EXPECT_EQ(cutAtInstructions(kDmpl, Language::Dmpl), 7u) << "dashes, pens changed while down";
}

/// Of the file that ORB_PLOT names (script/test-long) all over; without one, a few of the example.
TEST(Places, CutsOfAFile) {
    const char *named = std::getenv("ORB_PLOT");
    std::ifstream file(named ? named : EXAMPLE, std::ios::binary);
    const std::string plot{std::istreambuf_iterator<char>(file), {}};
    ASSERT_FALSE(plot.empty());
    const size_t every = (1 + plot.size() / 1000 * plot.size() / 4'000'000) * (named ? 1 : 20);
    EXPECT_LT(cutAtInstructions(plot, guessLanguage(plot), every), (plot.size() + 999) / 1000);
}

constexpr struct {
    std::string_view plot, state; // at its last instruction
} kStates[] = {
    {"PU5,6;PU", "PU;PA;PU5,6;"},
    {"CS9;SP2;PR;IN;CS33;VS9;VS5,2;CS1;FS3,1;FS2;LA1,4;LA2,1;SA;SS;PG;BP5,1;NR;OH;RP;DP;COx;PU1,1;PU",
     "IN;VS9;VS5,2;CS1;FS2;LA1,4;LA2,1;SS;PU1,1;"},
    {"IN;PW1,2;PW.5;SI1,1;SR;IP1,2,30,40;IP5,6;IR0,0,50,50;IP7,8;PU1,1;PU", "IN;PW0.5;SR;IR0,0,50,50;IP7,8;PU1,1;"},
    {"\x1b%-12345X@PJL SET A=B\n\x1b.Rx\x1b%0B\x1b.(\x1b.I9\x1b.O\x1b.I81;;17:\x1b.N;19:IN;PU",
     "\x1b%-12345X@PJL SET A=B\n\x1b%0B\x1b.(\x1b.I81;;17:\x1b.N;19:IN;PU0,0;"},
    {"IN;SC0,50,0,40;IW1,1,9,9;SM*;PU4,4;LB  \3PR;PU", "IN;SC0,50,0,40;IW1,1,9,9;PU4,4;CP2,0;SM*;PR;"},
    {";:H A EC5 V9,L2,L3,BP80,F,EF EH P2,U5,6;O U7,7 R P3,U", ";:U,H,EC5,V9,L3,BP80,EH,P3,A,U5,6,O,U7,7,R,"},
};

PlotSource sourceOf(std::string_view plot) {
    return {std::nullopt, kTestSheet, [rest = plot]() mutable { return std::exchange(rest, {}); }};
}

TEST(Places, State) {
    for (const auto &[plot, state] : kStates) {
        const uint64_t last = plot.find_last_of("PU") - (plot[0] == ';' ? 0 : 1);
        EXPECT_EQ(statesAt(sourceOf(plot), {last}).front(), state) << plot;
    }
    EXPECT_EQ(statesAt(sourceOf("PU1,1;PD2,2"), {0, 1, 6}), (std::vector<std::string>{"PU;PA;PU0,0;", "", "PU;PA;PU1,1;"}));
}

TEST(Places, OfAPlot) {
    const std::string plot =
        "IN;PU1,1;PD2,2,3,3;LBx\3PU;SP2;PU4,4;PD5,5;SP;SP3;SP2;PD6,6;PU;SP1;PU;PD7,7,8,8;PE:\305\315\315;PU;PU9,9";
    EXPECT_EQ(placeUpTo(sourceOf(plot), 20)->offset, plot.find("PD2"));
    EXPECT_EQ(placeOfStroke(sourceOf(plot), 4)->offset, plot.find("PD5"));
    EXPECT_FALSE(placeUpTo(sourceOf(plot), 999) || placeOfStroke(sourceOf(plot), 99));
    std::string parts;
    for (const PenPart &part : penPartsOf(sourceOf(plot)))
        parts +=
            textOf(part.pen) + plot.substr(part.offset, 2) + plot.substr(part.start, 3) + textOf(double(part.strokes)) + " ";
    EXPECT_EQ(parts, "1ININ;3 2SPPU42 1SPPU;1 3PEPU;1 ");
    EXPECT_FALSE(penPartsOf(sourceOf(plot)).back().splits);
}

} // namespace
} // namespace language
