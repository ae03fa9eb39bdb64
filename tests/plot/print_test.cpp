// Service 17 over a scripted serial line: what arrives, what is reported, and what is left behind.
#include "support/job.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <random>
#include <string>

namespace {

using namespace jobs;

class Print : public testing::Test {
protected:
    Print() { platform.terminal.logWrites = false; }
    ~Print() override {
        ORB_hostSetProgress(nullptr, nullptr);
        EXPECT_TRUE(platform.terminal.openPaths.empty());
    }

    ORB_ServiceRecord print(std::string job, std::string plot) {
        platform.terminal.written.clear();
        platform.console.out.clear();
        platform.console.err.clear();
        return ORB_getVectorixCS2(printRecord(platform, std::move(job), std::move(plot)));
    }

    /// The report, after checking that it adds up and agrees with what arrived.
    ORB_JobReport report() {
        ORB_JobReport r = lastReport();
        EXPECT_EQ(r.fileBytes, r.sentBytes + r.failedBytes + r.withheldBytes);
        return r;
    }

    scripted::Platform platform;
};

/// Random plotter text with the commands of all families in it.
std::string randomPlot(std::mt19937 &random, size_t size) {
    constexpr const char *kWords[] = {"PU1,2;", "PD30,40;", "SP1;", ",D1,2",       "U5,6,",
                                      "\x03",   "D9,9;",    "@",    "LBtext;more", "\n"};
    std::string plot;
    while (plot.size() < size)
        plot += kWords[random() % std::size(kWords)];
    plot.resize(size);
    return plot;
}

TEST_F(Print, SendsTheFileUpToItsLastMarkForEveryFamilyAndSize) {
    std::mt19937 random(7);
    for (int emulation : {17002, 17008, 17009, 17011, 17022, 17030, 17032, 17036}) {
        const int chunk = emulation == 17022 ? 16 : emulation == 17008 || emulation == 17032 ? 255 : 64;
        const bool endsAtSign = emulation == 17008 || emulation == 17030 || emulation == 17036;
        for (int size : {1, chunk - 1, chunk, chunk + 1, 2 * chunk, 3 * chunk + 1, 5000}) {
            std::string plot = randomPlot(random, static_cast<size_t>(size) - 1) + (endsAtSign ? "@" : ";");
            ORB_ServiceRecord record = print(simpleJob(emulation, ";"), plot + "\n");
            EXPECT_EQ(platform.terminal.written, plot) << emulation << " size " << size;
            EXPECT_EQ(record.ORB_errorID, kORB_NoError);
            EXPECT_EQ(record.ORB_lastService, 6);
            EXPECT_EQ(record.ORB_portFD, -1);
            EXPECT_EQ(std::string(256, '\0'), std::string(record.ORB_writeBuffer, 256));
            ORB_JobReport r = report();
            EXPECT_EQ(r.sentBytes, size);
            EXPECT_EQ(r.withheldBytes, 1); // the line end, which may be all that the tail holds
            EXPECT_TRUE(r.stopReason == kORB_StopFinished || r.stopReason == kORB_StopNoMarkInTail) << r.stopReason;
        }
    }
}

TEST_F(Print, ChunksWithoutACutGoWhole) {
    std::string plot(1000, 'x');
    print(simpleJob(17002, ";"), plot + ";");
    EXPECT_EQ(platform.terminal.written, plot + ";");
    EXPECT_EQ(report().uncutChunks, 15U);
    print(simpleJob(17008, ""), plot + ",D@"); // no terminator: nothing can be cut, the at sign still ends the file
    EXPECT_EQ(platform.terminal.written, plot + ",D@");
    EXPECT_EQ(report().uncutChunks, 3U);
}

struct EndCase {
    const char *what;
    int emulation;
    const char *terminator;
    std::string plot;
    std::string arrives;
    uint32_t stopReason;
    int32_t firstErrorID;
    int64_t firstErrorOffset;
};

TEST_F(Print, HowJobsEnd) {
    const std::string chunk(64, ';');
    const EndCase kCases[] = {
        {"empty file", 17002, ";", "", "", kORB_StopFinished, kORB_NoError, -1},
        {"text behind the last mark", 17002, ";", "PU;rest", "PU;", kORB_StopFinished, kORB_NoError, -1},
        {"no mark in the tail", 17002, ";", "PU", "", kORB_StopNoMarkInTail, kORB_NoError, -1},
        {"no mark in the tail behind a chunk", 17002, ";", chunk + "PU", chunk, kORB_StopNoMarkInTail, kORB_NoError, -1},
        {"not ASCII in a chunk", 17002, ";", chunk + ";;;;;;\xE9;" + chunk, chunk, kORB_StopNotASCII,
         kORB_ErrorPathNameTooLong, 70},
        {"not ASCII in the tail", 17002, ";", "PU;\x80", "", kORB_StopNotASCII, kORB_ErrorPathNameTooLong, 3},
        {"no terminator", 17002, "", "PU;", "", kORB_StopJobFile, kORB_ErrorNoTerminator, -1},
        {"no terminator for 17009", 17009, "", "PU;", "", kORB_StopJobFile, kORB_ErrorNoTerminator, -1},
        {"a NUL withholds the piece's rest", 17002, ";", std::string("PU\0PD;", 6), "PU", kORB_StopFinished, kORB_NoError,
         -1},
    };
    for (const EndCase &c : kCases) {
        ORB_ServiceRecord record = print(simpleJob(c.emulation, c.terminator), c.plot);
        EXPECT_EQ(platform.terminal.written, c.arrives) << c.what;
        EXPECT_EQ(record.ORB_errorID, kORB_NoError) << c.what; // the close's
        ORB_JobReport r = report();
        EXPECT_EQ(r.stopReason, c.stopReason) << c.what;
        EXPECT_EQ(r.sentBytes, static_cast<int64_t>(c.arrives.size())) << c.what;
        EXPECT_EQ(r.firstErrorID, c.firstErrorID) << c.what;
        EXPECT_EQ(r.firstErrorOffset, c.firstErrorOffset) << c.what;
    }
}

TEST_F(Print, FilesThatCannotBeRead) {
    auto record = printRecord(platform, simpleJob(17002, ";"), "PU;");
    platform.files.files.erase(kPlotPath);
    record = ORB_getVectorixCS2(record);
    EXPECT_EQ(platform.console.err, "FSOpenFork() returned -43\n");
    EXPECT_EQ(record.ORB_errorID, kORB_NoError);
    EXPECT_EQ(report().firstErrorID, kORB_ErrorOpeningPlotFile);
    EXPECT_EQ(report().firstStatus, fnfErr);

    // A file that shrinks while it is read: the chunk is tried eleven times.
    int reads = 0;
    platform.files.onRead = [&](int64_t offset) { return offset < 200 ? noErr : (++reads, eofErr); };
    print(simpleJob(17002, ";"), std::string(1000, 'x') + ";");
    EXPECT_EQ(reads, 11);
    EXPECT_EQ(report().sentBytes, 256);
    EXPECT_EQ(report().stopReason, unsigned{kORB_StopPlotFile});
    EXPECT_EQ(report().firstErrorID, kORB_ErrorChunkUnreadable);
    EXPECT_EQ(report().firstErrorOffset, 256);
    EXPECT_NE(platform.console.out.find("[[ORB_VectorixService17] ] & ORB_error ID 38004\n"), std::string::npos);

    platform.files.onRead = [&](int64_t offset) { return offset < 960 ? noErr : ioErr; };
    print(simpleJob(17002, ";"), std::string(1000, 'x') + ";");
    EXPECT_EQ(report().firstErrorID, kORB_ErrorTailUnreadable);
    EXPECT_EQ(report().firstStatus, ioErr);
}

TEST_F(Print, FailedWritesShowInTheReportOnly) {
    platform.terminal.script("write", scripted::gives(64));
    platform.terminal.script("write", scripted::fails(EIO));
    platform.terminal.script("write", scripted::gives(10));
    std::string plot(1000, 'x');
    ORB_ServiceRecord record = print(simpleJob(17002, ";"), plot + ";");
    EXPECT_EQ(record.ORB_errorID, kORB_NoError);
    ORB_JobReport r = report();
    EXPECT_EQ(r.failedBytes, 64 + 54);
    EXPECT_EQ(r.piecesFailed, 2U);
    EXPECT_EQ(r.piecesSent, 14U);
    EXPECT_EQ(r.firstErrorID, kORB_ErrorUnvalidPort);
    EXPECT_EQ(r.firstStatus, EIO);
    EXPECT_EQ(r.firstErrorOffset, 64);
    EXPECT_EQ(r.sentBytes, static_cast<int64_t>(platform.terminal.written.size()));
}

TEST_F(Print, ToolsGoOutInOrderBeforeThePlot) {
    Keys keys = {{"Plotter emulation ID :", integer(17008)}, {"ORB_UseTools :", integer(1)}};
    for (int i = 8; i > 0; --i) {
        if (i == 4) continue; // an empty one is skipped
        keys.push_back({"ORB_CFSTR_Tool" + std::to_string(i) + " :", string("P" + std::to_string(i) + ",")});
    }
    print(jobXML(keys), "U1,1,@");
    EXPECT_EQ(platform.terminal.written, "P1,P2,P3,P5,P6,P7,P8,U1,1,@");

    platform.terminal.script("write", scripted::fails(EIO)); // a failed tool does not stop the sequence
    print(jobXML(keys), "U1,1,@");
    EXPECT_EQ(platform.terminal.written, "P2,P3,P5,P6,P7,P8,U1,1,@");
    EXPECT_EQ(report().firstErrorOffset, -1);
    EXPECT_EQ(report().firstErrorID, kORB_ErrorUnvalidPort);

    for (const std::string &tool : {std::string(256, 'x'), std::string("\xC3\xA9")}) {
        Keys unfit = keys;
        unfit.push_back({"ORB_CFSTR_Tool4 :", string(tool)});
        print(jobXML(unfit), "U1,1,@");
        EXPECT_EQ(platform.terminal.written, "P1,P2,P3,");
        EXPECT_EQ(report().stopReason, unsigned{kORB_StopUnconvertible});
        EXPECT_NE(platform.console.out.find("& ORB_error ID 23009\n"), std::string::npos);
    }

    // The line's start-up follows ORB_EmulationID, the tools follow the job's emulation.
    auto record = printRecord(platform, simpleJob(17002, ";"), "PU;");
    record.ORB_EmulationID = 17008;
    platform.terminal.written.clear();
    ORB_getVectorixCS2(record);
    EXPECT_EQ(platform.terminal.written, ";:PU;");
}

TEST_F(Print, TheHostStopsByProgressAndBySignal) {
    struct Host {
        int calls = 0;
        int64_t sent = 0;
    } host;
    ORB_hostSetProgress(
        [](const ORB_JobReport *soFar, void *context) {
            auto *h = static_cast<Host *>(context);
            h->sent = soFar->sentBytes;
            return ++h->calls == 3 ? 1 : 0;
        },
        &host);
    ORB_ServiceRecord record = print(simpleJob(17002, ";"), std::string(1000, 'x') + ";");
    EXPECT_EQ(host.calls, 3);
    EXPECT_EQ(host.sent, 192);
    EXPECT_EQ(report().stopReason, unsigned{kORB_StopByHost});
    EXPECT_EQ(report().firstErrorID, kORB_ErrorStopped);
    EXPECT_EQ(record.ORB_portFD, -1);
    EXPECT_EQ(std::count(platform.log.begin(), platform.log.end(), "tcflush 5 TCOFLUSH"), 1);

    ORB_hostSetProgress(nullptr, nullptr);
    platform.terminal.onWrite = [](std::string_view) { ORB_hostStop(); };
    print(simpleJob(17002, ";"), std::string(1000, 'x') + ";");
    EXPECT_EQ(report().stopReason, unsigned{kORB_StopByHost});
    EXPECT_EQ(platform.terminal.written.size(), 64U);

    platform.terminal.onWrite = nullptr; // the stop does not outlive its call
    print(simpleJob(17002, ";"), "PU;");
    EXPECT_EQ(platform.terminal.written, "PU;");
}

TEST_F(Print, Links) {
    auto record = printRecord(platform, simpleJob(17002, ";"), "PU;");
    record.ORB_CFSTR_bsdIn_VectorixDevice = 0x12345678; // no such handle
    record = ORB_getVectorixCS2(record);
    EXPECT_EQ(record.ORB_errorID, kORB_SerialTools_errorNoBSDIn);
    EXPECT_EQ(platform.console.out, " [S17] called by ORB Vectorix\n[ORB_SerialopenPort] returns an error -1\n"
                                    "[main] & ORB_error ID 27010\n[main] ORB_VectorixService17 returns an error -1\n"
                                    "[main] & ORB_error ID 27010\n");
    EXPECT_EQ(report().stopReason, unsigned{kORB_StopNoLink});

    platform.console.out.clear();
    record.ORB_CFSTR_bsdIn_VectorixDevice = platform::constantString("/dev/pl\xC3\xB6tter");
    record = ORB_getVectorixCS2(record);
    EXPECT_EQ(record.ORB_errorID, kORB_NoError);
    EXPECT_EQ(platform.console.out, " [S17] called by ORB Vectorix\n");
    EXPECT_EQ(report().stopReason, unsigned{kORB_StopUnconvertible});

    platform.terminal.always("open", scripted::fails(ENOENT));
    record = print(simpleJob(17002, ";"), "PU;");
    EXPECT_EQ(record.ORB_errorID, kORB_ErrorOpeningPort);
    EXPECT_EQ(report().stopReason, unsigned{kORB_StopNoLink});
}

TEST_F(Print, ShowsTheLastPieceOf17011) {
    print(simpleJob(17011, ";"), "%d%@U1,1;rest");
    EXPECT_NE(platform.console.out.find("%d%@U1,1;\n\n"), std::string::npos) << platform.console.out;
}

TEST_F(Print, LeavesNothingBehind) {
    print(simpleJob(17002, ";"), "PU;");
    uint32_t before = platform::liveObjectCount();
    for (int i = 0; i < 100; ++i) {
        ORB_ServiceRecord record = print(simpleJob(17002, ";"), "PU0,0;PD1,1;");
        ORB_hostReleaseString(record.ORB_CFSTR_message);
        ORB_hostReleaseString(record.ORB_CFSTR_PlotfileTerminator);
    }
    EXPECT_EQ(platform::liveObjectCount(), before);
    EXPECT_EQ(platform.files.openForks, 0);
}

} // namespace
