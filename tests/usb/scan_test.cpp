#include "record/state.h"
#include "support/scripted.h"
#include "usb/plotter_table.h"

#include <gtest/gtest.h>

namespace {

using scripted::gives;

constexpr uint16_t kVendor = 0x0B75, kProduct = 0x1234;

class Scan : public testing::Test {
protected:
    Scan() {
        answer() = {};
        answer().ORB_USBidVendor = kVendor;
        answer().ORB_USBidProduct = kProduct;
        answer().ORB_deviceCount = 5;
    }
    scripted::UsbDevice plotter(uint32_t location) { return {kVendor, kProduct, location}; }
    scripted::UsbDevice other(uint32_t location) { return {0x1D6B, 2, location}; }

    scripted::Platform platform;
};

TEST_F(Scan, Outcomes) {
    const int32_t bad = kIOReturnNoResources;
    const scripted::UsbDevice bare = {0x1D6B, 2, 2, {1}, 1, false}; // without properties
    const struct {
        const char *what;
        std::vector<scripted::UsbDevice> devices;
        std::vector<std::pair<const char *, int32_t>> results; ///< of calls, in order; then they succeed
        int32_t status, errorID, count;
        uint16_t firstVendor; ///< of entry 1 afterwards
    } cases[] = {
        {"no iterator", {plotter(1)}, {{"IOServiceGetMatchingServices", bad}}, bad, kORB_ErrorGetServices, 0, 0},
        {"no device", {}, {}, 0, kORB_ErrorNoPlotter, 0, 0},
        {"a plotter among others", {other(1), plotter(2), other(3)}, {}, 0, kORB_NoError, 1, kVendor},
        {"seven plotters", std::vector(7, plotter(9)), {}, 0, kORB_NoError, 6, kVendor},
        {"a later device without plug-in empties entry 1",
         {plotter(1), other(2), plotter(3)},
         {{"IOCreatePlugIn", 0}, {"IOCreatePlugIn", bad}},
         0,
         kORB_ErrorPlugIn,
         2,
         0},
        {"an earlier one does not", {other(1), plotter(2)}, {{"IOCreatePlugIn", bad}}, 0, kORB_NoError, 1, kVendor},
        {"a device without properties ends the scan", {plotter(1), bare, plotter(3)}, {}, 0, kORB_NoError, 1, kVendor},
        {"the last call decides: destroying a plug-in",
         {plotter(1), bare},
         {{"IODestroyPlugIn", 0}, {"IODestroyPlugIn", bad}},
         bad,
         kORB_NoError,
         1,
         0},
        {"the last call decides: a vendor that cannot be read",
         {plotter(1), other(2)},
         {{"GetDeviceVendor", 0}, {"GetDeviceVendor", bad}},
         bad,
         kORB_NoError,
         1,
         0},
        {"no location", {plotter(1), plotter(2)}, {{"GetLocationID", bad}}, 0, kORB_NoError, 1, kVendor},
        {"no interface", {plotter(1)}, {{"QueryInterface", 1}}, 0, kORB_ErrorNoPlotter, 0, 0},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.what);
        scripted::Platform fresh;
        fresh.registry.devices = c.devices;
        for (const auto &[call, result] : c.results)
            fresh.script(call, gives(result));
        answer().ORB_USBplotterTable[0] = {};
        answer().ORB_USBplotterTable[0].idVendor = 0x7777;
        answer().ORB_USBplotterTable[0].reserved3[5] = 3;
        EXPECT_EQ(ORB_VectorixService2(), c.status);
        EXPECT_EQ(answer().ORB_errorID, c.errorID);
        EXPECT_EQ(answer().ORB_deviceCount, c.count);
        EXPECT_EQ(answer().ORB_lastService, 2);
        EXPECT_EQ(answer().ORB_USBplotterTable[0].idVendor, c.firstVendor);
        EXPECT_EQ(answer().ORB_USBplotterTable[0].reserved3[5], 3);
        EXPECT_EQ(fresh.console.out, "");
        answer().ORB_USBidVendor = kVendor;
    }
}

TEST_F(Scan, RecordsInOrderAndLeavesTheRestOfTheTable) {
    answer().ORB_USBplotterTable[2].idVendor = 0x5555;
    platform.registry.devices = {plotter(0x01100000), plotter(0x02100000)};
    platform.registry.devices[1].configurations = {1, 2};
    EXPECT_EQ(ORB_VectorixService2(), 0);
    EXPECT_EQ(answer().ORB_USBplotterTable[0].locationID, 0x01100000U);
    EXPECT_EQ(answer().ORB_USBplotterTable[1].locationID, 0x02100000U);
    EXPECT_EQ(answer().ORB_USBplotterTable[1].numConfigurations, 2);
    EXPECT_EQ(answer().ORB_USBplotterTable[2].idVendor, 0x5555);
    EXPECT_EQ(platform.log, (scripted::Log{"device", "device"})); // the scan asks for the older interface
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
            ORB_USBplotterEntry &entry = answer().ORB_USBplotterTable[k - 1];
            if ((c.filled >> (k - 1) & 1) == 0) continue;
            entry.idVendor = kVendor;
            entry.idProduct = kProduct;
            entry.locationID = 100 + k;
            entry.numConfigurations = static_cast<uint8_t>(k);
            entry.reserved3[0] = 1; // only four fields are copied
        }
        ORB_loadUSBDEVICE_0_values();
        EXPECT_EQ(answer().ORB_errorID, c.chosen == 0 ? kORB_ErrorTableEmpty : kORB_NoError);
        EXPECT_EQ(answer().ORB_USBplotterIndex, c.indexAfter);
        EXPECT_EQ(answer().ORB_USBlocationID, c.chosen);
        EXPECT_EQ(answer().ORB_USBnumConfigurations, c.chosen == 0 ? 0 : c.chosen - 100);
        EXPECT_EQ(answer().reserved9[0], 0);
    }
}

} // namespace
