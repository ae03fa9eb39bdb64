#include "usb/interface.h"

#include "usb/link.h"
#include "usb_fixture.h"

#include <cstring>

namespace {

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
    answer().ORB_interfaceOpen = 1;
    ORB_USBclose_Plotterinterface();
    ORB_USBclose_Plotterinterface();
    EXPECT_EQ(platform->log.back(), "USBInterfaceClose");
    EXPECT_EQ(answer().ORB_interfaceOpen, 0U);
    EXPECT_FALSE(gORB_interfaceInterface);
}

TEST_F(Interface, PipeChoice) {
    constexpr struct {
        uint16_t vendor;
        int32_t plotter;
        uint8_t out, in;
    } kCases[] = {{kVendor, 20594, 2, 2}, {kVendor, 20595, 1, 2}, {17022, 20596, 2, 0x81}, {0x0F0B, 20596, 1, 2}};
    for (const auto &c : kCases) {
        answer().ORB_USBidVendor = c.vendor;
        answer().ORB_PlotterID = c.plotter;
        ORB_USBloadORB_pipe_inANDout();
        EXPECT_EQ(answer().ORB_USB_PIPEOUT, c.out) << c.vendor << " " << c.plotter;
        EXPECT_EQ(answer().ORB_USB_PIPEIN, c.in) << c.vendor << " " << c.plotter;
    }
}

TEST_F(Interface, WriterTriesSixTimes) {
    constexpr struct {
        int failures;
        int32_t code, status, errorID;
        int64_t taken;
    } kCases[] = {
        {5, kIOReturnNoDevice, 0, kORB_NoError, 3},
        {6, kIOUSBPipeStalled, kIOReturnNotResponding, kORB_ErrorPipe, 0},
    };
    for (const auto &c : kCases) {
        SCOPED_TRACE(c.failures);
        start({{"WritePipe", gives(c.code), c.failures}});
        ASSERT_TRUE(usb::openInterface({}, &status));
        strcpy(answer().ORB_writeBuffer, "IN;");
        EXPECT_EQ(ORB_USBwritePlotter(), c.status);
        EXPECT_EQ(answer().ORB_errorID, c.errorID);
        EXPECT_EQ(gORB_FoundationStruct.lastWrite.taken, c.taken);
        EXPECT_EQ(platform->clock.slept, 0U);
        EXPECT_EQ(logged("out \"[S9] Unable to write on this pipe  1\\x0a\""), c.failures);
    }
    memset(answer().ORB_writeBuffer, 'x', 256); // no room for a NUL
    ORB_USBwritePlotter();
    EXPECT_EQ(platform->registry.written, std::string(256, 'x'));
}

TEST_F(Interface, ACloseForgivesOneFailure) {
    for (const auto &[before, after] : {std::pair{29005, int{kORB_NoError}}, {28004, 28004}}) {
        answer().ORB_errorID = before;
        EXPECT_EQ(ORB_VectorixService10(), 0);
        EXPECT_EQ(answer().ORB_errorID, after);
    }
}

TEST_F(Interface, ServiceTwelveForgetsButTheNextOpenReleases) {
    ASSERT_TRUE(open());
    EXPECT_EQ(ORB_VectorixService12(), 0);
    EXPECT_EQ(answer().ORB_lastService, 12);
    EXPECT_EQ(answer().ORB_interfaceOpen, 0U);
    EXPECT_TRUE(gORB_interfaceInterface);
    platform->log.clear();
    ASSERT_TRUE(usb::openInterface({}, &status));
    EXPECT_EQ(platform->log, (Log{"released open", "USBInterfaceOpen", "SetAlternateInterface 1"}));
}

} // namespace
