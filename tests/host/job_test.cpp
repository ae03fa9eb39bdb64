// Job files: written, shown, judged.
#include "host/host_fixture.h"

#include "host/failure_of.h"
#include "host/job/job_reader.h"

#include <array>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <orb/vectorix.h>

namespace {

class JobCommandTest : public HostTest {};

TEST_F(JobCommandTest, ShowsWhatItWrote) {
    std::string job = path("job.plist");
    Result written = run({"job", "write", job, "--emulation", "17008", "--terminator", " ", "--tool", "P1<&>,", "--tool",
                          "\\e", "--project", "B\u00fcro \"A\"", "--group-id", "7", "--x-tile", "2.5"});
    ASSERT_EQ(written.code, 0) << written.err;
    nlohmann::json expected = {{"projectName", "B\u00fcro \"A\""},
                               {"terminator", " "},
                               {"useTools", 1},
                               {"plotterGroupID", 7},
                               {"emulation", 17008},
                               {"xTile", 2.5},
                               {"tool1", "P1<&>,"},
                               {"tool2", "\x1B"}};
    EXPECT_EQ(nlohmann::json::parse(run({"job", "show", job, "--json"}).out), expected);
    EXPECT_NE(run({"job", "show", job}).out.find("ORB_CFSTR_Tool2 :       \"\\e\"\n"), std::string::npos);
    EXPECT_EQ(run({"job", "check", job}).code, 0);
    EXPECT_EQ(run({"job", "write", job}).code, 1) << "it is there already";
    EXPECT_EQ(run({"job", "write", job, "--force"}).code, 0);
}

/// Each key stands for the same in the command and in the plug-in.
TEST_F(JobCommandTest, ThePlugInReadsWhatWasTyped) {
    std::string job = path("job.plist");
    std::vector<std::string> words = {"job", "write", job};
    for (const char *name : {"pipe-out", "pipe-in", "group-id", "subgroup-id", "plotter-id", "tile-copies", "tile-axis",
                             "x-tile", "y-tile", "from-tile", "to-tile"})
        words.insert(words.end(), {std::string("--") + name, std::to_string(words.size())});
    ASSERT_EQ(run(words).code, 0);
    ORB_ServiceRecord r{};
    r.ORB_serviceNumber = kORB_ServicePrint;
    r.ORB_OutputMethode = kORB_OSX_METHOD_SERIAL;
    r.ORB_baudRate = 9600;
    FarEnd plotter;
    r.ORB_CFSTR_bsdIn_VectorixDevice = ORB_hostCreateString(plotter.port().c_str());
    ORB_hostSetProgress([](const ORB_JobReport *, void *) { return 1; }, nullptr); // no waiting at the end
    ASSERT_EQ(ORB_hostMakeFileRef(job.c_str(), &r.ORB_JobFileRef), 0);
    ASSERT_EQ(ORB_hostMakeFileRef(job.c_str(), &r.ORB_PlotFileInRef), 0);
    r = ORB_getVectorixCS2(r);
    ORB_hostSetProgress(nullptr, nullptr);
    EXPECT_EQ((std::array<double, 11>{double(r.ORB_USB_PIPEOUT), double(r.ORB_USB_PIPEIN), double(r.ORB_PlotterGroupID),
                                      double(r.ORB_PlotterSubgroupID), double(r.ORB_PlotterID), r.ORB_TileCopies,
                                      r.ORB_TileAxis, r.ORB_XTile, r.ORB_YTile, r.ORB_FromTile, r.ORB_ToTile}),
              (std::array<double, 11>{3, 5, 7, 9, 11, 13, 15, 17, 19, 21, 23}));
}

TEST_F(JobCommandTest, CheckTellsWhyAJobIsUnfit) {
    std::string job = file("job", "<plist><dict><key>Plotter emulation ID :</key><integer>17002</integer></dict></plist>");
    Result result = run({"job", "check", job, "--json"});
    EXPECT_EQ(result.code, 7);
    auto report = nlohmann::json::parse(result.out);
    EXPECT_EQ(report["fit"], false);
    EXPECT_EQ(report["findings"][0]["text"], "the key \"Plotfile terminator :\" is missing");
}

/// The entries of a dictionary in a document of their own, from line 2 on.
std::string listOf(const std::string &entries) { return "<plist>\n" + ("<dict>" + entries + "</dict>") + "</plist>\n"; }

std::string entry(const std::string &key, const std::string &value) { return "<key>" + key + "</key>\n" + value + "\n"; }

std::string repeated(std::string_view text, size_t times) {
    std::string out;
    for (size_t i = 0; i < times; ++i)
        out += text;
    return out;
}

const std::string kFit = entry("Plotter emulation ID :", "<integer>17008</integer>") +
                         entry("Plotfile terminator :", "<string>,</string>") +
                         entry("ORB_UseTools :", "<integer>1</integer>");

TEST_F(JobCommandTest, NamesTheLineOfWhatIsNoPropertyList) {
    const struct {
        const char *what;
        std::string text;
        const char *says;
    } kRows[] = {
        {"a plot file", "IN;SP1;", "line 1: text outside"},
        {"line ends of CR", "<dict>\r<key>a</key>\r<text/>\r</dict>", "line 3: unknown element <text>"},
        {"an array", "<plist>\n<array/></plist>", "line 2: the job must be a <dict>"},
        {"a key without a value", listOf("\n<key>a</key>\n"), "line 2: the key \"a\" has no value"},
        {"a value without a key", listOf("\n<string>a</string>"), "line 3: <string> where a key is due"},
        {"half a number", listOf(entry("X Tile :", "<integer>12x</integer>")), "line 3: \"12x\" is no integer"},
        {"an entity of somebody's own", listOf(entry("a", "<string>&b;</string>")), "line 3: unknown entity &b;"},
        {"a name without end", listOf(entry("a", "<" + std::string(1'000'000, 'x') + "/>")), "unknown element <xxxx"},
        {"not UTF-8", "<plist>\xFF", "not UTF-8"},
    };
    for (const auto &row : kRows) {
        SCOPED_TRACE(row.what);
        auto [code, said] = failureOf([&] { host::readJob(file("job", row.text)); });
        EXPECT_EQ(code, host::ExitCode::Unfit);
        EXPECT_NE(said.find(row.says), std::string::npos) << said;
        EXPECT_LT(said.size(), 300U);
    }
}

// A check that goes over the whole file for each of its entries would hold the test for minutes.
TEST_F(JobCommandTest, ManyEntriesAreJudgedInOneGo) {
    const std::string tools = repeated(entry("ORB_CFSTR_Tool1 :", "<string>a</string>"), 200'000);
    const auto findings =
        host::checkJob(host::readJob(file("job", listOf(kFit + tools + repeated("<key/><true/>\n", 200'000)))));
    ASSERT_EQ(findings.size(), 101U);
    EXPECT_EQ(findings[99].line, 209U);
    EXPECT_EQ(findings[100].text, "399 899 more findings are left out");
}

TEST_F(JobCommandTest, FindsWhatKeepsAJobFromBeingPrinted) {
    const struct {
        const char *what;
        std::string entries;
        bool isError;
        const char *says;
    } kRows[] = {
        {"no emulation", entry("Plotfile terminator :", "<string>;</string>"), true, "emulation ID :\" is missing"},
        {"an emulation past the last", kFit + entry("Plotter emulation ID :", "<integer>17038</integer>"), true, "is 17038"},
        {"a text for a number", kFit + entry("X Tile :", "<string>2</string>"), true, "\"X Tile :\" is a <string>"},
        {"an empty terminator",
         entry("Plotter emulation ID :", "<real>17002</real>") + entry("Plotfile terminator :", "<string></string>"), true,
         "is empty; emulation 17002"},
        {"a terminator outside ASCII", kFit + entry("Plotfile terminator :", "<string>\u00e9</string>"), true,
         "outside ASCII"},
        {"a tool too long", kFit + entry("ORB_CFSTR_Tool1 :", "<string>" + std::string(256, 'a') + "</string>"), true,
         "256 bytes"},
        {"a key nobody reads", kFit + entry("Colour :", "<string>red</string>"), false, "unknown key \"Colour :\""},
        {"a key twice", kFit + kFit, false, "stands here again"},
        {"tools switched off",
         kFit + entry("ORB_UseTools :", "<integer>0</integer>") + entry("ORB_CFSTR_Tool1 :", "<string>a</string>"), false,
         "\"ORB_UseTools :\" is not 1"},
        {"tools of another emulation",
         kFit + entry("Plotter emulation ID :", "<integer>17009</integer>") +
             entry("ORB_CFSTR_Tool1 :", "<string>a</string>"),
         false, "the emulation is 17009"},
    };
    for (const std::string &fit : {kFit, entry("Plotter emulation ID :", "<integer>17030</integer>")}) // needs no terminator
        EXPECT_TRUE(host::checkJob(host::readJob(file("job", listOf(fit)))).empty()) << fit;
    for (const auto &row : kRows) {
        SCOPED_TRACE(row.what);
        auto findings = host::checkJob(host::readJob(file("job", listOf(row.entries))));
        bool found = false;
        bool hasErrors = false;
        for (const auto &finding : findings) {
            hasErrors |= finding.isError;
            found |= finding.isError == row.isError && finding.text.find(row.says) != std::string::npos;
        }
        EXPECT_TRUE(found) << (findings.empty() ? "nothing found" : findings[0].text);
        EXPECT_EQ(hasErrors, row.isError);
    }
}

} // namespace
