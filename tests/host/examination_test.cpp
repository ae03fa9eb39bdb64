// What makes a plot file unfit, and how that is told.
#include "host/host_fixture.h"

#include "host/examination/examination.h"
#include "host/failure_of.h"
#include "host/terminal/text.h"

namespace {

using host::Flaw;

class ExaminationTest : public HostTest {};

TEST_F(ExaminationTest, FindsWhatWouldNotBeSent) {
    const std::string kNul(1, '\0');
    const std::string kLong(70'000, ' '); // past the first block, and without a cut
    const struct {
        const char *what;
        std::string plot;
        int32_t emulation;
        std::string terminator;
        Flaw flaw;
        int64_t offset, flawBytes, withheldBytes;
        const char *says; ///< for Flaw::None: nothing
    } kRows[] = {
        {"all of it is sent", "PU;PD;", 17002, ";", Flaw::None, 0, 0, 0, ""},
        {"a line end", "PU;\r\n", 17002, ";", Flaw::None, 0, 0, 2, ""},
        {"escape sequences", "PU;\x1B.(\x1B%-12345X\x1B\x45\n", 17002, ";", Flaw::None, 0, 0, 15, ""},
        {"a question", "PU;OE\n", 17002, ";", Flaw::None, 0, 0, 3, ""},
        {"a question of another language", "PU@OE", 17008, ";", Flaw::BehindMark, 3, 2, 2, "\"OE\""},
        {"a PJL trailer", "PU;\x1B%-12345X@PJL EOJ\n@PJL\r\n\x1B%-12345X", 17002, ";", Flaw::None, 0, 0, 33, ""},
        {"NUL bytes at the end", "PU;" + kNul + kNul + "\n", 17002, ";", Flaw::None, 0, 0, 3, ""},
        {"NUL bytes at the end of a piece", "PU1111,11" + kNul + ";PD" + std::string(60, '1') + ";", 17002, "\x31",
         Flaw::BehindNul, 9, 2, 3, "behind NUL bytes"},
        {"empty", "", 17002, ";", Flaw::Empty, 0, 0, 0, "the plot file is empty; make it again"},
        {"nothing that draws", " \n", 17002, ";", Flaw::Blank, 0, 0, 2, "nothing in it draws"},
        {"no terminator", "PU;", 17002, "", Flaw::NoTerminator, 0, 3, 3,
         "names no terminator, and emulation 17002 needs one"},
        {"none needed", "PU,@", 17008, "", Flaw::None, 0, 0, 0, ""},
        {"a command", "PU;SP0", 17002, ";", Flaw::BehindMark, 3, 3, 3,
         "3 bytes at the end would not be sent, from offset 3 on, for no \";\" ends them: \"SP0\"; end the plot file "
         "with \";\", or give the job the plot's own terminator"},
        {"what would spoil a terminal", "PU;\x1B%A[2J", 17002, ";", Flaw::BehindMark, 3, 6, 6, "\"\\e%A[2J\""},
        {"behind the mark of another language", "D,1@;\n", 17008, ";", Flaw::BehindMark, 4, 2, 2,
         "; end the plot file with \"@\", or print with the emulation of"},
        {"behind a NUL", "PU;" + kNul + "PD;", 17002, ";", Flaw::BehindNul, 3, 4, 4, "the first at offset 3; take the NUL"},
        {"a foreign byte in the last chunk", kLong + "\xE9;", 17002, ";", Flaw::NotASCII, 70'000, 50, 50,
         "0xE9 at offset 70000 is not ASCII"},
        {"a mark of UTF-8", "\xEF\xBB\xBFPU;", 17002, ";", Flaw::NotASCII, 0, 6, 6, "begins with a UTF-8 mark"},
    };
    for (const auto &row : kRows) {
        SCOPED_TRACE(row.what);
        const host::PlotRules rules{row.emulation, row.terminator};
        host::PlotFile plot(file("plot", row.plot));
        host::Examination found = host::examine(plot, rules);
        EXPECT_EQ(found.flaw, row.flaw);
        EXPECT_EQ(found.offset, row.offset);
        EXPECT_EQ(found.flawBytes, row.flawBytes);
        EXPECT_EQ(found.withheldBytes, row.withheldBytes);
        auto [code, said] = failureOf([&] { host::requireFitPlot(found, plot, rules); });
        EXPECT_EQ(code, row.flaw == Flaw::None ? host::ExitCode::Done : host::ExitCode::Unfit);
        EXPECT_EQ(said.empty(), row.flaw == Flaw::None);
        EXPECT_NE(said.find(row.says), std::string::npos) << said;
        bool isAnythingSent = row.withheldBytes < static_cast<int64_t>(row.plot.size());
        EXPECT_EQ(said.find("--force") != std::string::npos, row.flaw != Flaw::None && isAnythingSent) << said;
    }
}

TEST_F(ExaminationTest, KnowsWhatIsNoPlotOfTheLanguage) {
    using host::FileKind;
    const struct {
        std::string start;
        int32_t emulation;
        FileKind kind;
    } kRows[] = {
        {"%!PS-Adobe-3.0\n", 17002, FileKind::PostScript},
        {" \n<svg width=\"1\">;", 17008, FileKind::Svg},
        {"\xEF\xBB\xBF<?xml version=\"1.0\"?>", 17002, FileKind::Xml},
        {"<?xml version=\"1.0\"?>\n<svg>", 17009, FileKind::Svg},
        {"\x1B%-12345X@PJL\nIN;", 17002, FileKind::Plot},
        {"PD;PK1;", 17002, FileKind::Plot},
        {";:H A L0 ;", 17002, FileKind::Dmpl},
        {";:H A L0 ;", 17009, FileKind::Plot},
        {"IN;SP1;PU10,10;PD20,20;", 17008, FileKind::Hpgl},
        {"Hello, this is a note; please send it;", 17002, FileKind::Nonsense},
        {"Hello, this is a note; please send it;", 17008, FileKind::Nonsense},
        {"Come home soon;", 17002, FileKind::Nonsense},
    };
    for (const auto &row : kRows) {
        host::Examination found = host::examine(host::PlotFile(file("plot", row.start)), {row.emulation, ";"});
        EXPECT_EQ(static_cast<int>(found.nature.kind), static_cast<int>(row.kind)) << row.start << ' ' << found.nature.what;
    }
}

TEST_F(ExaminationTest, PaddingIsWhatDrawsNothing) {
    for (const char *padding : {"", " \t\r\n", "\x1B.@;0:", "\x1B.)", "\x1B%0B", "\x1B&l0H\x1B\x45", "\x03\x1A", "\x1B"})
        EXPECT_TRUE(host::isPadding(padding)) << host::shown(padding);
    for (const char *drawing : {"PU", "\x1B.ZPU", "\x1B.@;0PU", "\x1B%0BPU", "@"})
        EXPECT_FALSE(host::isPadding(drawing)) << host::shown(drawing);
}

} // namespace
