// Job files: written, shown, judged.
#include "host/host_fixture.h"

#include "host/job/job_reader.h"

#include <array>
#include <nlohmann/json.hpp>
#include <orb/vectorix.h>

namespace {

class JobCommandTest : public HostTest {};

TEST_F(JobCommandTest, ShowsWhatItWrote) {
    std::string job = path("job.plist");
    const std::string options = " --emulation 17008 --terminator ' ' --tool 'P1<&>,' --tool '\\e' --project 'Büro \"A\"'";
    ASSERT_TRUE(ended(shell("\"$0\" job write " + job + options + " --group-id 7 --x-tile 2.5").wait(), 0));
    const auto expected = nlohmann::json::parse(R"({"projectName": "Büro \"A\"", "terminator": " ", "useTools": 1,
        "emulation": 17008, "plotterGroupID": 7, "xTile": 2.5, "tool1": "P1<&>,", "tool2": "\u001B"})");
    EXPECT_EQ(nlohmann::json::parse(run({"job", "show", job, "--json"}).out), expected);
    EXPECT_TRUE(ended(run({"job", "show", job}), 0, "ORB_CFSTR_Tool2 :       \"\\e\"\n"));
    EXPECT_EQ(run({"job", "check", job}).code, 0);
    EXPECT_EQ(run({"job", "write", job}).code, 1) << "it is there already";
    EXPECT_EQ(run({"job", "write", job, "--force"}).code, 0);

    file("job.plist", "<plist><dict><key>Plotter emulation ID :</key><integer>17002</integer></dict></plist>");
    Result unfit = run({"job", "check", job, "--json"});
    EXPECT_EQ(unfit.code, 7);
    auto report = nlohmann::json::parse(unfit.out);
    EXPECT_EQ(report["fit"], false);
    EXPECT_EQ(report["findings"][0]["text"], "the key \"Plotfile terminator :\" is missing");
}

/// Each key stands for the same in the command and in the plug-in.
TEST_F(JobCommandTest, ThePlugInReadsWhatWasTyped) {
    std::string job = path("job.plist");
    Words words = {"job", "write", job};
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

/// The entries of a dictionary in a document of their own, from line 2 on.
std::string listOf(const std::string &entries) { return "<plist>\n" + ("<dict>" + entries + "</dict>") + "</plist>\n"; }

std::string entry(const std::string &key, const std::string &value) { return "<key>" + key + "</key>\n" + value + "\n"; }

const std::string kEmulation = "Plotter emulation ID :", kTerminator = "Plotfile terminator :", kTool = "ORB_CFSTR_Tool1 :";
const std::string kFit = entry(kEmulation, "<integer>17008</integer>") + entry(kTerminator, "<string>,</string>") +
                         entry("ORB_UseTools :", "<integer>1</integer>");

/// The reader is the plug-in's own, and tested there.
TEST_F(JobCommandTest, NamesTheLineOfWhatIsNoPropertyList) {
    const std::tuple<const char *, std::string, const char *> kRows[] = {
        {"a plot file", "IN;SP1;", "line 1: text outside"},
        {"an array", "<plist>\n<array/></plist>", "line 2: the job must be a <dict>"},
        {"a key without a value", listOf("\n<key>a</key>\n"), "line 2: the key \"a\" has no value"},
        {"half a number", listOf(entry("X Tile :", "<integer>12x</integer>")), "line 3: \"12x\" is no integer"},
        {"an entity of somebody's own", listOf(entry("a", "<string>&b;</string>")), "line 3: unknown entity &b;"},
        {"a name without end", listOf(entry("a", "<" + std::string(1'000'000, 'x') + "/>")), "unknown element <xxxx"},
    };
    for (const auto &[what, text, says] : kRows) {
        file("job", text);
        const Result refused = failureOf([&] { host::readJob(path("job")); });
        EXPECT_TRUE(ended(refused, 7, says)) << what;
        EXPECT_LT(refused.err.size(), 300U) << what;
    }
}

TEST_F(JobCommandTest, FindsWhatKeepsAJobFromBeingPrinted) {
    const std::string kTooled = kFit + entry(kTool, "<string>a</string>");
    const std::tuple<const char *, std::string, bool, const char *> kRows[] = {
        {"no emulation", entry(kTerminator, "<string>;</string>"), true, "emulation ID :\" is missing"},
        {"an emulation past the last", kFit + entry(kEmulation, "<integer>17038</integer>"), true, "is 17038"},
        {"a text for a number", kFit + entry("X Tile :", "<string>2</string>"), true, "\"X Tile :\" is a <string>"},
        {"an empty terminator", kFit + entry(kEmulation, "<real>17002</real>") + entry(kTerminator, "<string/>"), true,
         "is empty"},
        {"a terminator outside ASCII", kFit + entry(kTerminator, "<string>\u00e9</string>"), true, "outside ASCII"},
        {"a tool too long", kFit + entry(kTool, "<string>" + std::string(256, 'a') + "</string>"), true, "256 bytes"},
        {"a key nobody reads", kFit + entry("Colour :", "<string>red</string>"), false, "unknown key \"Colour :\""},
        {"a key twice", kFit + kFit, false, "stands here again"},
        {"tools switched off", kTooled + entry("ORB_UseTools :", "<integer>0</integer>"), false, "\" is not 1"},
        {"tools of another emulation", kTooled + entry(kEmulation, "<integer>17009</integer>"), false, "is 17009"},
    };
    auto check = [&](const std::string &entries) { return host::checkJob(host::readJob(file("job", listOf(entries)))); };
    for (const std::string &fit : {kFit, entry(kEmulation, "<integer>17030</integer>")}) // needs no terminator
        EXPECT_TRUE(check(fit).empty()) << fit;
    for (const auto &[what, entries, isError, says] : kRows) {
        const auto findings = check(entries);
        std::string said[2]; // notes, errors
        for (const auto &finding : findings)
            said[finding.isError] += finding.text + "\n";
        EXPECT_TRUE(holds(said[isError], says) && (isError || said[1].empty())) << what << said[1];
    }
    // A check that goes over the whole file for each of its entries would hold the test for minutes.
    std::string many = kFit;
    for (int i = 0; i < 200'000; ++i)
        many += entry(kTool, "<string>a</string>") + "<key/><true/>\n";
    const auto findings = check(many);
    ASSERT_EQ(findings.size(), 101U);
    EXPECT_EQ(findings[100].text, "399 899 more findings are left out");
}

} // namespace
