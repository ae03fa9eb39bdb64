#include "record/state.h"
#include "support/scripted.h"
#include "usb/device.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace {

using scripted::gives;
using scripted::Log;

constexpr const char *kBusyLine = "=>reported exclusiveopen : sleep 1 sec\n";
constexpr int32_t kBusy = kIOReturnExclusiveAccess, kDenied = kIOReturnNotPermitted;

class UsbDeviceTest : public testing::Test {
protected:
    UsbDeviceTest() {
        answer() = {};
        answer().ORB_USBidVendor = 0x0B75;
        answer().ORB_USBidProduct = 1;
        platform.registry.devices = {{0x1D6B, 2, 1}, {0x0B75, 1, 2}};
    }
    long logged(const char *line) { return std::count(platform.log.begin(), platform.log.end(), line); }

    scripted::Platform platform;
};

TEST_F(UsbDeviceTest, OpensConfiguresAndCloses) {
    platform.registry.devices[1].configurations = {1, 4, 9};
    platform.script("SetConfiguration", gives(0));
    platform.script("SetConfiguration",
                    gives(kIOReturnIOError)); // slept after, but its descriptor is not fetched again
    platform.script("GetConfigurationDescriptorPtr", gives(0), 3);
    platform.script("GetConfigurationDescriptorPtr", gives(kIOReturnIOError)); // skipped without a sleep
    EXPECT_EQ(ORB_VectorixService8(), 0);
    Log calls(platform.log.begin() + 2, platform.log.end()); // behind the scan's
    EXPECT_EQ(calls,
              (Log{"device 245", "device 245", "USBDeviceOpen", "GetConfigurationDescriptorPtr 0", "SetConfiguration 1",
                   "sleep 1", "GetConfigurationDescriptorPtr 0", "GetConfigurationDescriptorPtr 1", "SetConfiguration 4",
                   "sleep 1", "GetConfigurationDescriptorPtr 2", "USBDeviceClose"}));
    EXPECT_EQ(answer().ORB_errorID, kORB_NoError);
    EXPECT_EQ(answer().ORB_lastService, 2);
    EXPECT_EQ(answer().ORB_deviceCount, 0);
    EXPECT_EQ(answer().ORB_USBdeviceOpen, 0U);
    EXPECT_EQ(platform.console.out, "");
}

TEST_F(UsbDeviceTest, OpenRetries) {
    const struct {
        const char *what;
        std::vector<std::pair<int32_t, int>> results; ///< code, times; then it opens
        int32_t status, errorID;
        long opens, lines;
        unsigned slept; ///< by the open alone
    } kCases[] = {
        {"busy three times", {{kBusy, 3}}, 0, kORB_NoError, 4, 2, 2},
        {"denied, then open", {{kDenied, 1}}, 0, kORB_NoError, 2, 0, 0},
        {"busy, then denied", {{kBusy, 2}, {kDenied, 1}}, kDenied, kORB_ErrorDeviceNotOpened, 3, 1, 2},
        {"always busy", {{kBusy, 61}}, kBusy, kORB_ErrorDeviceNotOpened, 61, 60, 60},
    };
    for (const auto &c : kCases) {
        SCOPED_TRACE(c.what);
        platform.log.clear();
        platform.console.out.clear();
        platform.clock.slept = 0;
        for (auto [code, times] : c.results)
            platform.script("USBDeviceOpen", gives(code), times);
        EXPECT_EQ(ORB_VectorixService8(), c.status);
        EXPECT_EQ(answer().ORB_errorID, c.errorID);
        EXPECT_EQ(logged("USBDeviceOpen"), c.opens);
        EXPECT_EQ(platform.clock.slept, c.slept + (c.status == 0 ? 1 : 0));
        std::string out;
        for (long i = 0; i < c.lines; ++i)
            out += kBusyLine;
        if (c.status != 0) {
            out += "[ORB_VectorixService8] ORB_USB_getCustomergORB_deviceInterface returns an error " +
                   std::to_string(c.status) + "\n[ORB_VectorixService8] & ORB_error ID 28004\n";
        }
        EXPECT_EQ(platform.console.out, out);
    }
}

TEST_F(UsbDeviceTest, SearchesForTheLocationThatItWasGiven) {
    // Nothing of the model is found: the device open still looks for the location, whatever stands there.
    answer().ORB_USBidProduct = 77;
    answer().ORB_USBlocationID = 1;
    EXPECT_EQ(ORB_VectorixService8(), 0);
    EXPECT_EQ(answer().ORB_errorID, kORB_NoError);
    EXPECT_EQ(logged("USBDeviceClose"), 1);

    answer().ORB_USBlocationID = 3;
    EXPECT_EQ(ORB_VectorixService8(), 0);
    EXPECT_EQ(answer().ORB_errorID, kORB_ErrorNoPlotter);

    // A scan that fails ends the service without a line.
    platform.console.out.clear();
    answer().ORB_interfaceOpen = 1;
    platform.script("IOMasterPort", gives(kIOReturnNoMemory));
    EXPECT_EQ(ORB_VectorixService8(), kIOReturnNoMemory);
    EXPECT_EQ(answer().ORB_errorID, kORB_ErrorMasterPort);
    EXPECT_EQ(answer().ORB_interfaceOpen, 0U);
    EXPECT_EQ(platform.console.out, "");
}

} // namespace
