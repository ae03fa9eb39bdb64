// What becomes of plots that would not arrive whole: the bytes that they are mended to, or why they are refused.
#include "host/host_fixture.h"

#include "host/mending/mending.h"
#include "host/terminal/text.h"

#include <tuple>

namespace {

using namespace std::string_literals;
using host::PlotFile;

std::string contents(const PlotFile &plot) {
    std::string all(static_cast<size_t>(plot.size()), '\0');
    return std::string(plot.read(0, all));
}

TEST(MendingTest, WritesAnewWhatWouldNotArriveWhole) {
    const std::tuple<int32_t, std::string, std::string, std::vector<std::string>> kRows[] = {
        {17002, "PU;PD1,1;SP0", "PU;PD1,1;SP0;", {"ended with \";\""}},
        {17002, "in;pd1,1\x1B.Z\r\n\x1A", "in;pd1,1;\x1B.Z\r\n\x1A", {"ended with \";\""}},
        {17002, "PU;LBa;b\3", "PU;LBa;b\3;", {"ended with \";\""}},
        {17002, "INPU0,0PD1,1PU", "INPU0,0PD1,1PU;", {"ended with \";\""}},
        {17002,
         "PU\rPD1,1,\n2,2\r\nPU\n",
         "PU;PD1,1,\n2,2;PU;\n",
         {"line ends between instructions made \";\"", "ended with \";\""}},
        {17002, "PU\3PD1,1\3LBa\3PU\3", "PU;PD1,1;LBa\3PU;\3", {"ETX between instructions made \";\"", "ended with \";\""}},
        {17002,
         "DT#\nLBa\3\nb#\nPU",
         "DT#;LBa\3\nb#\nPU;",
         {"line ends between instructions made \";\"", "ended with \";\""}},
        {17002, "PU;PD1,1OE\n", "PU;PD1,1;\n", {"question at the end taken off", "ended with \";\""}},
        {17002, "PU;\0PD1\0,1;"s, "PU;PD1 ,1;", {"NUL bytes taken out"}},
        {17002, "PU;PD1,1" + std::string(300, '\0'), "PU;PD1,1; ", {"NUL bytes taken out", "ended with \";\""}},
        {17002, "\xEF\xBB\xBFPU;PD1,1;", "PU;PD1,1;", {"byte order mark taken off"}},
        {17002, "\xFF\xFEP\0U\0;\0P\0D\0"s, "PU;PD;", {"UTF-16 made ASCII", "ended with \";\""}},
        {17002, "\xFE\xFF\0P\0U\0;"s, "PU;", {"UTF-16 made ASCII"}},
        {17002, "P\0U\0;\0P\0D\0;\0"s, "PU;PD;", {"UTF-16 made ASCII"}},
        {17002, "CO \"\xFC\";BP1,\"\xE9\";PU;", "CO \"?\";BP1,\"?\";PU;", {"8-bit characters in comments made \"?\""}},
        // 10, 100 and pen 3 in base 64 and in base 32, whose digits are the lowest ones of 63 .. 126
        {17002, "PE<=\xD3G\xC2:\xC5\xD3\xD3;", "PE7<=sGe:ess;", {"8-bit polylines rewritten"}},
        {17002,
         "@PJL A\nPE\xD3\xD3PU;",
         "PE7ss;PU;",
         {"printer wrapper taken off", "8-bit polylines rewritten", "polylines ended with \";\""}},
        {17002, "PE<7ss\n;PE=\xD3\r\n\xD3", "PE<7ss\n;PE7=s\r\ns;", {"8-bit polylines rewritten", "ended with \";\""}},
        {17002,
         "\x1B%-12345X@PJL SET JOB=\"\xFC\"\r\n@PJL ENTER LANGUAGE=HPGL2\nPU;\x1B.I81;;17:\x1B%-12345X@PJL EOJ\n",
         "PU;\x1B.I81;;17:;",
         {"printer wrapper taken off", "ended with \";\""}},
        {17002,
         "\x1B"
         "E\x1B&l1O\x1B%0BPUPD1,1\x1B%0A\x1B*p9Y\x1B%1BPD2,2;\x1B%0A\x1B"
         "E",
         "PUPD1,1;PD2,2;",
         {"printer wrapper taken off"}},
        {17002,
         "\x1B%0BDT#PD1,1;\x1B"
         "EPU;LBa\3",
         "DT#PD1,1;IN;PU;LBa\3;",
         {"printer wrapper taken off", "ended with \";\""}},
        {17008, ";:A U0,0 D9,9 U\r\n\x1A", ";:A U0,0 D9,9 U@\r\n\x1A", {"ended with \"@\""}},
        {17008, ";:A U9\0009 @ ;:D9,\0 9,"s, ";:A U9 9 @ ;:D9,  9,@", {"NUL bytes taken out", "ended with \"@\""}},
    };
    for (const auto &[emulation, original, expected, mendings] : kRows) {
        SCOPED_TRACE(host::shown(original));
        const PlotFile plot = PlotFile::holding("a.plt", original);
        const std::optional<host::Mended> found = host::mended(plot, {emulation, ";"});
        ASSERT_TRUE(found);
        EXPECT_EQ(contents(found->plot), expected);
        EXPECT_EQ(found->mendings, mendings);
        EXPECT_EQ(found->plot.path(), "a.plt");
        EXPECT_EQ(contents(plot), original);
    }
}

TEST(MendingTest, LeavesWhatArrivesWholeAsItIs) {
    for (const auto &plot :
         {"PU;PD1,1;OE\n"s, "PU;\0\0\x1A"s, "PU;" + std::string(300, '\0'), "\x1B.(;IN;PD1,1;\x1B.Z\n"s, "IN\nPD1,1;"s})
        EXPECT_FALSE(host::mended(PlotFile::holding("a.plt", plot), {17002, ";"})) << host::shown(plot);
}

TEST(MendingTest, RefusesWhatWouldDrawOtherwise) {
    const std::tuple<int32_t, std::string, const char *> kRows[] = {
        {17002, "PU;PD1,1,2",
         "a.plt: cut off: it ends in the middle of an instruction, \"PD1,1,2\"; export it again, or print"},
        {17002, "PU;PD1,1,", "cut off"},
        {17002, "PU;PD1,1.", "cut off"},
        {17002, "PU;P", "cut off"},
        {17002, "PU;LBabc", "cut off"},
        {17002, "PU;PE\xD3\xD3GG", "cut off"},
        {17008, ";:U0,0 D9,", "cut off"},
        {17008, ";:U0,0 S1 abc", "cut off"},
        {17008, ";:U0,0 @ OE", "for no \"@\" ends them"},
        {17002, "PE\xD3\xD3;LB\xFC\3;", "the byte 0xFC at offset 7 is not ASCII"},
        {17002, "PU;\xB0PD1,1;", "the byte 0xB0 at offset 3 is not ASCII"},
        {17002, "PE\xD3G;PU;", "not ASCII"},
        {17002, "LO5;LBab\0cd\3;"s, "behind NUL bytes"}, // parts the label, so that it is centred otherwise
        {17002, "\xFF\xFEL\0B\0\xFC\0\3\0;\0"s, "a text in UTF-16"},
        {17002,
         "\x1B"
         "EPU;\x1B%0A\x1B*b2Wab\x1B%0BPD1,1;",
         "at offset 15 is for a printer, and beside the plot"},
        {17002,
         "\x1B"
         "EPU;\x1B%0AHello\x1B%0BPD1,1;",
         "at offset 9 is for a printer"},
        {17002, "%PDF-1.4", "a PDF document"},
    };
    for (const auto &[emulation, plot, says] : kRows) {
        const PlotFile file = PlotFile::holding("a.plt", plot);
        const host::PlotRules rules{emulation, ";"};
        EXPECT_TRUE(ended(failureOf([&] { host::mended(file, rules); }), 7, says)) << host::shown(plot);
    }
}

TEST(MendingTest, TakesPlotsOfManyBlocks) {
    std::string original = "\xEF\xBB\xBF", expected;
    for (int i = 0; i < 20'000; ++i) {
        original += "PD1,1\nLBa;\nb\3";
        expected += "PD1,1\nLBa;\nb\3";
    }
    const auto found = host::mended(PlotFile::holding("a.plt", original), {17002, ";"});
    ASSERT_TRUE(found);
    EXPECT_EQ(contents(found->plot), expected + ";");
}

} // namespace
