// What makes a plot file unfit, and how that is told. How much is withheld, the sender itself says (sender/).
#include "host/host_fixture.h"

#include "host/examination/examination.h"
#include "host/terminal/text.h"

#include <tuple>

namespace {

using host::FileKind;
using host::Flaw;

class ExaminationTest : public HostTest {};

TEST_F(ExaminationTest, FindsWhatWouldNotBeSent) {
    const std::string kNul(1, '\0');
    const std::string kLong(70'000, ' '); // past the first block, and without a cut
    const std::tuple<std::string, int32_t, const char *, Flaw, int64_t, const char *> kRows[] = {
        {"PU;\x1B.(\x1B%-12345X\x1B\x45\n", 17002, ";", Flaw::None, 15, ""},
        {"PU;OE\n", 17002, ";", Flaw::None, 3, ""}, // a question, but not of this language:
        {"PU@OE", 17008, ";", Flaw::BehindMark, 2, "from offset 3 on, for no \"@\" ends them: \"OE\""},
        {"PU;\x1B%-12345X@PJL EOJ\n@PJL\r\n\x1B%-12345X", 17002, ";", Flaw::None, 33, ""},
        {"PU;" + kNul + kNul + "\n", 17002, ";", Flaw::None, 3, ""},
        {"PU1111,11" + kNul + ";PD" + std::string(60, '1') + ";", 17002, "1", Flaw::BehindNul, 3,
         "2 bytes behind NUL bytes"},
        {" \n", 17002, ";", Flaw::Blank, 2, "nothing in it draws"},
        {"PU;", 17002, "", Flaw::NoTerminator, 3, "names no terminator, and emulation 17002 needs one"},
        {"PU,@", 17008, "", Flaw::None, 0, ""}, // which needs none
        {"PU;\x1B%A[2J", 17002, ";", Flaw::BehindMark, 6, "\"\\e%A[2J\"; end the plot file with \";\", or give the job the"},
        {"D,1@;\n", 17008, ";", Flaw::BehindMark, 2, "; end the plot file with \"@\", or print with the emulation of"},
        {"PU;" + kNul + "PD;", 17002, ";", Flaw::BehindNul, 4, "the first at offset 3; take the NUL"},
        {kLong + "\xE9;", 17002, ";", Flaw::NotASCII, 50, "0xE9 at offset 70000 is not ASCII"},
        {"\xEF\xBB\xBFPU;", 17002, ";", Flaw::NotASCII, 6, "begins with a UTF-8 mark"},
    };
    for (const auto &[text, emulation, terminator, flaw, withheldBytes, says] : kRows) {
        SCOPED_TRACE(text + says);
        const host::PlotRules rules{emulation, terminator};
        host::PlotFile plot(file("plot", text));
        host::Examination found = host::examine(plot, rules);
        EXPECT_EQ(found.flaw, flaw);
        EXPECT_EQ(found.withheldBytes, withheldBytes);
        const bool isFit = flaw == Flaw::None, isAnythingSent = withheldBytes < std::ssize(text);
        const Result refused = failureOf([&] { host::requireFitPlot(found, plot, rules); });
        EXPECT_TRUE(ended(refused, isFit ? 0 : 7, says));
        EXPECT_EQ(refused.err.find("--force") != std::string::npos, !isFit && isAnythingSent) << refused.err;
    }
}

TEST_F(ExaminationTest, KnowsWhatIsNoPlotOfTheLanguage) {
    constexpr std::tuple<const char *, int32_t, FileKind> kRows[] = {
        {"%!PS-Adobe-3.0\n", 17002, FileKind::PostScript},
        {" \n<svg width=\"1\">;", 17008, FileKind::Svg},
        {"<!-- drawn by hand -->\n<svg width=\"1\">;", 17002, FileKind::Svg},
        {"\xEF\xBB\xBF<?xml version=\"1.0\"?>", 17002, FileKind::Xml},
        {";:H A L0 ;", 17002, FileKind::Dmpl},
        {"Hello, this is a note; please send it;", 17002, FileKind::Nonsense},
    };
    for (auto [start, emulation, kind] : kRows) {
        host::Examination found = host::examine(host::PlotFile(file("plot", start)), {emulation, ";"});
        EXPECT_TRUE(found.nature.kind == kind) << start << ' ' << found.nature.what;
    }
}

TEST_F(ExaminationTest, PaddingIsWhatDrawsNothing) {
    for (const char *padding : {"", " \t\r\n", "\x1B.@;0:", "\x1B.)", "\x1B%0B", "\x1B&l0H\x1B\x45", "\x03\x1A", "\x1B"})
        EXPECT_TRUE(host::isPadding(padding)) << host::shown(padding);
    for (const char *drawing : {"PU", "\x1B.ZPU", "\x1B.@;0PU", "\x1B%0BPU", "@"})
        EXPECT_FALSE(host::isPadding(drawing)) << host::shown(drawing);
}

} // namespace
