#include "plot/job_file.h"

#include "record/state.h"
#include "support/job.h"

#include <gtest/gtest.h>

namespace {

using namespace jobs;

class JobFile : public testing::Test {
protected:
    /// Reads a job file of these bytes from a record whose fields all hold something else before.
    int32_t read(std::string bytes) {
        platform.files.files[kJobPath] = std::move(bytes);
        answer() = {};
        ORB_ServiceRecord &record = answer();
        platform::internFSRef(kJobPath, &record.ORB_JobFileRef);
        platform::internFSRef(kPlotPath, &record.ORB_PlotFileInRef);
        record.ORB_PlotterGroupID = record.ORB_PlotterID = record.ORB_PlotterSubgroupID = record.ORB_PlotterEmulationID = -1;
        record.reservedZeroed[2] = 7;
        record.ORB_UseTools = 42;
        record.ORB_USB_PIPEIN = 9;
        record.ORB_XTile = record.ORB_TileAxis = 99;
        record.ORB_CFSTR_PlotfileTerminator = platform::constantString("host's");
        record.ORB_CFSTR_Tool3 = platform::constantString("host's tool");
        return ORB_readJobFile();
    }

    std::string text(CFStringRef s) { return std::string(platform::stringView(s)); }

    scripted::Platform platform;
};

TEST_F(JobFile, EmptyDictionaryLeavesPresetsAndTheHostsStrings) {
    EXPECT_EQ(read(jobXML({})), 0);
    const ORB_ServiceRecord &record = answer();
    EXPECT_EQ(record.ORB_errorID, kORB_NoError);
    EXPECT_EQ(
        record.ORB_PlotterGroupID | record.ORB_PlotterSubgroupID | record.ORB_PlotterID | record.ORB_PlotterEmulationID, 0);
    EXPECT_EQ(record.reservedZeroed[2], 0);
    EXPECT_EQ(double{record.ORB_TileAxis}, 0.0);
    EXPECT_EQ(double{record.ORB_XTile}, 1.0);
    EXPECT_EQ(int64_t{record.ORB_PlotChunkSize}, 64);
    EXPECT_EQ(record.ORB_UseTools, 42);
    EXPECT_EQ(record.ORB_USB_PIPEIN, 9);
    EXPECT_EQ(text(record.ORB_CFSTR_PlotfileTerminator), "host's");
    EXPECT_EQ(0, memcmp(&record.ORB_PlotFileRef, &record.ORB_PlotFileInRef, sizeof(ORB_FSRef)));
}

TEST_F(JobFile, ChunkSizeFollowsTheEmulation) {
    constexpr struct {
        const char *emulation;
        int64_t chunkSize;
    } kCases[] = {
        {"<integer>17008</integer>", 255}, {"<integer>17032</integer>", 255}, {"<integer>17022</integer>", 16},
        {"<integer>17037</integer>", 16},  {"<integer>17002</integer>", 64},  {"<integer>17100</integer>", 64},
        {"<real>17008</real>", 255},       {"<real>17008.5</real>", 64},      {"<integer>4294984304</integer>", 64},
        {"<string>17008</string>", 64},
    };
    for (const auto &c : kCases) {
        EXPECT_EQ(read(jobXML({{"Plotter emulation ID :", c.emulation}})), 0);
        EXPECT_EQ(int64_t{answer().ORB_PlotChunkSize}, c.chunkSize) << c.emulation;
    }
}

TEST_F(JobFile, NumbersTakeTheWidthOfTheirField) {
    EXPECT_EQ(read(jobXML({{"Plotter group ID :", integer(0x1234)},
                           {"ORB_USB_PIPEIN :", integer(0x181)},
                           {"Plotter ID :", "<real>20596.9</real>"},
                           {"Plotter Subgroup ID :", integer(-3)},
                           {"X Tile :", integer(3)},
                           {"Y Tile :", "<real>0.5</real>"},
                           {"ORB_UseTools :", integer(0x101)},
                           {"Axis of the tiles :", "<string>2</string>"}})),
              0);
    const ORB_ServiceRecord &record = answer();
    EXPECT_EQ(record.ORB_PlotterGroupID, 0x34);
    EXPECT_EQ(record.ORB_USB_PIPEIN, 0x81);
    EXPECT_EQ(record.ORB_PlotterID, 20596);
    EXPECT_EQ(record.ORB_PlotterSubgroupID, -3);
    EXPECT_EQ(double{record.ORB_XTile}, 3.0);
    EXPECT_EQ(double{record.ORB_YTile}, 0.5);
    EXPECT_EQ(record.ORB_UseTools, 0x101);
    EXPECT_EQ(double{record.ORB_TileAxis}, 0.0);
    EXPECT_EQ(platform.console.out, "\nkORB_USETOOLS (= ORB_UseTools) read : 1\n");
}

TEST_F(JobFile, ToolsNeedTheirEmulationAndTheSwitch) {
    constexpr struct {
        int emulation, useTools;
        const char *tool3;
    } kCases[] = {{17008, 1, "P3;"}, {17008, 0, "host's tool"}, {17030, 1, "host's tool"}, {17008, 0x101, "host's tool"}};
    for (const auto &c : kCases) {
        read(jobXML({{"ORB_CFSTR_Tool3 :", string("P3;")},
                     {"Plotter emulation ID :", integer(c.emulation)},
                     {"ORB_UseTools :", integer(c.useTools)}}));
        EXPECT_EQ(text(answer().ORB_CFSTR_Tool3), c.tool3) << c.emulation << " " << c.useTools;
    }
}

TEST_F(JobFile, UnfitFilesLeaveThePresets) {
    const struct {
        const char *what;
        std::string bytes;
        const char *console;
    } kCases[] = {
        {"truncated", jobXML({{"X Tile :", integer(3)}}).substr(0, 90), "line 2"},
        {"an array", plist("<array/>"), ""},
        {"a number that is none", jobXML({{"X Tile :", "<integer>12x</integer>"}}), "<integer>"},
        {"more than 16 MB", std::string(16 * 1024 * 1024 + 1, ' '), "16777217 bytes"},
    };
    uint32_t before = platform::liveObjectCount();
    for (const auto &c : kCases) {
        platform.console.err.clear();
        EXPECT_EQ(read(c.bytes), 0) << c.what;
        EXPECT_EQ(answer().ORB_errorID, kORB_ErrorJobFile) << c.what;
        EXPECT_EQ(double{answer().ORB_XTile}, 1.0) << c.what;
        EXPECT_NE(platform.console.err.find(c.console), std::string::npos) << c.what << ": " << platform.console.err;
    }
    EXPECT_EQ(platform::liveObjectCount(), before);
}

TEST_F(JobFile, FileFailures) {
    answer() = {};
    EXPECT_EQ(ORB_readJobFile(), errFSBadFSRef);
    EXPECT_EQ(platform.console.err, "FSOpenFork() returned -1401\n");

    platform.files.sizeResult = ioErr;
    EXPECT_EQ(read(jobXML({})), ioErr);
    platform.files.sizeResult = noErr;

    int failures = 1;
    platform.files.onRead = [&](int64_t) { return failures-- > 0 ? ioErr : noErr; };
    platform.console.err.clear();
    EXPECT_EQ(read(jobXML({})), 0);
    EXPECT_EQ(answer().ORB_errorID, kORB_NoError);
    EXPECT_EQ(platform.console.err, "FSReadFork() returned -36\n");

    int reads = 0;
    platform.files.onRead = [&](int64_t) { return ++reads, eofErr; };
    EXPECT_EQ(read(jobXML({})), eofErr);
    EXPECT_EQ(answer().ORB_errorID, kORB_ErrorJobFile);
    EXPECT_EQ(reads, 11);
}

} // namespace
