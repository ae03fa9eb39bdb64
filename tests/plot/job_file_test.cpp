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
        record.ORB_XTile = record.ORB_TileAxis = 99;
        record.ORB_CFSTR_PlotfileTerminator = record.ORB_CFSTR_Tool3 = platform::constantString("host's");
        return ORB_readJobFile();
    }

    std::string text(CFStringRef s) { return std::string(platform::stringView(s)); }

    scripted::Platform platform;
};

template <typename Number> std::string bytes(Number number) {
    return {reinterpret_cast<const char *>(&number), sizeof number};
}

TEST_F(JobFile, EachKeyFillsItsField) {
#define AT(name) offsetof(ORB_ServiceRecord, name)
    const struct {
        const char *key;
        std::string value;
        size_t at;
        std::string expected; ///< numbers take the width of the field
    } kKeys[] = {
        {"Project name :", string("A"), AT(ORB_CFSTR_ProjectName), "A"},
        {"Plotter name :", string("B"), AT(ORB_CFSTR_PlotterName), "B"},
        {"Plotfile terminator :", string("C"), AT(ORB_CFSTR_PlotfileTerminator), "C"},
        {"ORB_UseTools :", integer(1), AT(ORB_UseTools), bytes(1)},
        {"ORB_USB_PIPEOUT :", integer(2), AT(ORB_USB_PIPEOUT), "\x02"},
        {"ORB_USB_PIPEIN :", integer(0x181), AT(ORB_USB_PIPEIN), "\x81"},
        {"Plotter group ID :", integer(0x1234), AT(ORB_PlotterGroupID), bytes(0x34)},
        {"Plotter Subgroup ID :", integer(-3), AT(ORB_PlotterSubgroupID), bytes(-3)},
        {"Plotter ID :", "<real>20596.9</real>", AT(ORB_PlotterID), bytes(20596)},
        {"Plotter emulation ID :", integer(17008), AT(ORB_PlotterEmulationID), bytes(17008)},
        {"Copy of the tiles :", integer(4), AT(ORB_TileCopies), bytes(4.0)},
        {"Axis of the tiles :", integer(5), AT(ORB_TileAxis), bytes(5.0)},
        {"X Tile :", integer(6), AT(ORB_XTile), bytes(6.0)},
        {"Y Tile :", "<real>0.5</real>", AT(ORB_YTile), bytes(0.5)},
        {"From Tile :", integer(8), AT(ORB_FromTile), bytes(8.0)},
        {"To Tile :", integer(9), AT(ORB_ToTile), bytes(9.0)},
        {"ORB_CFSTR_Tool1 :", string("D"), AT(ORB_CFSTR_Tool1), "D"},
        {"ORB_CFSTR_Tool2 :", string("E"), AT(ORB_CFSTR_Tool2), "E"},
        {"ORB_CFSTR_Tool3 :", string("F"), AT(ORB_CFSTR_Tool3), "F"},
        {"ORB_CFSTR_Tool4 :", string("G"), AT(ORB_CFSTR_Tool4), "G"},
        {"ORB_CFSTR_Tool5 :", string("H"), AT(ORB_CFSTR_Tool5), "H"},
        {"ORB_CFSTR_Tool6 :", string("I"), AT(ORB_CFSTR_Tool6), "I"},
        {"ORB_CFSTR_Tool7 :", string("J"), AT(ORB_CFSTR_Tool7), "J"},
        {"ORB_CFSTR_Tool8 :", string("K"), AT(ORB_CFSTR_Tool8), "K"},
    };
#undef AT
    Keys keys;
    for (const auto &c : kKeys)
        keys.push_back({c.key, c.value});
    EXPECT_EQ(read(jobXML(keys)), 0);
    for (const auto &c : kKeys) {
        const char *field = reinterpret_cast<const char *>(&answer()) + c.at;
        CFStringRef handle;
        memcpy(&handle, field, sizeof handle);
        const bool isString = c.value.starts_with("<string>");
        EXPECT_EQ(isString ? text(handle) : std::string(field, c.expected.size()), c.expected) << c.key;
    }
    EXPECT_EQ(platform.console.out, "\nkORB_USETOOLS (= ORB_UseTools) read : 1\n");
}

TEST_F(JobFile, EmptyDictionaryLeavesPresetsAndTheHostsStrings) {
    EXPECT_EQ(read(jobXML({{"Axis of the tiles :", string("2")}})), 0); // a value of another type counts as absent
    const ORB_ServiceRecord &r = answer();
    EXPECT_EQ(r.ORB_errorID, kORB_NoError);
    EXPECT_EQ(r.ORB_PlotterGroupID | r.ORB_PlotterSubgroupID | r.ORB_PlotterID | r.ORB_PlotterEmulationID, 0);
    EXPECT_EQ(r.reservedZeroed[2], 0);
    EXPECT_EQ(double{r.ORB_TileAxis}, 0.0);
    EXPECT_EQ(double{r.ORB_XTile}, 1.0);
    EXPECT_EQ(r.ORB_UseTools, 42);
    EXPECT_EQ(text(r.ORB_CFSTR_PlotfileTerminator), "host's");
    EXPECT_EQ(0, memcmp(&r.ORB_PlotFileRef, &r.ORB_PlotFileInRef, sizeof(ORB_FSRef)));
}

TEST_F(JobFile, ChunkSizeFollowsTheEmulation) {
    for (const auto &[emulation, size] : {std::pair{"<integer>17022</integer>", 16},
                                          {"<integer>17100</integer>", 64},
                                          {"<real>17008</real>", 255},
                                          {"<real>17008.5</real>", 64},
                                          {"<integer>4294984304</integer>", 64}}) {
        EXPECT_EQ(read(jobXML({{"Plotter emulation ID :", emulation}})), 0);
        EXPECT_EQ(int64_t{answer().ORB_PlotChunkSize}, size) << emulation;
    }
}

TEST_F(JobFile, ToolsNeedTheirEmulationAndTheSwitch) {
    for (const auto &[emulation, useTools] : {std::pair{17008, 0}, {17030, 1}, {17008, 0x101}}) {
        read(jobXML({{"ORB_CFSTR_Tool3 :", string("P3;")},
                     {"Plotter emulation ID :", integer(emulation)},
                     {"ORB_UseTools :", integer(useTools)}}));
        EXPECT_EQ(text(answer().ORB_CFSTR_Tool3), "host's") << emulation << " " << useTools;
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
        {"more than 16 MB", std::string(16 * 1024 * 1024 + 1, ' '), "16777217 bytes"},
    };
    for (const auto &c : kCases) {
        EXPECT_EQ(read(c.bytes), 0) << c.what;
        EXPECT_EQ(answer().ORB_errorID, kORB_ErrorJobFile) << c.what;
        EXPECT_EQ(double{answer().ORB_XTile}, 1.0) << c.what;
        EXPECT_NE(platform.console.err.find(c.console), std::string::npos) << c.what << ": " << platform.console.err;
    }
}

TEST_F(JobFile, FileFailures) {
    EXPECT_EQ((answer() = {}, ORB_readJobFile()), errFSBadFSRef);
    int failures = 1;
    platform.files.onRead = [&](int64_t) { return failures-- > 0 ? ioErr : noErr; };
    EXPECT_EQ(read(jobXML({})), 0);
    EXPECT_EQ(answer().ORB_errorID, kORB_NoError);
    failures = 11;
    EXPECT_EQ(read(jobXML({})), ioErr);
    EXPECT_EQ(answer().ORB_errorID, kORB_ErrorJobFile);
    EXPECT_EQ(failures, 0);
    platform.files.sizeResult = ioErr;
    EXPECT_EQ(read(jobXML({})), ioErr);
    EXPECT_TRUE(platform.console.err.starts_with("FSOpenFork() returned -1401\nFSReadFork() returned -36\n"));
}

} // namespace
