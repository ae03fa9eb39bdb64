// What a stream of HP-GL may hold beside drawing: escapes, questions, rubbish; and whatever else anyone sends.
#include "language/recording_sink.h"

#include "language/clip.h"
#include "language/plot_reader.h"

#include <gtest/gtest.h>

namespace language {
namespace {

using namespace std::string_view_literals;

std::string repeat(std::string_view text, size_t count) {
    std::string all;
    while (count-- > 0)
        all += text;
    return all;
}

constexpr StrokeCase kEscapes[] = {
    {"plotter on, handshake", "\x1b.(;\x1b.I81;;17:\x1b.N;19:\x1b.P1:IN;PU1,1PD2,2", "1,1 2,2"},
    {"within a number", "PU1\x1b.@;0:00,5PD100,6", "100,5 100,6"},
    {"within a label", "DT#;LB \x1b.I1;2;3:#PU1,1;PD2,2", "1,1 2,2"},
    {"HP-GL/2 on and off", "\x1b%0BPU1,1PD2,2\x1b%1APD3,3;@!\x1b*b3W\x1b%0Z\x1b%1BPD4,4", "1,1 2,2 4,4"},
    {"printer commands", "\x1b&l1o2E\x1b(s0p10H\x1b*b5W;PD;9PU1,1PD2,2\x1b=\0339", "1,1 2,2"},
    {"job control", "\x1b%-12345X@PJL SET PD=1\r\n@PJL ENTER LANGUAGE=HPGL2 \r\nPU1,1PD2,2;\x1b%-12345X", "1,1 2,2"},
    {"reset", "SC0,1,0,1;PU1,1\33EPU1,1PD2,2", "1,1 2,2"},
    {"an escape ends the instruction before it", "PU1,1PD2,2\x1b%0B3,3", "1,1 2,2"},
};

TEST(HpglStream, Escapes) { expectStrokes(kEscapes); }

TEST(HpglStream, Questions) {
    EXPECT_EQ(Job("OH;op\r\n;\x1b.B\x1b.(OI;PAOA").requests, "OH;OP;\x1b.B;OI;OA;");
    EXPECT_EQ(Job("LBOH;\x03").requests, "") << "not within a label";
    EXPECT_EQ(Job("OH").requests, "OH;") << "at the end of the job";
}

constexpr struct {
    const char *what;
    std::string_view text;
    std::string_view oddities;
    uint64_t instructions;
} kOdd[] = {
    {"unknown", "IN;XX12;PU;", "unknown@3 XX12;", 2},
    {"half a pair", "PA1;PD1,2,3PU;", "malformed@0 PA1;\nmalformed@4 PD1,2,3", 3},
    {"too few and too many numbers", "CI;SP1,2;DF1", "malformed@0 CI;\nmalformed@3 SP1,2;\nmalformed@9 DF1", 3},
    {"half a curve", "BZ1,1,2,2,3,3,4,4;PU;", "malformed@0 BZ1,1,2,2,3,3,4,4;", 2},
    {"out of range", "VS0;SP-1;SP256;PW-1;FT7;RO45;SC1,1,2,2;DI0,0;LO10;PM1;UL9,1;LT2,0",
     "malformed@0 VS0;\nmalformed@4 SP-1;\nmalformed@9 SP256;\nmalformed@15 PW-1;\nmalformed@20 FT7;\nmalformed@24 RO45;\n"
     "malformed@29 SC1,1,2,2;\nmalformed@39 DI0,0;\nmalformed@45 LO10;\nmalformed@50 PM1;\nmalformed@54 UL9,1;\n"
     "malformed@60 LT2,0",
     12},
    {"two points, a lone sign, a strange byte", "PA1.2.3,4;PA-,5,;PA1?,2;",
     "malformed@0 PA1.2.3,4;\nmalformed@10 PA-,5,;\nmalformed@17 PA1?,2;", 3},
    {"rubbish between", "PU;!?* 12,13;\xff\xfePD;Q", "unknown@3 !?*\nunknown@7 12,13\nunknown@13 ..\nunknown@18 Q", 2},
    {"known, for what they do elsewhere", "PS4;NP8;VN;AS2;PG;CS33;SS;SA;BP;EC;NR;CR0,255,0,255,0,255;LA1,4,2,4;", "", 13},
    {"half a point of an encoded polyline", "PE\311;", "malformed@0 PE.;", 1},
    {"within a polygon's definition", "PM0RA9,9;EP;LBx\x03PM2PM2",
     "malformed@3 RA9,9;\nmalformed@9 EP;\nmalformed@12 LBx.\nmalformed@19 PM2", 6},
    {"NUL, DEL and line ends are nothing", "PU\0;\x7f\r\n\0IN\0;PE\r\n\301 \301;"sv, "", 3},
};

TEST(HpglStream, Oddities) {
    for (const auto &c : kOdd) {
        const Job job(c.text);
        EXPECT_EQ(job.oddities(), c.oddities) << c.what;
        EXPECT_EQ(job.findings().instructions, c.instructions) << c.what;
        EXPECT_EQ(job.findings().unknown + job.findings().malformed, job.findings().oddities.size()) << c.what;
    }
    const Job many(repeat("XX;", 500));
    EXPECT_EQ(many.findings().unknown, 500u);
    EXPECT_EQ(many.findings().oddities.size(), Findings::kMaxOddities);
    EXPECT_EQ(Job("XX" + std::string(500, '1')).findings().oddities.at(0).text.size(), 24u);
}

constexpr std::string_view kMixture =
    "\x1b.(;\x1b.I81;;17:IN;SP1;PA 100,-2.50;PD+300,400.25,500 600\r\n;SC0,100,0,80;LT2,3;PD10,10;OH;CI5,20;XX1;PA1;"
    "PM0;PD50,50,60,20;PM2;FT3,1;FP;EP;LBa;b\x1b.M;5:c\r\nd\x03"
    "DT#,0;LBx#SM+;PA5,5;SM;PE<=\xC9\xBF>\xC1\xC9\x40\xC9;CO\"PD;\";"
    "RO90;IW;WG20,0,90;\x1b%0A foreign \x1b*b4WPD;;\x1b%0B!?;TL1;XT;\x1b%-12345X@PJL\r\nPD1.5.5,;EA9,9";

TEST(HpglStream, CutsMakeNoDifference) {
    const Job whole(kMixture);
    ASSERT_GT(whole.findings().strokes, 20u);
    for (size_t piece = 1; piece < kMixture.size(); ++piece) {
        SCOPED_TRACE(piece);
        const Job cut(kMixture, Language::Hpgl, piece);
        EXPECT_EQ(cut.strokes(), whole.strokes());
        EXPECT_EQ(cut.oddities(), whole.oddities());
        EXPECT_EQ(cut.requests, whole.requests);
        EXPECT_EQ(cut.findings().seconds, whole.findings().seconds);
    }
}

TEST(PlotStream, ChoosesALanguageHoweverLateItsFirstBytesCome) {
    for (const auto &[language, text] : {std::pair<Language, std::string>{Language::Hpgl, ";"},
                                         {Language::Hpgl, ":EC;"},
                                         {Language::Dmpl, "\r\n  ;:H"},
                                         {Language::Hpgl, repeat(" ", 5000) + ";:H"}}) {
        for (size_t piece : {size_t{1}, text.size()}) {
            RecordingSink sink;
            PlotReader plot(std::nullopt, sink, kTestSheet);
            for (size_t at = 0; at < text.size(); at += piece)
                plot.take(std::string_view(text).substr(at, piece));
            plot.finish();
            EXPECT_EQ(plot.language(), language) << text;
            EXPECT_EQ(plot.reader()->findings().bytes, text.size()) << text;
        }
    }
}

// ---- Hostile jobs ----

/// Counts points, and holds each against the sheet.
struct CheckingSink final : PenSink {
    void setPen(int, double width) override { isSound = isSound && width > 0 && width <= 50; }
    void begin(Point at) override { line(at); }
    void line(Point to) override {
        ++points;
        isSound = isSound && inside(kTestSheet, to); // NaN is not
    }
    void fill(std::span<const Point> contours, std::span<const size_t>) override {
        std::ranges::for_each(contours, [this](Point p) { line(p); });
    }
    uint64_t points = 0;
    bool isSound = true;
};

/// Reads the job and checks that it stayed within its bounds.
Findings survive(std::string_view job) {
    CheckingSink sink;
    auto reader = makeReader(Language::Hpgl, sink, kTestSheet);
    reader->take(job);
    reader->finish();
    const Findings &f = reader->findings();
    EXPECT_TRUE(sink.isSound && sink.points < 10'000'000 + 250 * job.size()) << job.substr(0, 100) << ": " << sink.points;
    EXPECT_EQ(f.bytes, job.size());
    EXPECT_TRUE(std::isfinite(f.downMillimetres) && std::isfinite(f.upMillimetres) && std::isfinite(f.seconds));
    return f;
}

TEST(HpglHostile, NumbersWithoutMeasure) {
    survive("PD" + repeat("9999999999", 1'000'000) + "," + std::string(1000, '0') + "1." + std::string(1000, '3'));
    survive("SC0,.000000000000000001,0,.000000000000000001;PD9999999999,9999999999;CI999999999;AA999999999,1,360,.1;"
            "PR999999999,999999999;EA999999999,-999999999;RA-999999999,999999999;LBx\x03");
    survive("IP0,0,.0000000001,.0000000001;SC-999999999,999999999,-999999999,999999999;PD5,5;CI5;AA1,1,90;EW9,9,9;FT3,1;"
            "RA7,7;LT2,.0001;PD9,9,-9,0;SR9,9;LBabc\x03");
    survive("SI999999999,999999999;ES999999999,9;SL999999999;LBab\tc\r\n\b\x03LO15;DI.00000000001,999999999;LBabcdefg\x03");
    survive("LT-2,.001,1;PU0,0PD.000000001,0,.0000000000000001,0,999999999,999999999,0,0");
    survive("PE" + std::string(100, '~') + "\277\277;PU5,5PD6,6");
    survive("TL999999999,999999999;XT;YT;CP999999999,999999999;LBa\x03");
}

TEST(HpglHostile, MuchWorkForFewBytes) {
    EXPECT_EQ(survive(repeat("CI999,.1", 2'000)).refused, 0u);
    EXPECT_EQ(survive("PD" + repeat("BR0,9999999,9,0,0,0", 2'000)).refused, 0u);
    // A full polygon buffer: circles of 1000 chords each, and what closes them. Outlined and filled a few times, then
    // refused.
    const std::string polygon = "PU500,500PM0" + repeat("CI90,.1;", 250) + "PM2";
    const Findings once = survive(polygon + "EP;FP;");
    EXPECT_EQ(once.lostVertices, 250u * 1001 - 200'000);
    EXPECT_EQ(once.refused, 0u);
    const Findings often = survive(polygon + repeat("EP;FP;", 100) + "FT3,.001;" + repeat("FP;", 100));
    EXPECT_GT(often.refused, 200u);
    // Dashes as fine as they get, across the sheet.
    EXPECT_EQ(survive("LT8,.0000001,1;SC0,9,0,9;PD" + repeat("0,0,9,9,", 100)).refused, 0u);
    EXPECT_GT(survive("LT8,.0000001,1;SC0,9,0,9;PD" + repeat("0,0,9,9,", 3'000)).refused, 0u);
    survive("SP2;LB" + std::string(200'000, 'W'));
}

} // namespace
} // namespace language
