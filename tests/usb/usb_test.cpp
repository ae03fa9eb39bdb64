// The table of USB plotters, the device that is prepared for a print, its interface and the writes on it.
#include "usb/device.h"
#include "usb/interface.h"
#include "usb/link.h"
#include "usb/plotter_table.h"

#include "record/state.h"
#include "support/steps.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <optional>

namespace {

using scripted::gives, scripted::Log, scripted::Steps;

constexpr int32_t kBusy = kIOReturnExclusiveAccess, kDenied = kIOReturnNotPermitted, kBad = kIOReturnIOError;
constexpr uint16_t kHubs = 0x1D6B, kVendor = 0x0B75;

class UsbTest : public testing::Test {
protected:
    UsbTest() { start(); }
    ~UsbTest() override { gORB_interfaceInterface.reset(); }

    void start(const Steps &steps = {}) {
        gORB_interfaceInterface.reset();
        platform.emplace();
        platform->registry.devices = {{kHubs, 2, 1}, {kVendor, 1, 2}};
        script(*platform, steps);
        answer() = {};
        answer().ORB_errorID = kORB_NoError;
        answer().ORB_OutputMethode = kORB_OSX_METHOD_USB;
        answer().ORB_USBidVendor = kVendor;
        answer().ORB_USBidProduct = 1;
        answer().ORB_USBlocationID = 2;
        answer().ORB_USB_PIPEOUT = 1;
    }
    long logged(std::string_view line) { return std::count(platform->log.begin(), platform->log.end(), line); }

    std::optional<scripted::Platform> platform;
};

using Device = UsbTest;

TEST_F(Device, OpensConfiguresAndCloses) {
    start({{"SetConfiguration", gives(0)},
           {"SetConfiguration", gives(kBad)}, // slept after, but its descriptor is not fetched again
           {"GetConfigurationDescriptorPtr", gives(0), 3},
           {"GetConfigurationDescriptorPtr", gives(kBad)}}); // skipped without a sleep
    platform->registry.devices[1].configurations = {1, 4, 9};
    EXPECT_EQ(ORB_VectorixService8(), 0);
    const Log calls(platform->log.begin() + 2, platform->log.end()); // behind the scan's
    EXPECT_EQ(calls,
              (Log{"device 245", "device 245", "USBDeviceOpen", "GetConfigurationDescriptorPtr 0", "SetConfiguration 1",
                   "sleep 1", "GetConfigurationDescriptorPtr 0", "GetConfigurationDescriptorPtr 1", "SetConfiguration 4",
                   "sleep 1", "GetConfigurationDescriptorPtr 2", "USBDeviceClose"}));
    EXPECT_EQ(answer().ORB_lastService, 2);
    EXPECT_EQ(answer().ORB_deviceCount, 0);
}

TEST_F(Device, OpenRetries) {
    const struct {
        const char *what;
        Steps steps;
        int32_t status;
        long opens, lines;
        unsigned slept; ///< by the open alone
    } kCases[] = {
        {"busy three times", {{"USBDeviceOpen", gives(kBusy), 3}}, 0, 4, 2, 2},
        {"denied, then open", {{"USBDeviceOpen", gives(kDenied)}}, 0, 2, 0, 0},
        {"busy, then denied", {{"USBDeviceOpen", gives(kBusy), 2}, {"USBDeviceOpen", gives(kDenied)}}, kDenied, 3, 1, 2},
        {"always busy", {{"USBDeviceOpen", gives(kBusy), 61}}, kBusy, 61, 60, 60},
    };
    for (const auto &c : kCases) {
        SCOPED_TRACE(c.what);
        start(c.steps);
        EXPECT_EQ(ORB_VectorixService8(), c.status);
        EXPECT_EQ(answer().ORB_errorID, c.status == 0 ? kORB_NoError : kORB_ErrorDeviceNotOpened);
        EXPECT_EQ(logged("USBDeviceOpen"), c.opens);
        EXPECT_EQ(platform->clock.slept, c.slept + (c.status == 0 ? 1 : 0));
        EXPECT_EQ(logged("out \"=>reported exclusiveopen : sleep 1 sec\\x0a\""), c.lines);
        EXPECT_EQ(logged("out \"[ORB_VectorixService8] & ORB_error ID 28004\\x0a\""), c.status == 0 ? 0 : 1);
    }
}

TEST_F(Device, SearchesForTheLocationThatItWasGiven) {
    // Nothing of the model is found: the device open still looks for the location, whatever stands there.
    answer().ORB_USBidProduct = 77;
    answer().ORB_USBlocationID = 1;
    EXPECT_EQ(ORB_VectorixService8(), 0);
    EXPECT_EQ(logged("USBDeviceClose"), 1);

    answer().ORB_USBlocationID = 3;
    EXPECT_EQ(ORB_VectorixService8(), 0);
    EXPECT_EQ(answer().ORB_errorID, kORB_ErrorNoPlotter);
}

using Scan = UsbTest;

TEST_F(Scan, Outcomes) {
    constexpr struct {
        const char *what, *devices; ///< P: a plotter, o: another device, -: one without properties
        const char *call;           ///< of which the nth fails
        int nth;
        int32_t status, errorID, count;
        uint16_t firstVendor; ///< of entry 1 afterwards
    } kCases[] = {
        {"no iterator", "P", "IOServiceGetMatchingServices", 1, kBad, kORB_ErrorGetServices, 0, 0},
        {"no device", "", "", 0, 0, kORB_ErrorNoPlotter, 0, 0},
        {"a plotter among others", "oPo", "", 0, 0, kORB_NoError, 1, kVendor},
        {"seven plotters", "PPPPPPP", "", 0, 0, kORB_NoError, 6, kVendor},
        {"a later device without plug-in empties entry 1", "PoP", "IOCreatePlugIn", 2, 0, kORB_ErrorPlugIn, 2, 0},
        {"an earlier one does not", "oP", "IOCreatePlugIn", 1, 0, kORB_NoError, 1, kVendor},
        {"a device without properties ends the scan", "P-P", "", 0, 0, kORB_NoError, 1, kVendor},
        {"the last call decides: destroying a plug-in", "P-", "IODestroyPlugIn", 2, kBad, kORB_NoError, 1, 0},
        {"or a vendor that cannot be read", "Po", "GetDeviceVendor", 2, kBad, kORB_NoError, 1, 0},
        {"no location", "PP", "GetLocationID", 1, 0, kORB_NoError, 1, kVendor},
        {"no interface", "P", "QueryInterface", 1, 0, kORB_ErrorNoPlotter, 0, 0},
    };
    for (const auto &c : kCases) {
        SCOPED_TRACE(c.what);
        start();
        platform->registry.devices.clear();
        for (const char device : std::string_view(c.devices))
            platform->registry.devices.push_back({device == 'P' ? kVendor : device == 'o' ? kHubs : uint16_t{0}, 1, 9});
        for (int i = 1; i <= c.nth; ++i)
            platform->script(c.call, gives(i == c.nth ? kBad : 0));
        answer().ORB_deviceCount = 5;
        answer().ORB_USBplotterTable[0].idVendor = 0x7777;
        EXPECT_EQ(ORB_VectorixService2(), c.status);
        EXPECT_EQ(answer().ORB_errorID, c.errorID);
        EXPECT_EQ(answer().ORB_deviceCount, c.count);
        EXPECT_EQ(answer().ORB_lastService, 2);
        EXPECT_EQ(answer().ORB_USBplotterTable[0].idVendor, c.firstVendor);
        EXPECT_EQ(platform->console.out, "");
    }
}

TEST_F(Scan, RecordsInOrderAndLeavesTheRestOfTheTable) {
    answer().ORB_USBplotterTable[2].idVendor = 0x5555;
    platform->registry.devices = {{kVendor, 1, 0x01100000}, {kVendor, 1, 0x02100000, {1, 2}}};
    EXPECT_EQ(ORB_VectorixService2(), 0);
    EXPECT_EQ(answer().ORB_USBplotterTable[0].locationID, 0x01100000U);
    EXPECT_EQ(answer().ORB_USBplotterTable[1].locationID, 0x02100000U);
    EXPECT_EQ(answer().ORB_USBplotterTable[1].numConfigurations, 2);
    EXPECT_EQ(answer().ORB_USBplotterTable[2].idVendor, 0x5555);
    EXPECT_EQ(platform->log, (Log{"device", "device"})); // the scan asks for the older interface
}

TEST_F(Scan, Selection) {
    constexpr struct {
        int32_t index;
        unsigned filled; ///< bit k-1: entry k is not empty
        int32_t indexAfter;
        uint32_t chosen; ///< location 100 + entry; 0: nothing chosen
    } kCases[] = {
        {1, 0b000001, 1, 101}, {2, 0b000011, 2, 102}, {4, 0b000011, 1, 101}, {4, 0b001001, 4, 104},
        {6, 0b100001, 6, 106}, {6, 0b000001, 1, 101}, {0, 0b000001, 0, 101}, {-3, 0b000011, -3, 101},
        {9, 0b000001, 1, 101}, {9, 0b100001, 9, 101}, {2, 0b111110, 2, 0},
    };
    for (const auto &c : kCases) {
        SCOPED_TRACE(testing::Message() << "index " << c.index << " of " << c.filled);
        answer() = {};
        answer().ORB_USBplotterIndex = c.index;
        for (unsigned k = 1; k <= 6; ++k) {
            if ((c.filled >> (k - 1) & 1) == 0) continue;
            // Only four fields are copied: not the last one.
            answer().ORB_USBplotterTable[k - 1] = {kVendor, 1, {}, 100 + k, {}, static_cast<uint8_t>(k), {1}};
        }
        ORB_loadUSBDEVICE_0_values();
        EXPECT_EQ(answer().ORB_errorID, c.chosen == 0 ? kORB_ErrorTableEmpty : kORB_NoError);
        EXPECT_EQ(answer().ORB_USBplotterIndex, c.indexAfter);
        EXPECT_EQ(answer().ORB_USBlocationID, c.chosen);
        EXPECT_EQ(answer().ORB_USBnumConfigurations, c.chosen == 0 ? 0 : c.chosen - 100);
        EXPECT_EQ(answer().reserved9[0], 0);
    }
}

constexpr const char *kOpen = "USBInterfaceOpen";

class Interface : public UsbTest {
protected:
    bool open() { return usb::openInterface({"already", "opened"}, &status); }

    int32_t status = 99;
};

TEST_F(Interface, OpenProcedure) {
    const struct {
        const char *what;
        Steps steps;
        uint32_t location; ///< 0: there are no devices at all
        int32_t status, errorID;
        long opens;
        unsigned slept;
    } kCases[] = {
        {"at once", {}, 2, 0, kORB_NoError, 1, 0},
        {"exclusive access", {{kOpen, gives(kBusy)}}, 2, kBusy, kORB_ErrorInterfaceNotOpened, 1, 0},
        {"one failure is retried at once", {{kOpen, gives(kBad)}}, 2, 0, kORB_NoError, 2, 0},
        {"busy is special only at first", {{kOpen, gives(kBad)}, {kOpen, gives(kBusy), 2}}, 2, 0, kORB_NoError, 4, 2},
        {"21 failures", {{kOpen, gives(kBad), 21}}, 2, kBad, kORB_ErrorInterfaceNotOpened, 21, 20},
        {"no plug-in", {{"IOCreatePlugIn", gives(kBad), 2}}, 2, kBad, kORB_ErrorInterfaceNotFound, 0, 0},
        {"no registry", {{"IOMasterPort", gives(kBad)}}, 2, kBad, kORB_ErrorMasterPort, 0, 0},
        {"no such location", {}, 5, 0, kORB_ErrorInterfaceNotFound, 0, 0},
        {"no device", {}, 0, 0, kORB_NoError, 0, 0},
    };
    for (const auto &c : kCases) {
        SCOPED_TRACE(c.what);
        start(c.steps);
        answer().ORB_USBlocationID = c.location;
        if (c.location == 0) platform->registry.devices.clear();
        const bool opens = c.status == 0 && c.opens > 0;
        EXPECT_EQ(open(), opens);
        EXPECT_EQ(status, c.status);
        EXPECT_EQ(answer().ORB_errorID, c.errorID);
        EXPECT_EQ(logged(kOpen), c.opens);
        EXPECT_EQ(platform->clock.slept, c.slept);
        EXPECT_EQ(answer().ORB_interfaceOpen, opens ? 1U : 0U);
        EXPECT_EQ(bool(gORB_interfaceInterface), opens);
        EXPECT_EQ(platform->console.out, opens && c.opens == 1 ? "opened\n" : "");
    }
}

TEST_F(Interface, AlternateSettingAlsoWhenAlreadyOpen) {
    ASSERT_TRUE(open());
    platform->log.clear();
    answer().ORB_interfaceOpen = 7; // anything but 0 counts as open
    EXPECT_TRUE(open());
    EXPECT_EQ(platform->log, (Log{"out \"already\\x0a\"", "SetAlternateInterface 1"}));
    ORB_USBclose_Plotterinterface(); // but only exactly 1 is closed
    EXPECT_TRUE(gORB_interfaceInterface);
    ORB_VectorixService12(); // forgets it, and the next open releases it
    platform->log.clear();
    ASSERT_TRUE(open());
    EXPECT_EQ(platform->log[0], "released open");
    ORB_USBclose_Plotterinterface();
    ORB_USBclose_Plotterinterface();
    EXPECT_EQ(platform->log.back(), "USBInterfaceClose");
    EXPECT_EQ(answer().ORB_interfaceOpen, 0U);
    EXPECT_FALSE(gORB_interfaceInterface);
}

TEST_F(Interface, AFullBufferIsWrittenToItsEnd) {
    ASSERT_TRUE(open());
    memset(answer().ORB_writeBuffer, 'x', 256); // no room for a NUL
    platform->script("WritePipe", gives(kBad), 5);
    ORB_USBwritePlotter();
    EXPECT_EQ(platform->registry.written, std::string(256, 'x'));
    EXPECT_EQ(logged("out \"[S9] Unable to write on this pipe  1\\x0a\""), 5);
}

TEST_F(Interface, ACloseForgivesOneFailure) {
    for (const auto &[before, after] : {std::pair{29005, int{kORB_NoError}}, {28004, 28004}}) {
        answer().ORB_errorID = before;
        EXPECT_EQ(ORB_VectorixService10(), 0);
        EXPECT_EQ(answer().ORB_errorID, after);
    }
}

} // namespace
