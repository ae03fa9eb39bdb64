// Pictures of plots, and the plotter in software as other programs meet it.
#include "host/host_fixture.h"

#include <csignal>
#include <filesystem>
#include <nlohmann/json.hpp>

namespace {

using nlohmann::json;

/// vectorix preview, and vectorix simulate with a link that says where.
class PreviewTest : public HostTest {
protected:
    Running simulation(Words more) {
        more.insert(more.begin(), {"simulate", "--link", link_, "--render", path("arrived.svg")});
        return Running(more);
    }
    const std::string link_ = path("plotter"), picture_ = path("p.svg");
};

constexpr const char *kPlot = "IN;SP2;PA400,800;PD4400,800,4400,2800;PU;";

TEST_F(PreviewTest, DrawsAndTellsWhatItFound) {
    std::string plot = file("plot", std::string(kPlot) + "XX1;CI;");
    Result result = run({"preview", plot, "-o", picture_, "--sheet", "100x100"});
    EXPECT_TRUE(ended(result, 0, "note: the drawing leaves the 80.0 x 80.0 mm"));
    for (const char *line :
         {"HP-GL: 48 bytes, 6 instructions\n", "size: 100.0 x 50.0 mm, from 10.0, 20.0 to 110.0, 70.0 mm\n",
          "pen 2: ", "not understood: 1 unknown, 1 malformed\n  unknown at offset 41: \"XX1;\""})
        EXPECT_TRUE(holds(result.out, line));
    for (auto [name, magic] : {std::pair{"p.png", "\x89PNG"}, std::pair{"p.PDF", "%PDF"}}) {
        ASSERT_TRUE(ended(run({"preview", plot, "-o", path(name)}), 0));
        EXPECT_TRUE(contents(path(name)).starts_with(magic)) << name;
    }
    auto report = json::parse(run({"preview", file("plot", kPlot), "-o", picture_, "--json"}).out);
    EXPECT_EQ(report["box"], json({10, 20, 110, 70}));
    EXPECT_EQ(report["pens"], json({2}));
    EXPECT_NEAR(report["downMillimetres"].get<double>(), 150, 0.001);
    report = json::parse(run({"preview", file("plot", "SP1;"), "-o", picture_, "--json"}).out);
    EXPECT_TRUE(report["box"].is_null());
    EXPECT_EQ(report["notes"], json({"nothing in it draws"}));

    file("plot", ";:PA 5,5;");
    EXPECT_TRUE(run({"preview", plot, "-o", picture_}).out.starts_with("DM/PL: "));
    EXPECT_TRUE(run({"preview", plot, "-o", picture_, "--language", "hpgl"}).out.starts_with("HP-GL: "));
}

TEST_F(PreviewTest, ShowsAllOfADrawing) {
    const std::string plot = path("plot");
    const std::tuple<const char *, const char *, const char *, const char *> kRows[] = {
        // drawing, sheet, size, origin
        {"PD10900,7650;", "a4", "297 210", "12.25 200.625"},
        {"PD10000,7700;", "letter", "279.4 215.9", "10.137 207.475"},
        {"PD7650,10900;", "a4-portrait", "210 297", "9.375 284.75"},
        {"PU0,-20;PD16158,11000;", "a3", "420 297", "8.025 286.5"}, // whose paper holds it, if not what the pen reaches
        {"PU-4000,-3000;PD4000,3000;", "a4", "297 210", "148.5 105"},
        {"PD600000,4000;", nullptr, "15022.25 210.625", "12.25 200.625"},
    };
    for (const auto &[drawing, sheet, size, origin] : kRows) {
        SCOPED_TRACE(drawing);
        file("plot", drawing);
        auto report = json::parse(run({"preview", plot, "-o", picture_, "--json"}).out);
        EXPECT_EQ(report["sheet"], sheet ? json(sheet) : json());
        EXPECT_TRUE(holds(contents(picture_), std::string("viewBox=\"0 0 ") + size + "\""));
        EXPECT_TRUE(holds(contents(picture_), std::string(" -0.025 ") + origin + ")"));
    }
    file("plot", "PD16000,0;");
    Result result = run({"preview", plot, "-o", "-", "--area", "-10,-10,300,300"});
    EXPECT_EQ(result.code, 0);
    EXPECT_TRUE(holds(result.err, "drew the picture on -10,-10,300,300\n"));
    EXPECT_TRUE(holds(result.err, "is not plotted, and grey in the picture"));
    EXPECT_TRUE(holds(result.out, "width=\"420mm\" height=\"310mm\""));
    EXPECT_TRUE(holds(result.out, "stroke=\"#a0a0a0\" stroke-width=\"14\" d=\"M12000 0L16000 0\"/>\n</g>\n</svg>\n"));
}

TEST_F(PreviewTest, ShowsGreyWhatIsDoneBeforeAPlace) {
    const std::string plot = file("two", "IN;SP2;PU400,800;PD800,800;PU;PD900,900;PU;");
    EXPECT_TRUE(ended(run({"preview", plot, "-o", picture_, "--from", "stroke:2"}), 0, "up to byte 30\nleft: 1 stroke,"));
    EXPECT_TRUE(holds(contents(picture_), "\"#a0a0a0\" stroke-width=\"14\" d=\"M400 800L800 800\""));
    EXPECT_TRUE(holds(contents(picture_), "\"#d21f26\" stroke-width=\"14\" d=\"M800 800L900 900\""));
}

TEST_F(PreviewTest, TellsTheTimeThatDryRunsTell) {
    const std::string plot = file("plot", "SP1;VS1;PU0,0;PD4000,0;SP2;PD4000,400;" + std::string(400, ' ') + "PD0,0;");
    auto report = json::parse(run({"preview", plot, "--json", "--baud", "300"}).out);
    EXPECT_TRUE(report["picture"].is_null());
    const FarEnd plotter;
    const Words dryRun = {"print", plot, "--dry-run", "--json", "--baud", "300", "--port", plotter.port()};
    const json foretold = json::parse(run(dryRun).out);
    EXPECT_EQ(foretold["estimatedSeconds"], report["seconds"]);
    EXPECT_EQ(foretold["drawing"]["byPen"], report["byPen"]);
    ASSERT_EQ(report["byPen"].size(), 2U);
    EXPECT_EQ(report["byPen"][0]["downMillimetres"], 100);
    EXPECT_NEAR(report["byPen"][0]["seconds"].get<double>(), 22.0 / 30 + 10, 1e-9);
    EXPECT_LT(json::parse(run({"preview", plot, "--json", "--usb"}).out)["seconds"], report["seconds"]);
}

TEST_F(PreviewTest, APlottersLimitsAreKeptAndHeldAgainstDrawings) {
    Running simulating = simulation({"--once", "--linger", "0", "--area", "-100,-50,172.5,150"});
    const std::string port = "port = '" + simulating.line() + "'\n";
    const std::string profile =
        file("config/vectorix/profiles/house.toml", "# mine\narea = \"\"\"0,0,\\\n9e1,90\"\"\"\n" + port);
    EXPECT_TRUE(ended(run({"limits", "-p", "house", "--save"}), 7, "house.toml: line 2: area"));
    file("config/vectorix/profiles/house.toml", "# mine\narea = \"\"\"0,0,\\\n90,90\"\"\"\n" + port);
    EXPECT_TRUE(ended(run({"limits", "-p", "house", "--save"}), 0, "kept in      house\n"));
    EXPECT_EQ(contents(profile), "# mine\n" + port + "area = '-100,-50,172.5,150'\n");
    EXPECT_TRUE(ended(simulating.wait(), 0));

    Words print = {"print", file("plot", "PU0,0;PD-4000,-2000,-4100,-2000;"), "-p", "house", "--capture", path("bytes")};
    EXPECT_TRUE(ended(run(print), 7, "leaves what the pen reaches (-100.0, -50.0 to 172.5, 150.0 mm)"));
    print.emplace_back("--force");
    EXPECT_TRUE(ended(run(print), 0));
}

TEST_F(PreviewTest, PrintDrawsWhatPreviewDraws) {
    const std::string sheet = " --sheet a3 -o " + picture_;
    ASSERT_TRUE(ended(shell("mkfifo $1/f; cat " EXAMPLE " > $1/f & \"$0\" preview $1/f" + sheet, {folder_}).wait(), 0));
    Result result = run({"print", EXAMPLE, "--virtual", path("v.svg"), "--sheet", "a3", "--json"});
    EXPECT_TRUE(ended(result, 0));
    EXPECT_EQ(json::parse(result.out)["arrivedBytes"], std::filesystem::file_size(EXAMPLE));
    EXPECT_TRUE(contents(picture_) == contents(path("v.svg")));
    EXPECT_TRUE(isTidy());
}

TEST_F(PreviewTest, SimulatesUntilItIsStoppedAndRemovesOnlyItsOwnLink) {
    std::filesystem::create_symlink("/dev/pts/999999", link_); // as a killed run leaves it
    Running simulating = simulation({});
    std::string port = simulating.line();
    EXPECT_EQ(std::filesystem::read_symlink(link_), port);
    const std::string ask = "exec 3<>\"$1\"; printf %s \"$2\" >&3; head -c \"$3\" <&3";
    EXPECT_EQ(shell(ask, {link_, "IN;OH;", "15"}).wait().out, "0,0,10900,7650\r");
    EXPECT_EQ(shell(ask, {port, "SP1;PD400,0;PU;OA;", "8"}).wait().out, "400,0,0\r");
    simulating.signal(SIGINT);
    EXPECT_TRUE(ended(simulating.wait(), 0, "heard 24 bytes\n"));
    EXPECT_TRUE(holds(contents(path("arrived.svg")), "<path"));
    EXPECT_FALSE(std::filesystem::is_symlink(link_));

    Running another = simulation({});
    another.line();
    std::filesystem::remove(link_);
    file("plotter", "somebody's");
    another.signal(SIGTERM);
    EXPECT_TRUE(ended(another.wait(), 0));
    EXPECT_EQ(contents(link_), "somebody's");
}

TEST_F(PreviewTest, OnceEndsWithTheProgramThatPrinted) {
    Running simulating = simulation({"--once", "--linger", "0", "--pace", "38400", "--json"});
    std::string port = json::parse(simulating.line())["port"], plot = file("plot", plotOf(200));
    EXPECT_TRUE(ended(run({"print", plot, "--port", port, "-q"}), 0));
    Result result = simulating.wait();
    EXPECT_TRUE(ended(result, 0));
    EXPECT_EQ(json::parse(result.out)["heardBytes"], std::filesystem::file_size(plot));
    ASSERT_TRUE(ended(run({"preview", plot, "-o", picture_}), 0));
    EXPECT_TRUE(contents(picture_) == contents(path("arrived.svg")));
}

TEST_F(PreviewTest, HangingUpLosesTheDevice) {
    Running simulating = simulation({"--fault", "hangup:100"});
    const std::string port = simulating.line();
    Result printed = run({"print", file("plot", plotOf(4000)), "--port", port});
    EXPECT_TRUE(ended(printed, 6, port + ": the device was lost after "));
    EXPECT_TRUE(holds(printed.out, " failed"));
    EXPECT_TRUE(ended(simulating.wait(), 0, "heard 100 bytes\n"));
}

} // namespace
