// Service 17 over scripted links: what arrives, what is reported, and what is left behind.
#include "support/job.h"
#include "usb/interface.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

namespace {

using namespace jobs;
using scripted::fails;
using scripted::failsAfter;
using scripted::gives;
using scripted::Log;

constexpr uint16_t kVendor = 0x0B75;

class Print : public testing::Test {
protected:
    Print() { terminal.logWrites = false; }
    ~Print() override {
        EXPECT_TRUE(terminal.openPaths.empty());
        EXPECT_FALSE(gORB_interfaceInterface);
    }

    ORB_ServiceRecord run(const ORB_ServiceRecord &record) {
        platform.log.clear();
        terminal.written.clear();
        registry.written.clear();
        platform.console.out.clear();
        platform.console.err.clear();
        return ORB_getVectorixCS2(record);
    }
    long logged(const char *line) { return std::count(platform.log.begin(), platform.log.end(), line); }

    static void useUsb(ORB_ServiceRecord &record) {
        record.ORB_OutputMethode = kORB_OSX_METHOD_USB;
        record.ORB_USBidVendor = kVendor;
        record.ORB_USBidProduct = 7;
    }

    scripted::Platform platform;
    scripted::Terminal &terminal = platform.terminal;
    scripted::Registry &registry = platform.registry;
};

TEST_F(Print, Outcomes) {
    const std::string chunk(64, ';'), kilobyte(1000, 'x');
    using Sent = ORB_ServiceRecord;
    const auto nothing = [](Sent &) {};
    const auto unended = [&](Sent &) { platform.files.files[kJobPath] = simpleJob(17002, ""); };
    const auto all = [&](int times, const char *call, auto... outcomes) {
        return [&, times, call, outcomes...](Sent &) { (platform.script(call, outcomes, times), ...); };
    };
    const auto on = [&](const char *call, auto... outcomes) { return all(1, call, outcomes...); };
    const auto overUsb = [](auto... given) { return [=](Sent &record) { useUsb(record), (given(record), ...); }; };
    const auto stop = [](std::string_view) { ORB_hostStop(); };
    const auto stopBehind100 = [&](std::string_view) {
        if (registry.written.size() > 100) ORB_hostStop();
    };
    const CFStringRef pty = platform::constantString("/dev/pts/3"),
                      foreign = platform::constantString("/dev/pl\xC3\xB6tter");
    int failedReads = 0, calls = 0;
    const auto stopAtThird = [](const ORB_JobReport *soFar, void *context) {
        return ++*static_cast<int *>(context) == 3 && soFar->sentBytes == 192 ? 1 : 0;
    };
    const auto failingFrom = [&](int64_t start, OSErr failure) {
        return [&, start, failure](Sent &) {
            platform.files.onRead = [&, start, failure](int64_t at) {
                return at < start ? OSErr{noErr} : (++failedReads, failure);
            };
        };
    };
    const struct {
        const char *what;
        int emulation;
        std::string plot;
        std::function<void(Sent &)> given;
        std::string arrives;
        const char *outcome; ///< the record's identifier (over a serial line the close's), and jobs::reportText
        const char *console = "";
    } cases[] = {
        {"no mark in the tail behind a chunk", 17002, chunk + "PU", nothing, chunk, "22007; 3; 64+0+2, 1+0, 1"},
        {"not ASCII in a chunk", 17002, chunk + ";;;;;;\xE9;" + chunk, nothing, chunk,
         "22007; 2, 23009/0 at 70; 64+0+72, 1+0, 1"},
        {"no terminator", 17002, "PU;", unended, "", "22007; 6, 38010/0 at -1; 0+0+0, 0+0, 0"},
        {"a NUL withholds the piece's rest", 17002, std::string("PU\0PD;", 6), nothing, "PU", "22007; 0; 2+0+4, 1+0, 0"},
        {"the last piece of 17011 is shown", 17011, "%d%@U1,1;rest", nothing, "%d%@U1,1;", "22007; 0; 9+0+4, 1+0, 0",
         "%d%@U1,1;\n\n"},
        {"no plot file", 17002, "", [&](Sent &) { platform.files.files.erase(kPlotPath); }, "",
         "22007; 5, 38001/-43 at -1; 0+0+0, 0+0, 0", "FSOpenFork() returned -43\n"},
        {"a chunk that cannot be read", 17002, kilobyte, failingFrom(200, eofErr), kilobyte.substr(0, 256),
         "22007; 5, 38004/-39 at 256; 256+0+744, 4+0, 4", "[[ORB_VectorixService17] ] & ORB_error ID 38004\n"},
        {"a tail that cannot be read", 17002, kilobyte, failingFrom(960, ioErr), kilobyte.substr(0, 960),
         "22007; 5, 38007/-36 at 960; 960+0+40, 15+0, 15"},
        {"failed and short writes", 17002, kilobyte + ";", on("write", gives(64), fails(EAGAIN), gives(10)),
         kilobyte.substr(118) + ";", "22007; 0, 25002/11 at 64; 883+118+0, 14+2, 15"},
        {"a port that is gone takes along the piece before", 17002, chunk + chunk + ";",
         on("write", gives(64), fails(ENXIO), fails(ENXIO)), chunk, "22007; 0, 25002/6 at 0; 0+129+0, 0+3, 2"},
        {"a piece that does not drain", 17002, chunk + chunk + ";", on("tcdrain", gives(0), fails(EIO)), chunk + chunk + ";",
         "22007; 0, 25002/5 at 64; 65+64+0, 2+1, 2"},
        {"nor does the line at its close", 17002, chunk + ";", on("tcdrain", gives(0), gives(0), fails(EIO)), chunk + ";",
         "22007; 0, 25002/5 at 64; 64+1+0, 1+1, 1"},
        {"a port that is gone at the end", 17002, chunk + ";", on("TIOCNXCL", fails(EIO)), chunk + ";",
         "22007; 0, 25002/5 at 64; 64+1+0, 1+1, 1"},
        {"start-up bytes that are not taken", 17008, "U1,@",
         [&](Sent &r) { r.ORB_EmulationID = 17008, platform.script("write", gives(0)); }, "U1,@",
         "22007; 0, 25002/11 at -1; 4+0+0, 1+0, 0"},
        {"stopped before the plot", 17008, "U1,@",
         [&](Sent &r) { r.ORB_EmulationID = 17008, terminal.onWrite = stop, terminal.leavesAtOnce = 2; },
         ";:", "22007; 1, 38011/0 at 0; 0+0+4, 0+0, 0"},
        {"stopped from a signal", 17002, kilobyte, [&](Sent &) { terminal.onWrite = stop, terminal.leavesAtOnce = 20; },
         kilobyte.substr(0, 20), "22007; 1, 38011/0 at 20; 20+44+936, 0+1, 1"},
        {"stopped, and nobody says what the queue holds", 17002, kilobyte,
         [&](Sent &) { terminal.onWrite = stop, platform.script("TIOCOUTQ", fails(EIO)); }, "",
         "22007; 1, 38011/0 at 0; 0+64+936, 0+1, 1"},
        {"stopped on a pseudo-terminal", 17002, kilobyte,
         [&](Sent &r) { terminal.onWrite = stop, r.ORB_CFSTR_bsdIn_VectorixDevice = pty; }, kilobyte.substr(0, 64),
         "22007; 1, 38011/0 at 64; 64+0+936, 1+0, 1"},
        {"stopped by the progress function", 17002, kilobyte,
         [&](Sent &) { ORB_hostSetProgress(stopAtThird, &(calls = 0)); }, kilobyte.substr(0, 192),
         "22007; 1, 38011/0 at 192; 192+0+808, 3+0, 3"},
        {"no such handle as the path", 17002, "PU;", [](Sent &r) { r.ORB_CFSTR_bsdIn_VectorixDevice = 0x12345678; }, "",
         "27010; 4, 27010/-1 at -1; 0+0+0, 0+0, 0",
         "[ORB_SerialopenPort] returns an error -1\n[main] & ORB_error ID 27010\n"
         "[main] ORB_VectorixService17 returns an error -1\n[main] & ORB_error ID 27010\n"},
        {"a path that is not ASCII", 17002, "PU;", [=](Sent &r) { r.ORB_CFSTR_bsdIn_VectorixDevice = foreign; }, "",
         "22007; 7, 23009/0 at -1; 0+0+0, 0+0, 0", " [S17] called by ORB Vectorix\n"},
        {"line and tools by different emulations", 17002, "PU;", [](Sent &r) { r.ORB_EmulationID = 17008; }, ";:PU;",
         "22007; 0; 3+0+0, 1+0, 0"},

        {"USB: start-up text", 17002, "PU;rest", useUsb, "IN;PU;", "22007; 0; 3+0+4, 1+0, 0"},
        {"USB: start-up refused", 17002, "PU;",
         overUsb(on("ClearPipeStallBothEnds", gives(kIOUSBPipeStalled)), on("WritePipe", gives(kIOReturnIOError))), "PU;",
         "22007; 0, 29008/-536854449 at -1; 3+0+0, 1+0, 0",
         "ORBTARGET_API_MAC_OSX_PANTHER  : ClearPipeStallBothEnds returns an error : -536854449[S18] first "
         "attempt : unable to write on this pipe  2\n"},
        {"USB: held by another", 17002, "PU;", overUsb(on("USBInterfaceOpen", gives(kIOReturnExclusiveAccess))), "",
         "29002; 4, 29002/-536870203 at -1; 0+0+0, 0+0, 0",
         "[ORB_VectorixService17] ORB_readPlotFile2Write returns an error -536870203\n"},
        {"USB: a piece counts once however often it is tried", 17002, kilobyte.substr(0, 300) + ";",
         overUsb(all(2, "WritePipe", gives(0)), all(8, "WritePipe", gives(kIOReturnNoDevice))),
         "IN;" + kilobyte.substr(0, 236) + ";", "22007; 0, 29008/-536870208 at 64; 237+64+0, 4+1, 4"},
        {"USB: a part, and then nothing", 17009, chunk,
         overUsb(on("WritePipe", failsAfter(kIOReturnIOError)), all(5, "WritePipe", gives(kIOReturnIOError))),
         chunk.substr(32), "29008; 0, 29008/-536870198 at 32; 32+32+0, 0+1, 0"},
        {"USB: all of it, and an error", 17009, ";", overUsb(all(6, "WritePipe", failsAfter(kIOReturnIOError))), ";;;;;;",
         "29008; 0, 29008/-536870198 at 1; 1+0+0, 0+1, 0"},
        {"USB: stopped", 17002, kilobyte, overUsb([&](Sent &) { registry.onWrite = stopBehind100; }),
         "IN;" + kilobyte.substr(0, 192), "38011; 1, 38011/0 at 192; 192+0+808, 3+0, 3"},
        {"a third method", 17002, "PU;", [](Sent &r) { useUsb(r), r.ORB_OutputMethode = 3; }, "",
         "22007; 4, 29002/-536870195 at -1; 0+3+0, 0+1, 0"},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.what);
        terminal.onWrite = registry.onWrite = nullptr;
        terminal.nextDescriptor = 5;
        terminal.leavesAtOnce = 0;
        platform.files.onRead = nullptr;
        registry.devices = {{kVendor, 7, 0x01100000}};
        failedReads = 0;
        Sent record = printRecord(platform, simpleJob(c.emulation, c.emulation == 17008 ? "" : ";"), c.plot);
        c.given(record);
        record = run(record);
        ORB_hostSetProgress(nullptr, nullptr);
        EXPECT_EQ(terminal.written + registry.written, c.arrives);
        EXPECT_EQ(std::to_string(record.ORB_errorID) + "; " + reportText(), c.outcome);
        const std::string console = platform.console.out + platform.console.err;
        EXPECT_NE(console.find(c.console), std::string::npos) << console;
        EXPECT_EQ(failedReads % 11, 0); // each is tried so often
        EXPECT_EQ(std::string(256, '\0'), std::string(record.ORB_writeBuffer, 256));
        const bool serial = record.ORB_OutputMethode == kORB_OSX_METHOD_SERIAL;
        EXPECT_EQ(logged("USBDeviceOpen") > 0, !serial);
        const bool flushes = serial && lastReport().stopReason == kORB_StopByHost && !strstr(c.what, "pseudo");
        EXPECT_EQ(logged("tcflush 5 TCOFLUSH") > 0, flushes);
    }
}

TEST_F(Print, UsbCallsInOrder) {
    ORB_ServiceRecord record = printRecord(platform, simpleJob(17002, ";"), "PU;");
    useUsb(record);
    registry.devices = {{kVendor, 7, 0x01100000}};
    record = run(record);
    EXPECT_EQ(record.ORB_lastService, 2);
    const Log calls(std::find(platform.log.begin(), platform.log.end(), "USBInterfaceOpen"), platform.log.end());
    EXPECT_EQ(calls, (Log{"USBInterfaceOpen", "SetAlternateInterface 1", "ClearPipeStallBothEnds 2", "sleep 2",
                          "WritePipe 2 \"IN;\"", "WritePipe 2 \"PU;\"", "USBInterfaceClose"}));
}

TEST_F(Print, ATailOfWhichNothingGoesOutIsNoFailedService) {
    registry.devices = {{kVendor, 7, 0x01100000}};
    for (std::string tail : {"PU", "PU;\x80"}) {
        ORB_ServiceRecord record = printRecord(platform, simpleJob(17009, ";"), std::string(64, ';') + tail);
        useUsb(record);
        platform.script("WritePipe", gives(kIOReturnIOError), 6); // all attempts of the chunk
        run(record);
        EXPECT_EQ(lastReport().piecesFailed, 1U);
        EXPECT_EQ(platform.console.out.find("returns an error"), std::string::npos) << platform.console.out;
    }
}

TEST_F(Print, ToolsGoOutInOrderBeforeThePlot) {
    const struct {
        std::string tool4;
        scripted::Outcome firstWrite;
        std::string arrives;
        const char *outcome;
    } cases[] = {
        {"", gives(3), "P1,P2,P3,P5,P6,P7,P8,U1,1,@", "0; 6+0+0, 1+0, 0"},
        {"P4,", fails(EIO), "P2,P3,P4,P5,P6,P7,P8,U1,1,@", "0, 25002/5 at -1; 6+0+0, 1+0, 0"},
        {std::string(256, 'x'), gives(3), "P1,P2,P3,", "7, 23009/0 at -1; 0+0+0, 0+0, 0"},
    };
    for (const auto &c : cases) {
        Keys keys = {{"Plotter emulation ID :", integer(17008)}, {"ORB_UseTools :", integer(1)}};
        for (const char number : std::string_view("87654321"))
            keys.push_back({std::string("ORB_CFSTR_Tool") + number + " :",
                            string(number == '4' ? c.tool4 : std::string("P") + number + ",")});
        platform.script("write", c.firstWrite);
        run(printRecord(platform, jobXML(keys), "U1,1,@"));
        EXPECT_EQ(terminal.written, c.arrives);
        EXPECT_EQ(reportText(), c.outcome);
    }
}

} // namespace
