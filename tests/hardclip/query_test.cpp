// Services 7 and 11 in virtual time.
#include "hardclip/requests.h"
#include "platform/posix/stop.h"
#include "record/state.h"
#include "support/job.h"
#include "usb/interface.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>

namespace {

using scripted::gives;

ORB_QueryReport queryReport() {
    ORB_QueryReport report{};
    report.structSize = sizeof report;
    ORB_hostGetQueryReport(&report);
    return report;
}

struct Values {
    double v[4];
    bool operator==(const Values &) const = default;
};
Values valuesOf(const ORB_ServiceRecord &r) { return {{r.ORB_HARDC_1, r.ORB_HARDC_2, r.ORB_HARDC_3, r.ORB_HARDC_4}}; }

class SerialQuery : public testing::Test {
protected:
    ORB_ServiceRecord ask(int32_t emulation, std::vector<std::string> replies, uint32_t variant = 0) {
        ORB_ServiceRecord record = jobs::printRecord(platform, "", "");
        record.ORB_serviceNumber = kORB_ServiceSerialHardClip;
        record.ORB_EmulationID = emulation;
        record.ORB_emulationVariant = variant;
        record.ORB_HARDC_2 = record.ORB_HARDC_4 = 77;
        platform.terminal.replies.assign(replies.begin(), replies.end());
        platform.terminal.written.clear();
        platform.clock.slept = 0;
        platform.log.clear();
        platform.console.out.clear();
        return ORB_getVectorixCS2(record);
    }
    long reads() const {
        return std::count_if(platform.log.begin(), platform.log.end(),
                             [](const std::string &l) { return l.starts_with("read "); });
    }
    ~SerialQuery() override { EXPECT_TRUE(platform.terminal.openPaths.empty()); }

    scripted::Platform platform;
};

struct SerialCase {
    const char *what;
    int32_t emulation;
    uint32_t variant;
    std::vector<std::string> replies;
    std::string asked;
    Values values;
    int32_t errorID; ///< of the query report
    long reads;
    unsigned slept; ///< the close's two seconds are among them
};

TEST_F(SerialQuery, Dialogues) {
    const std::string escape = "\x1b%0B\x03NP4,\x03NP7,70,\x03NP7,76,!ST1;";
    const SerialCase kCases[] = {
        {"HP-GL", 17001, 0, {"0,0,15200,10800\r"}, "IN;OH;", {{0, 0, 15200, 10800}}, kORB_NoError, 1, 6},
        {"silence", 17001, 0, {}, "IN;OH;", {{0, 0, 0, 0}}, kORB_ErrorNoReply, 11, 16},
        {"a part ends the polling", 17001, 0, {"0,0,15200\r"}, "IN;OH;", {{0, 0, 0, 0}}, kORB_ErrorNoReply, 1, 6},
        {"blanks", 17005, 0, {"1 2 3 4\r"}, "IN-1;OH;", {{1, 2, 3, 4}}, kORB_NoError, 1, 6},
        {"variant 9", 17030, 9, {",,,,1,2,3,4,"}, ";:EF,EC5,ER,Q@", {{1, 2, 3, 4}}, kORB_NoError, 1, 6},
        {"a pair", 17009, 1, {"1,2\r", "3,4\r"}, "[U", {{1, 2, 3, 4}}, kORB_NoError, 2, 9},
        {"no second pair", 17009, 1, {"1,2\r"}, "[U", {{1, 2, 0, 0}}, kORB_ErrorNoReply, 11, 18},
        {"half a second pair", 17009, 1, {"1,2\r", "3,"}, "[U", {{1, 2, 3, 111}}, kORB_ErrorNoReply, 2, 9},
        {"17009 as 17010", 17009, 2, {"1,2,3,4\r"}, escape, {{1, 2, 3, 4}}, kORB_NoError, 1, 6},
    };
    for (const SerialCase &c : kCases) {
        SCOPED_TRACE(c.what);
        ORB_ServiceRecord record = ask(c.emulation, c.replies, c.variant);
        EXPECT_EQ(platform.terminal.written, c.asked);
        EXPECT_EQ(valuesOf(record), c.values);
        EXPECT_EQ(record.ORB_errorID, kORB_NoError); // the close's
        EXPECT_EQ(record.ORB_lastService, 6);
        EXPECT_EQ(record.ORB_portFD, -1);
        EXPECT_EQ(record.ORB_EmulationID, c.variant == 2 ? 17010 : c.emulation);
        EXPECT_EQ(queryReport().errorID, c.errorID);
        EXPECT_EQ(reads(), c.reads);
        EXPECT_EQ(platform.clock.slept, c.slept);
        EXPECT_EQ(queryReport().reads, static_cast<uint32_t>(c.reads));
    }
}

TEST_F(SerialQuery, ALineThatEndsLeavesWithoutTheCheck) {
    platform.always("read", gives(0));
    ORB_ServiceRecord record = ask(17001, {});
    EXPECT_EQ(queryReport().errorID, kORB_NoError);
    EXPECT_EQ(reads(), 1);
    EXPECT_EQ(valuesOf(record), (Values{{0, 0, 0, 0}}));
}

TEST_F(SerialQuery, NoPortAndNoWrite) {
    platform.script("write", scripted::fails(EIO));
    ORB_ServiceRecord record = ask(17001, {});
    EXPECT_EQ(queryReport().errorID, kORB_ErrorUnvalidPort);
    EXPECT_EQ(reads(), 0);
    EXPECT_EQ(platform::stringView(record.ORB_CFSTR_message), "Service 7 : ORB_SerialreadHardClip() done, no error");

    platform.terminal.onWrite = [](std::string_view) { platform::requestStop(); };
    ask(17001, {}); // no reply is awaited then
    EXPECT_EQ(queryReport().reads, 0U);
    platform.terminal.onWrite = {};

    record.ORB_CFSTR_bsdIn_VectorixDevice = 0;
    record.ORB_serviceNumber = kORB_ServiceSerialHardClip;
    platform.console.out.clear();
    record = ORB_getVectorixCS2(record);
    EXPECT_EQ(record.ORB_errorID, kORB_SerialTools_errorNoBSDIn);
    EXPECT_EQ(platform::stringView(record.ORB_CFSTR_message),
              "Service 7 : ORB_SerialopenPort : kORB_SerialTools_errorNoBSDIn");
    EXPECT_EQ(platform.console.out, "\nNo ORB_CFSTR_bsdIn_VectorixDevice\n");
    EXPECT_EQ(queryReport().errorID, kORB_SerialTools_errorNoBSDIn);
}

// Over method 1 the request goes to USB, and the reply is still awaited on the serial line.
TEST_F(SerialQuery, RequestOverUsb) {
    platform.registry.devices = {{0x0B75, 7, 5}};
    ORB_ServiceRecord record = jobs::printRecord(platform, "", "");
    record.ORB_serviceNumber = kORB_ServiceSerialHardClip;
    record.ORB_OutputMethode = kORB_OSX_METHOD_USB;
    record.ORB_USBlocationID = 5;
    record.ORB_USB_PIPEOUT = 1;
    platform.terminal.replies = {"1,2,3,4\r"};
    platform.script("USBInterfaceOpen", gives(kIOReturnExclusiveAccess), 3); // no exception for it here
    record = ORB_getVectorixCS2(record);
    EXPECT_EQ(platform.registry.written, "IN;OH;");
    EXPECT_EQ(valuesOf(record), (Values{{1, 2, 3, 4}}));
    EXPECT_EQ(record.ORB_interfaceOpen, 0U);
    EXPECT_EQ(std::count(platform.log.begin(), platform.log.end(), "USBInterfaceOpen"), 4);
    EXPECT_EQ(std::count(platform.log.begin(), platform.log.end(), "ClearPipeStallBothEnds 1"), 0);
}

class UsbQuery : public testing::Test {
protected:
    UsbQuery() { platform.registry.devices = {{0x0B75, 7, 5}}; }

    ORB_ServiceRecord ask(uint16_t vendor, int32_t emulation, int32_t queryEmulation, std::vector<std::string> replies,
                          uint32_t variant = 0) {
        ORB_ServiceRecord record{};
        record.ORB_serviceNumber = kORB_ServiceUSBHardClip;
        record.ORB_OutputMethode = kORB_OSX_METHOD_USB;
        record.ORB_USBidVendor = vendor;
        record.ORB_USBlocationID = 5;
        record.ORB_EmulationID = emulation;
        record.ORB_queryEmulationID = queryEmulation;
        record.ORB_emulationVariant = variant;
        record.ORB_HARDC_2 = record.ORB_HARDC_4 = 77;
        platform.registry.replies.assign(replies.begin(), replies.end());
        platform.registry.written.clear();
        platform.clock.slept = 0;
        platform.log.clear();
        platform.console.out.clear();
        return ORB_getVectorixCS2(record);
    }
    ~UsbQuery() override { EXPECT_FALSE(gORB_interfaceInterface); }

    scripted::Platform platform;
};

TEST_F(UsbQuery, Dialogues) {
    const std::string start = ";:ECN,EF,P0,A,U,U0,0,K,";
    const struct {
        const char *what;
        uint16_t vendor;
        int32_t emulation, queryEmulation;
        uint32_t variant;
        std::vector<std::string> replies;
        std::string asked;
        Values values;
        unsigned slept;
    } kCases[] = {
        {"HP-GL", 0x0B75, 17001, 0, 0, {"0,0,15200,10800\r"}, "IN;OH;", {{0, 0, 15200, 10800}}, 4},
        {"start of 17002", 0x0F0B, 17002, 17002, 0, {"1,2,3,4"}, "IN;IN;OH;", {{1, 2, 3, 4}}, 4},
        {"blanks: digits are enough", 0x0C30, 17005, 0, 0, {"5 6\r"}, "IN-1;OH;", {{5, 0, 0, 0}}, 4},
        {"start of 17008",
         0x099F,
         17008,
         17008,
         3,
         {"(0,1,2,3,1,2,3,4,"},
         start + start + ";:EH,ECM,ER,Q@",
         {{1, 2, 3, 4}},
         4},
        {"a second read", 0x0B75, 17001, 0, 0, {"x", "1,2,3,4"}, "IN;OH;", {{1, 2, 3, 4}}, 7},
        {"pairs: asked again in each pass", 0x0B4D, 17009, 0, 1, {"1,2", "x0", "3,4"}, "[[UUUU", {{1, 2, 3, 4}}, 9},
        {"17010 by variant", 0x0B4D, 17009, 17010, 2, {"1,2", "3,4"}, start + "UU", {{1, 2, 3, 4}}, 6},
    };
    for (const auto &c : kCases) {
        SCOPED_TRACE(c.what);
        ORB_ServiceRecord record = ask(c.vendor, c.emulation, c.queryEmulation, c.replies, c.variant);
        EXPECT_EQ(platform.registry.written, c.asked);
        EXPECT_EQ(valuesOf(record), c.values);
        EXPECT_EQ(record.ORB_errorID, kORB_NoError);
        EXPECT_EQ(record.ORB_lastService, 10);
        EXPECT_EQ(record.ORB_interfaceOpen, 0U);
        EXPECT_EQ(record.ORB_USB_PIPEIN, 2); // the endpoint number of the last in pipe
        EXPECT_EQ(record.ORB_PlotterEmulationID, c.queryEmulation);
        EXPECT_EQ(platform.clock.slept, c.slept);
        EXPECT_EQ(queryReport().replyBytes, c.replies.back().size());
    }
}

TEST_F(UsbQuery, FailedReads) {
    const struct {
        int32_t code, errorID;
        size_t reads;
        unsigned slept;
    } kCases[] = {
        {kIOReturnNotResponding, kORB_ErrorPipe, 9, 56},
        {kIOReturnNoDevice, kORB_ErrorPlotterGone, 9, 56},
        {kIOReturnIOError, kORB_ErrorUSBNotOpen, 9, 56},
    };
    for (const auto &c : kCases) {
        SCOPED_TRACE(c.code);
        platform.script("ReadPipe", gives(c.code), 9);
        ORB_ServiceRecord record = ask(0x0B75, 17001, 0, {});
        EXPECT_EQ(record.ORB_errorID, c.errorID);
        EXPECT_EQ(queryReport().status, c.code);
        EXPECT_EQ(queryReport().reads, c.reads);
        EXPECT_EQ(platform.clock.slept, c.slept);
        EXPECT_EQ(valuesOf(record), (Values{{0, 0, 0, 0}}));
    }
    // A request that never went out is what is reported, if nothing was heard.
    platform.script("WritePipe", gives(kIOReturnNotWritable), 6);
    platform.script("ReadPipe", gives(kIOReturnNotResponding), 9);
    EXPECT_EQ(ask(0x0B75, 17001, 0, {}).ORB_errorID, kORB_ErrorPipe);
    EXPECT_EQ(queryReport().status, kIOReturnNotWritable);

    // Replies that never complete: ninety-nine passes.
    ORB_ServiceRecord record = ask(0x0B75, 17001, 0, std::vector<std::string>(120, "1,2"));
    EXPECT_EQ(record.ORB_errorID, kORB_NoError);
    EXPECT_EQ(queryReport().reads, 99U);
    EXPECT_EQ(platform.clock.slept, 2U + 5049U);
    EXPECT_EQ(valuesOf(record), (Values{{1, 0, 0, 0}}));
}

TEST_F(UsbQuery, SecondPairFailures) {
    platform.script("WritePipe", gives(0));
    platform.script("WritePipe", gives(kIOReturnIOError), 9);
    ORB_ServiceRecord record = ask(0x0B4D, 17009, 0, std::vector<std::string>(1, "1,2"), 1);
    EXPECT_EQ(record.ORB_errorID, kORB_NoError); // a write's failure leaves none
    EXPECT_EQ(queryReport().status, kIOReturnIOError);
    EXPECT_EQ(valuesOf(record), (Values{{1, 2, 111, 111}}));

    record = ask(0x0B4D, 17009, 0, {"1,2"}, 1); // silent from then on
    EXPECT_EQ(record.ORB_errorID, kORB_ErrorPipe);
    EXPECT_EQ(queryReport().reads, 10U);
}

TEST_F(UsbQuery, LinksAndPipes) {
    // A stalled pipe is shown and wiped; a failing write is tried again.
    platform.script("ClearPipeStallBothEnds", gives(kIOReturnIOError));
    platform.script("WritePipe", gives(kIOReturnIOError), 5);
    ORB_ServiceRecord record = ask(0x0B75, 17001, 0, {"1,2,3,4"});
    EXPECT_EQ(platform.registry.written, "IN;OH;"); // at the sixth attempt
    EXPECT_EQ(record.ORB_errorID, kORB_NoError);
    EXPECT_EQ(valuesOf(record), (Values{{1, 2, 3, 4}}));
    EXPECT_EQ(record.ORB_USB_PIPEIN, 2); // the choice by vendor: nothing was listed

    // An endpoint that is found by its number is asked for as a pipe: there must be a third one.
    platform.registry.endpoints = {{1, 3, 2}, {0, 2, 2}, {0, 1, 2}};
    record = ask(0x0B75, 17001, 0, {"1,2,3,4"});
    EXPECT_EQ(record.ORB_USB_PIPEIN, 3);
    const std::string listing =
        "gORB_interfaceInterface has 3 endpoints\nPipeRef 1: pipeID 3 direction in\n"
        "transfer type bulk, maxPacketSize 64\n [S11 ORB_readPlotFile2Write] GetPipeStatus ORB_pipe_in "
        "(kernResult == (kern_return_t) kIOReturnSuccess\nPipeRef 2: pipeID 2 direction out\n"
        "PipeRef 3: pipeID 1 direction out\n"
        "\n\n[S11] ClearPipeStallBothEnds succeed for ORB_pipe_in\n";
    EXPECT_NE(platform.console.out.find(listing), std::string::npos) << platform.console.out;

    platform.script("USBInterfaceOpen", gives(kIOReturnExclusiveAccess));
    record = ask(0x0B75, 17001, 0, {});
    EXPECT_EQ(record.ORB_errorID, kORB_ErrorInterfaceNotOpened);
    EXPECT_EQ(double{record.ORB_HARDC_2}, 77.0); // only service 7 zeroes the values first
    EXPECT_EQ(platform.clock.slept, 0U);

    record.ORB_OutputMethode = kORB_OSX_METHOD_SERIAL;
    record = ORB_getVectorixCS2(record);
    EXPECT_EQ(record.ORB_errorID, kORB_ErrorInterfaceNotOpened);
    EXPECT_EQ(queryReport().status, kIOReturnNotOpen);
    EXPECT_EQ(platform.clock.slept, 0U);
}

} // namespace
