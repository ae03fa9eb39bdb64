#include "usb/plotter_table.h"

#include "usb_fixture.h"

namespace {

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
            platform->registry.devices.push_back({device == 'P' ? kVendor : kHubs, 1, 9, {1}, 1, device != '-'});
        for (int i = 1; i <= c.nth; ++i)
            platform->script(c.call, gives(i == c.nth ? kBad : 0));
        answer().ORB_deviceCount = 5;
        answer().ORB_USBplotterTable[0].idVendor = 0x7777;
        answer().ORB_USBplotterTable[0].reserved3[5] = 3;
        EXPECT_EQ(ORB_VectorixService2(), c.status);
        EXPECT_EQ(answer().ORB_errorID, c.errorID);
        EXPECT_EQ(answer().ORB_deviceCount, c.count);
        EXPECT_EQ(answer().ORB_lastService, 2);
        EXPECT_EQ(answer().ORB_USBplotterTable[0].idVendor, c.firstVendor);
        EXPECT_EQ(answer().ORB_USBplotterTable[0].reserved3[5], 3);
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

} // namespace
