// vectorix convert, from what is typed to a plot that prints in whole instructions.
#include "host/host_fixture.h"

#include <filesystem>
#include <nlohmann/json.hpp>
#include <sys/stat.h>

namespace {

class ConvertCommandTest : public HostTest {};

TEST_F(ConvertCommandTest, WritesAPlotThatPrintsInWholeInstructions) {
    const std::string plot = path("made.plt");
    Result result = run({"convert", EXAMPLE, "-o", plot, "--sheet", "a3-portrait", "--margin", "50", "--fit", "--rotate",
                         "auto", "--order", "nearest", "--json"});
    ASSERT_EQ(result.code, 0) << result.err;
    auto made = nlohmann::json::parse(result.out);
    EXPECT_EQ(made["degrees"], 90);
    EXPECT_FALSE(made["leavesSheet"]);
    EXPECT_LT(made["after"]["upMillimetres"], made["before"]["upMillimetres"]);
    auto printed = nlohmann::json::parse(run({"print", plot, "--capture", path("c"), "--json"}).out);
    EXPECT_EQ(printed["uncutChunks"], 0);
    const std::vector<std::string> place = {"--sheet", "a3-portrait", "--margin", "50", "--fit", "--rotate", "auto"};
    std::vector<std::string> source = {"preview", EXAMPLE, "-o", path("a.png"), "--order", "nearest"};
    source.insert(source.end(), place.begin(), place.end());
    EXPECT_EQ(run(source).code, 0);
    EXPECT_EQ(run({"preview", plot, "-o", path("b.png"), "--sheet", "a3-portrait"}).code, 0);
    EXPECT_TRUE(contents(path("a.png")) == contents(path("b.png"))) << "a preview shows what is written";
    auto drawn = nlohmann::json::parse(run({"preview", plot, "-o", path("p.svg"), "--sheet", "a3-portrait", "--json"}).out);
    for (size_t i = 0; i < 4; ++i)
        EXPECT_NEAR(drawn["box"][i].get<double>(), made["box"][i].get<double>(), 0.013);
}

TEST_F(ConvertCommandTest, PoursPlotsOutAndLeavesThemWhereTheyAre) {
    const std::string plot = file("plot", "SP2;PU-400,0;PD80000,0;SP1;PU0,0;PD8,8;");
    Result result = run({"convert", plot, "-o", "-", "--pens", "1=2,2=1"});
    EXPECT_EQ(result.out, "IN;SP1;PU-400,0;PD80000,0;SP2;PU0,0;PD8,8;PU0,0;SP0;");
    EXPECT_NE(result.err.find("leaves what the pen reaches of this sheet (a4)"), std::string::npos) << result.err;
    result = run({"convert", plot, "-o", "-", "-q", "--emulation", "dmpl", "--at", "1,2"});
    EXPECT_EQ(result.out, ";:ECN,A,P2,U40,80,D80440,80,P1,U440,80,D448,88,U0,0,@");
    const std::string out = path("o"), pdf = file("a.pdf", "%PDF-1.4\n");
    const std::string svg =
        file("a.svg", "<svg xmlns='http://www.w3.org/2000/svg' width='50mm' height='20mm' viewBox='0 0 50 20'>"
                      "<path d='M10 10H40' stroke='red'/><path d='M40 5H10' stroke='black'/></svg>");
    result = run({"convert", svg, "-o", "-", "--at", "0,0", "--pens", "black=1,red=3"});
    EXPECT_EQ(result.out, "IN;SP3;PU0,0;PD1200,0;SP1;PU1200,200;PD0,200;PU0,0;SP0;");
    const std::string mixed = file("mixed", "SP1;PU0,0;PD8,0;SP2;PU0,8;PD8,8;SP1;PU0,16;PD8,16;");
    result = run({"convert", mixed, "-o", "-", "-q", "--by-pen"});
    EXPECT_EQ(result.out, "IN;SP1;PU0,0;PD8,0;PU0,16;PD8,16;SP2;PU0,8;PD8,8;PU0,0;SP0;");
    // A print sends what convert writes, in the language of the plotter; and DM/PL in its own, where none was named.
    const std::string sent = path("sent"), dmpl = file("cut.dmpl", ";:ECN,A,U40,0,D80,0,U0,0,@");
    EXPECT_EQ(run({"print", svg, "--capture", sent, "--at", "0,0", "--emulation", "17001"}).code, 0);
    EXPECT_EQ(contents(sent), "IN;SP1;PU0,0;PD1200,0;SP2;PU1200,200;PD0,200;PU0,0;SP0;");
    EXPECT_EQ(run({"print", dmpl, "--capture", sent, "--scale", "2"}).code, 0);
    EXPECT_EQ(contents(sent), ";:;:ECN,A,P1,U40,0,D120,0,U0,0,@"); // behind what the plotter wants to hear first
    const std::string pipe = path("pipe");
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    expectRefusals({{{"convert", plot, "-o", pipe}, 2, "is a device or a pipe"},
                    {{"preview", plot, "-o", pipe, "--format", "png"}, 2, "is a device or a pipe"},
                    {{"convert", pdf, "-o", out}, 7, "a.pdf: "},
                    {{"convert", file("none", "IN;PU5,5;"), "-o", out}, 7, "nothing in it draws"},
                    {{"convert", plot, "-o", plot}, 2, "is the input"},
                    {{"convert", plot, "-o", out, "--emulation", "17009"}, 2, "no plot can be written for 17009"},
                    {{"convert", plot, "-o", out, "--margin", "200"}, 2, "leave nothing of this sheet"},
                    {{"convert", svg, "-o", out, "--mend-only"}, 2, "an SVG drawing; leave the option out"},
                    {{"convert", plot, "-o", out, "--pens", "red=1"}, 2, "names a colour"},
                    {{"convert", svg, "-o", out, "--pens", "1=2"}, 2, "names a pen"},
                    {{"convert", svg, "-o", out, "--fill", "hatch:0"}, 2, "unknown fill"},
                    {{"convert", plot, "-o", out, "--scale", "nan"}, 2, "nan is not a number"}});
    EXPECT_FALSE(std::filesystem::exists(out));
}

} // namespace
