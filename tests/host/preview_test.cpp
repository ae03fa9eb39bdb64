// Pictures of plots, and the plotter in software as other programs meet it.
#include "host/host_fixture.h"

#include <array>
#include <csignal>
#include <fcntl.h>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <poll.h>
#include <unistd.h>

namespace {

class PreviewCommandTest : public HostTest {};

/// vectorix simulate, with a link that says where.
class SimulateCommandTest : public HostTest {
protected:
    std::vector<std::string> simulation(std::vector<std::string> more) {
        more.insert(more.begin(), {"simulate", "--link", link_, "--render", path("arrived.svg")});
        return more;
    }
    const std::string link_ = path("plotter");
};

constexpr const char *kPlot = "IN;SP2;PA400,800;PD4400,800,4400,2800;PU;";

TEST_F(PreviewCommandTest, DrawsAndTellsWhatItFound) {
    std::string plot = file("plot", std::string(kPlot) + "XX1;CI;");
    Result result = run({"preview", plot, "-o", path("p.svg"), "--sheet", "100x100"});
    EXPECT_EQ(result.code, 0) << result.err;
    for (const char *line :
         {"HP-GL: 48 bytes, 6 instructions\n", "size: 100.0 x 50.0 mm, from 10.0, 20.0 to 110.0, 70.0 mm\n",
          "pen 2: ", "not understood: 1 unknown, 1 malformed\n  unknown at offset 41: \"XX1;\""})
        EXPECT_NE(result.out.find(line), std::string::npos) << line << "\nin: " << result.out;
    EXPECT_NE(result.err.find("note: the drawing leaves the 80.0 x 80.0 mm"), std::string::npos) << result.err;
    EXPECT_NE(contents(path("p.svg")).find("100mm"), std::string::npos);

    for (auto [ending, magic] : {std::pair{"png", "\x89PNG"}, std::pair{"PDF", "%PDF"}}) {
        ASSERT_EQ(run({"preview", plot, "-o", path(ending) + "." + ending}).code, 0);
        EXPECT_EQ(contents(path(ending) + "." + ending).rfind(magic, 0), 0U) << ending;
    }
}

TEST_F(PreviewCommandTest, ReportsAsJSON) {
    Result result = run({"preview", file("plot", kPlot), "-o", path("p.svg"), "--json"});
    auto report = nlohmann::json::parse(result.out);
    EXPECT_EQ(report["exitCode"], 0);
    EXPECT_EQ(report["language"], "hpgl");
    EXPECT_EQ(report["box"], nlohmann::json({10, 20, 110, 70}));
    EXPECT_EQ(report["pens"], nlohmann::json({2}));
    EXPECT_NEAR(report["downMillimetres"].get<double>(), 150, 0.001);
    EXPECT_FALSE(report["leavesSheet"].get<bool>());
    report = nlohmann::json::parse(run({"preview", file("plot", "SP1;"), "-o", path("p.svg"), "--json"}).out);
    EXPECT_TRUE(report["box"].is_null());
    EXPECT_EQ(report["notes"], nlohmann::json({"nothing in it draws"}));
}

TEST_F(PreviewCommandTest, LanguageFollowsTheFileOrTheOption) {
    std::string plot = file("plot", ";:PA 5,5;");
    EXPECT_EQ(run({"preview", plot, "-o", path("p.svg")}).out.rfind("DM/PL: ", 0), 0U);
    EXPECT_EQ(run({"preview", plot, "-o", path("p.svg"), "--language", "hpgl"}).out.rfind("HP-GL: ", 0), 0U);
}

TEST_F(PreviewCommandTest, SaysWhyThereIsNoPicture) {
    std::string good = file("plot", kPlot), empty = file("empty", "");
    std::string binary = file("binary", std::string("\x01\x02\xFF\xFE\x80", 5) + std::string(64, '\0'));
    const std::string picture = path("p.svg"), link = path("link");
    std::filesystem::create_symlink(good, link);
    expectRefusals({
        {{"preview", path("none"), "-o", picture}, 3, "none: no such file"},
        {{"preview", folder_, "-o", picture}, 7, "is a directory"},
        {{"preview", empty, "-o", picture}, 7, "the plot file is empty"},
        {{"preview", binary, "-o", picture}, 7, "nothing at its start is an instruction"},
        {{"preview", good, "-o", path("none/p.svg")}, 3, "none/p.svg: "},
        {{"preview", good, "-o", path("p")}, 2, "must end in .svg, .png or .pdf"},
        {{"preview", good}, 2, "--output"},
        {{"preview", good, "-o", picture, "--sheet", "a9"}, 2, "a9"},
        {{"preview", good, "-o", picture, "--dpi", "0"}, 2, "--dpi"},
        {{"preview", good, "-o", picture, "--language", "x"}, 2, "--language"},
        {{"preview", good, "-o", good}, 2, "is the input; name another file"},
        {{"print", good, "--virtual", picture, "--capture", path("c")}, 2, "excludes"},
        {{"print", good, "--capture", path("c"), "--sheet", "a3"}, 2, "--sheet"},
        {{"print", good, "--virtual", path("p")}, 2, "must end in .svg, .png or .pdf"},
        {{"simulate", "--fault", "fire"}, 2, "fire"},
        {{"simulate", "--fault", "hang:x"}, 2, "hang:x"},
        {{"simulate", "--pace", "1"}, 2, "--pace"},
        {{"preview", file("a.pdf", "%PDF-1.4\nIN;PD;"), "-o", picture}, 7, "not a plot, but a PDF document; export"},
        {{"preview", file("note", "Hello, this is a note;"), "-o", picture}, 7, "or draw it all the same with --language"},
        {{"simulate", "--link", good}, 2, "is there already, and is not a link that"},
        {{"simulate", "--link", link}, 2, "is there already"},
    });
    EXPECT_FALSE(std::filesystem::exists(picture));
    EXPECT_EQ(contents(link), kPlot);
}

TEST_F(PreviewCommandTest, PrintDrawsWhatPreviewDraws) {
    std::string plot = EXAMPLE;
    ASSERT_EQ(run({"preview", plot, "-o", path("p.svg"), "--sheet", "a3"}).code, 0);
    Result result = run({"print", plot, "--virtual", path("v.svg"), "--sheet", "a3", "--json"});
    EXPECT_EQ(result.code, 0) << result.err;
    auto report = nlohmann::json::parse(result.out);
    EXPECT_EQ(report["arrivedBytes"], std::filesystem::file_size(plot));
    EXPECT_EQ(report["sentBytes"], report["arrivedBytes"]);
    EXPECT_TRUE(contents(path("p.svg")) == contents(path("v.svg")));
    EXPECT_TRUE(isTidy());
}

/// Opens a port and asks; the answer up to its CR.
std::string ask(const std::string &port, const std::string &question) {
    Descriptor fd(open(port.c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC));
    if (write(fd.get(), question.data(), question.size()) != static_cast<ssize_t>(question.size())) return "not asked";
    std::string answer;
    for (char byte = 0; byte != '\r'; answer += byte) {
        pollfd wait{fd.get(), POLLIN, 0};
        if (poll(&wait, 1, 20'000) != 1 || read(fd.get(), &byte, 1) != 1) break;
    }
    return answer;
}

TEST_F(SimulateCommandTest, AnswersAndDrawsUntilItIsStopped) {
    Running simulating(simulation({}), false);
    std::string port = simulating.line();
    EXPECT_EQ(std::filesystem::read_symlink(link_), port);
    EXPECT_EQ(ask(link_, "IN;OH;"), "0,0,10900,7650\r");
    EXPECT_EQ(ask(port, "SP1;PD400,0;PU;OA;"), "400,0,0\r");
    simulating.signal(SIGINT);
    Result result = simulating.wait();
    EXPECT_EQ(result.code, 0) << result.err;
    EXPECT_NE(result.out.find("heard 24 bytes\n"), std::string::npos) << result.out;
    EXPECT_NE(result.out.find("size: 10.0 x 0.0 mm"), std::string::npos) << result.out;
    EXPECT_FALSE(contents(path("arrived.svg")).empty());
    EXPECT_FALSE(std::filesystem::is_symlink(link_));
}

TEST_F(SimulateCommandTest, ReplacesAndRemovesOnlyItsOwnLink) {
    {
        Running killed(simulation({}), false);
        killed.line();
    }
    Running simulating(simulation({}), false);
    EXPECT_EQ(std::filesystem::read_symlink(link_), simulating.line());
    std::filesystem::remove(link_);
    file("plotter", "somebody's");
    simulating.signal(SIGTERM);
    EXPECT_EQ(simulating.wait().code, 0);
    EXPECT_EQ(contents(link_), "somebody's");
}

TEST_F(SimulateCommandTest, OnceEndsWithTheProgramThatPrinted) {
    Running simulating(simulation({"--once", "--linger", "0", "--pace", "38400", "--json"}), false);
    std::string port = nlohmann::json::parse(simulating.line())["port"];
    std::string plot = file("plot", plotOf(200));
    EXPECT_EQ(run({"print", plot, "--port", port, "-q"}).code, 0);
    Result result = simulating.wait();
    EXPECT_EQ(result.code, 0);
    EXPECT_EQ(nlohmann::json::parse(result.out)["heardBytes"], std::filesystem::file_size(plot));
    ASSERT_EQ(run({"preview", plot, "-o", path("p.svg")}).code, 0);
    EXPECT_TRUE(contents(path("p.svg")) == contents(path("arrived.svg")));
}

TEST_F(SimulateCommandTest, HangingUpLosesTheDevice) {
    Running simulating(simulation({"--fault", "hangup:100"}), false);
    const std::string port = simulating.line();
    Result printed = run({"print", file("plot", plotOf(4000)), "--port", port});
    EXPECT_EQ(printed.code, 6);
    EXPECT_NE(printed.err.find(port + ": the device was lost after "), std::string::npos) << printed.err;
    EXPECT_NE(printed.out.find(" failed"), std::string::npos) << printed.out;
    Result result = simulating.wait();
    EXPECT_EQ(result.code, 0);
    EXPECT_NE(result.out.find("heard 100 bytes\n"), std::string::npos) << result.out;
}

} // namespace
