// Service 17 over a scripted USB plotter.
#include "support/job.h"
#include "usb/interface.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace {

using namespace jobs;
using scripted::gives;
using scripted::Log;

constexpr uint16_t kVendor = 0x0B75;
constexpr const char *kStart17008 = ";:ECN,EF,P0,A,U,U0,0,K,";

class UsbPrint : public testing::Test {
protected:
    UsbPrint() { platform.registry.devices = {{kVendor, 7, 0x01100000}}; }
    ~UsbPrint() override { EXPECT_FALSE(gORB_interfaceInterface); }

    ORB_ServiceRecord record(std::string job, std::string plot) {
        ORB_ServiceRecord made = printRecord(platform, std::move(job), std::move(plot));
        made.ORB_OutputMethode = kORB_OSX_METHOD_USB;
        made.ORB_USBidVendor = kVendor;
        made.ORB_USBidProduct = 7;
        return made;
    }
    ORB_ServiceRecord print(int emulation, std::string plot) {
        return run(record(simpleJob(emulation, ";"), std::move(plot)));
    }
    ORB_ServiceRecord run(ORB_ServiceRecord sent) {
        platform.log.clear();
        platform.console.out.clear();
        platform.registry.written.clear();
        return ORB_getVectorixCS2(sent);
    }

    scripted::Platform platform;
};

TEST_F(UsbPrint, StartTextsThenTheBytesOfTheSerialRoad) {
    const std::string plot = "SP1;PU0,0;PD1,1;PD2,2;PD3,3;PD4,4;PD5,5;PD6,6;PD7,7;PD8,8;PD9,9;PD10,10;PU;";
    ORB_ServiceRecord returned = print(17002, plot + "rest");
    EXPECT_EQ(platform.registry.written, "IN;" + plot);
    EXPECT_EQ(returned.ORB_errorID, kORB_NoError);
    EXPECT_EQ(returned.ORB_lastService, 2);
    EXPECT_EQ(returned.ORB_deviceCount, 0);
    EXPECT_EQ(returned.ORB_interfaceOpen, 0U);
    EXPECT_EQ(returned.ORB_USB_PIPEOUT, 2);
    EXPECT_EQ(platform.console.out, " [S17] called by ORB Vectorix\n");
    Log calls(std::find(platform.log.begin(), platform.log.end(), "USBInterfaceOpen"), platform.log.end());
    calls.resize(5);
    EXPECT_EQ(calls, (Log{"USBInterfaceOpen", "SetAlternateInterface 1", "ClearPipeStallBothEnds 2", "sleep 2",
                          "WritePipe 2 \"IN;\""}));
    EXPECT_EQ(platform.log.back(), "USBInterfaceClose");
    ORB_JobReport report = lastReport();
    EXPECT_EQ(report.sentBytes, static_cast<int64_t>(plot.size()));
    EXPECT_EQ(report.withheldBytes, 4);

    run(record(jobXML({{"Plotter emulation ID :", integer(17008)},
                       {"ORB_UseTools :", integer(1)},
                       {"ORB_CFSTR_Tool2 :", string("P2,")}}),
               "U1,1,@"));
    EXPECT_EQ(platform.registry.written, std::string(kStart17008) + kStart17008 + "P2,U1,1,@");
    print(17009, "PU;"); // no start-up text
    EXPECT_EQ(platform.registry.written, "PU;");
}

TEST_F(UsbPrint, FailuresAtTheStart) {
    platform.registry.script("ClearPipeStallBothEnds", gives(kIOUSBPipeStalled));
    platform.registry.script("WritePipe", gives(kIOReturnIOError)); // "IN;" is tried once
    ORB_ServiceRecord returned = print(17002, "PU;");
    EXPECT_EQ(platform.registry.written, "PU;");
    EXPECT_EQ(returned.ORB_errorID, kORB_NoError);
    EXPECT_EQ(lastReport().firstErrorID, kORB_ErrorPipe);
    EXPECT_EQ(lastReport().firstStatus, kIOUSBPipeStalled);
    EXPECT_NE(platform.console.out.find(
                  "ORBTARGET_API_MAC_OSX_PANTHER  : ClearPipeStallBothEnds returns an error : -536854449[S18] first "
                  "attempt : unable to write on this pipe  2\n"),
              std::string::npos)
        << platform.console.out;

    platform.registry.script("WritePipe", gives(kIOReturnIOError), 6); // the first of the two start-up texts
    print(17008, "U1,1,@");
    EXPECT_EQ(platform.registry.written, std::string(kStart17008) + "U1,1,@");
    EXPECT_NE(platform.console.out.find("[S18 : ORB_readPlotFile2Write] & ORB_error ID 29008\n"), std::string::npos);
}

TEST_F(UsbPrint, NoLink) {
    const struct {
        const char *what;
        std::function<void(scripted::Registry &)> given;
        int32_t errorID, firstErrorID, result;
        const char *step; ///< that shows the failure; nullptr: the console stays silent
    } kCases[] = {
        {"held by another", [](auto &r) { r.script("USBInterfaceOpen", gives(kIOReturnExclusiveAccess)); },
         kORB_ErrorInterfaceNotOpened, kORB_ErrorInterfaceNotOpened, kIOReturnExclusiveAccess, "ORB_readPlotFile2Write"},
        {"no interface listed", [](auto &r) { r.devices[0].interfaces = 0; }, kORB_NoError, kORB_ErrorInterfaceNotFound, 0,
         nullptr},
        {"device not opened", [](auto &r) { r.script("USBDeviceOpen", gives(kIOReturnNotPermitted), 2); },
         kORB_ErrorDeviceNotOpened, kORB_ErrorDeviceNotOpened, kIOReturnNotPermitted, "ORB_VectorixService8"},
    };
    for (const auto &c : kCases) {
        SCOPED_TRACE(c.what);
        platform.registry.devices = {{kVendor, 7, 0x01100000}};
        c.given(platform.registry);
        ORB_ServiceRecord returned = print(17002, "PU;");
        EXPECT_EQ(returned.ORB_errorID, c.errorID);
        EXPECT_EQ(platform.registry.written, "");
        EXPECT_EQ(lastReport().stopReason, unsigned{kORB_StopNoLink});
        EXPECT_EQ(lastReport().firstErrorID, c.firstErrorID);
        EXPECT_EQ(lastReport().firstStatus, c.result);
        if (c.step) {
            std::string line =
                "[ORB_VectorixService17] " + std::string(c.step) + " returns an error " + std::to_string(c.result) + "\n";
            EXPECT_NE(platform.console.out.find(line), std::string::npos) << platform.console.out;
        }
    }
}

TEST_F(UsbPrint, EarlyReturnsCloseTheInterface) {
    ORB_ServiceRecord sent = record(simpleJob(17002, ";"), "PU;");
    platform.files.files.erase(kPlotPath);
    ORB_ServiceRecord returned = run(sent);
    EXPECT_EQ(returned.ORB_errorID, kORB_ErrorOpeningPlotFile);
    EXPECT_EQ(returned.ORB_interfaceOpen, 0U);
    EXPECT_EQ(platform.log.back(), "out \"[main] & ORB_error ID 38001\\x0a\"");
    EXPECT_EQ(std::count(platform.log.begin(), platform.log.end(), "USBInterfaceClose"), 1);
}

TEST_F(UsbPrint, APieceCountsOnceHoweverOftenItIsTried) {
    std::string plot(300, 'x');
    platform.registry.script("WritePipe", gives(0), 2);
    platform.registry.script("WritePipe", gives(kIOReturnNoDevice), 8); // the second piece six times, the third twice
    ORB_ServiceRecord returned = print(17002, plot + ";");
    ORB_JobReport report = lastReport();
    EXPECT_EQ(report.piecesFailed, 1U);
    EXPECT_EQ(report.failedBytes, 64);
    EXPECT_EQ(report.sentBytes, 301 - 64);
    EXPECT_EQ(report.firstErrorID, kORB_ErrorPipe);
    EXPECT_EQ(report.firstStatus, kIOReturnNoDevice);
    EXPECT_EQ(report.firstErrorOffset, 64);
    EXPECT_EQ(returned.ORB_errorID, kORB_NoError);
}

TEST_F(UsbPrint, AThirdMethodSendsNothing) {
    ORB_ServiceRecord sent = record(simpleJob(17002, ";"), "PU;");
    sent.ORB_OutputMethode = 3;
    ORB_ServiceRecord returned = run(sent);
    EXPECT_EQ(returned.ORB_errorID, kORB_NoError);
    EXPECT_EQ(platform.registry.written, "");
    EXPECT_EQ(std::count(platform.log.begin(), platform.log.end(), "USBDeviceOpen"), 1); // it takes the USB road
    EXPECT_EQ(lastReport().failedBytes, 3);
    EXPECT_EQ(lastReport().stopReason, unsigned{kORB_StopNoLink});
}

TEST_F(UsbPrint, StopsInTheMiddle) {
    platform.registry.onWrite = [this](std::string_view) {
        if (platform.registry.written.size() > 100) ORB_hostStop();
    };
    ORB_ServiceRecord returned = print(17002, std::string(1000, 'x') + ";");
    EXPECT_EQ(returned.ORB_errorID, kORB_ErrorStopped);
    EXPECT_EQ(lastReport().stopReason, unsigned{kORB_StopByHost});
    EXPECT_LT(lastReport().sentBytes, 300);
    EXPECT_EQ(returned.ORB_interfaceOpen, 0U);
}

} // namespace
