#include "usb/device.h"

#include "usb_fixture.h"

namespace {

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
    EXPECT_EQ(answer().ORB_errorID, kORB_NoError);
    EXPECT_EQ(answer().ORB_lastService, 2);
    EXPECT_EQ(answer().ORB_deviceCount, 0);
    EXPECT_EQ(answer().ORB_USBdeviceOpen, 0U);
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
        std::string out;
        for (long i = 0; i < c.lines; ++i)
            out += "=>reported exclusiveopen : sleep 1 sec\n";
        if (c.status != 0) {
            out += "[ORB_VectorixService8] ORB_USB_getCustomergORB_deviceInterface returns an error " +
                   std::to_string(c.status) + "\n[ORB_VectorixService8] & ORB_error ID 28004\n";
        }
        EXPECT_EQ(platform->console.out, out);
    }
}

TEST_F(Device, SearchesForTheLocationThatItWasGiven) {
    // Nothing of the model is found: the device open still looks for the location, whatever stands there.
    answer().ORB_USBidProduct = 77;
    answer().ORB_USBlocationID = 1;
    EXPECT_EQ(ORB_VectorixService8(), 0);
    EXPECT_EQ(answer().ORB_errorID, kORB_NoError);
    EXPECT_EQ(logged("USBDeviceClose"), 1);

    answer().ORB_USBlocationID = 3;
    EXPECT_EQ(ORB_VectorixService8(), 0);
    EXPECT_EQ(answer().ORB_errorID, kORB_ErrorNoPlotter);

    start({{"IOMasterPort", gives(kBad)}}); // a scan that fails ends the service without a line
    answer().ORB_interfaceOpen = 1;
    EXPECT_EQ(ORB_VectorixService8(), kBad);
    EXPECT_EQ(answer().ORB_errorID, kORB_ErrorMasterPort);
    EXPECT_EQ(answer().ORB_interfaceOpen, 0U);
    EXPECT_EQ(platform->console.out, "");
}

} // namespace
