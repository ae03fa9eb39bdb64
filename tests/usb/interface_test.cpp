#include "usb/interface.h"

#include "record/state.h"
#include "support/scripted.h"
#include "usb/link.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>

namespace {

using scripted::gives;
using scripted::Log;

constexpr const char *kOpen = "USBInterfaceOpen";
constexpr int32_t kBusy = kIOReturnExclusiveAccess, kBad = kIOReturnIOError;

class UsbInterface : public testing::Test {
protected:
    UsbInterface() { reset(); }
    ~UsbInterface() override { gORB_interfaceInterface.reset(); }

    void reset() {
        gORB_interfaceInterface.reset();
        answer() = {};
        answer().ORB_errorID = kORB_NoError;
        answer().ORB_OutputMethode = kORB_OSX_METHOD_USB;
        answer().ORB_USBlocationID = 2;
        answer().ORB_USB_PIPEOUT = 1;
        platform.registry.devices = {{0x1D6B, 2, 1}, {0x0B75, 1, 2}};
        platform.log.clear();
        platform.console.out.clear();
        platform.clock.slept = 0;
    }

    scripted::Platform platform;
};

TEST_F(UsbInterface, OpenProcedure) {
    const struct {
        const char *what;
        std::vector<std::pair<const char *, std::vector<int32_t>>> results; ///< of calls, in order; then they succeed
        bool open;
        int32_t status, errorID;
        long opens;
        unsigned slept;
    } kCases[] = {
        {"at once", {}, true, 0, kORB_NoError, 1, 0},
        {"exclusive access", {{kOpen, {kBusy}}}, false, kBusy, kORB_ErrorInterfaceNotOpened, 1, 0},
        {"one failure is retried at once", {{kOpen, {kBad}}}, true, 0, kORB_NoError, 2, 0},
        {"exclusive access is special only at first", {{kOpen, {kBad, kBusy, kBusy}}}, true, 0, kORB_NoError, 4, 2},
        {"21 failures", {{kOpen, std::vector(21, kBad)}}, false, kBad, kORB_ErrorInterfaceNotOpened, 21, 20},
        {"no plug-in", {{"IOCreatePlugIn", {kBad, kBad}}}, false, kBad, kORB_ErrorInterfaceNotFound, 0, 0},
        {"no registry", {{"IOMasterPort", {kBad}}}, false, kBad, kORB_ErrorMasterPort, 0, 0},
    };
    for (const auto &c : kCases) {
        SCOPED_TRACE(c.what);
        reset();
        for (const auto &[call, results] : c.results) {
            for (const int32_t result : results)
                platform.script(call, gives(result));
        }
        int32_t status = 99;
        EXPECT_EQ(usb::openInterface({"already", "opened"}, &status), c.open);
        EXPECT_EQ(status, c.status);
        EXPECT_EQ(answer().ORB_errorID, c.errorID);
        EXPECT_EQ(std::count(platform.log.begin(), platform.log.end(), "USBInterfaceOpen"), c.opens);
        EXPECT_EQ(platform.clock.slept, c.slept);
        EXPECT_EQ(answer().ORB_interfaceOpen, c.open ? 1U : 0U);
        EXPECT_EQ(bool(gORB_interfaceInterface), c.open);
        EXPECT_EQ(platform.console.out, c.open && c.opens == 1 ? "opened\n" : "");
    }
    // No such location, and no interface at all.
    for (const int32_t expected : {kORB_ErrorInterfaceNotFound, kORB_NoError}) {
        reset();
        if (expected == kORB_NoError) platform.registry.devices.clear();
        answer().ORB_USBlocationID = 5;
        int32_t status = 99;
        EXPECT_FALSE(usb::openInterface({}, &status));
        EXPECT_EQ(status, 0);
        EXPECT_EQ(answer().ORB_errorID, expected);
    }
}

TEST_F(UsbInterface, AlternateSettingAlsoWhenAlreadyOpen) {
    answer().ORB_USBidVendor = 0x0B75;
    int32_t status = 0;
    ASSERT_TRUE(usb::openInterface({}, &status));
    platform.log.clear();
    answer().ORB_interfaceOpen = 7; // anything but 0 counts as open
    EXPECT_TRUE(usb::openInterface({"already", "opened"}, &status));
    EXPECT_EQ(platform.log, (Log{"out \"already\\x0a\"", "SetAlternateInterface 1"}));
    ORB_USBclose_Plotterinterface(); // but only exactly 1 is closed
    EXPECT_TRUE(gORB_interfaceInterface);
    answer().ORB_interfaceOpen = 1;
    ORB_USBclose_Plotterinterface();
    ORB_USBclose_Plotterinterface();
    EXPECT_EQ(platform.log.back(), "USBInterfaceClose");
    EXPECT_EQ(answer().ORB_interfaceOpen, 0U);
    EXPECT_FALSE(gORB_interfaceInterface);
}

TEST_F(UsbInterface, PipeChoice) {
    constexpr struct {
        uint16_t vendor;
        int32_t plotter;
        uint8_t out, in;
    } kCases[] = {
        {0x0B75, 20594, 2, 2}, {0x0B75, 20595, 1, 2}, {0x0B75, 20597, 1, 2}, {0x0B75, 20598, 2, 2}, {17022, 0, 2, 0x81},
        {17037, 0, 2, 0x81},   {2463, 0, 2, 1},       {3120, 0, 2, 1},       {0x0F0B, 20596, 1, 2},
    };
    for (const auto &c : kCases) {
        SCOPED_TRACE(testing::Message() << c.vendor << " " << c.plotter);
        answer().ORB_USBidVendor = c.vendor;
        answer().ORB_PlotterID = c.plotter;
        ORB_USBloadORB_pipe_inANDout();
        EXPECT_EQ(answer().ORB_USB_PIPEOUT, c.out);
        EXPECT_EQ(answer().ORB_USB_PIPEIN, c.in);
    }
    answer().ORB_OutputMethode = 3;
    answer().ORB_USB_PIPEOUT = 77;
    ORB_USBloadORB_pipe_inANDout();
    EXPECT_EQ(answer().ORB_USB_PIPEOUT, 77);
}

TEST_F(UsbInterface, WriterTriesSixTimes) {
    const struct {
        int failures;
        int32_t code, status, errorID;
        int64_t taken;
        std::string_view line; ///< the second of each pair
    } kCases[] = {
        {0, 0, 0, kORB_NoError, 3, ""},
        {2, kIOReturnNoDevice, 0, kORB_NoError, 3, " iokit_common_err(0x2c0) // no such device\n"},
        {6, kIOUSBPipeStalled, kIOReturnNotResponding, kORB_ErrorPipe, 0,
         " default unknownerror, thus device is not responding\n"},
    };
    for (const auto &c : kCases) {
        SCOPED_TRACE(testing::Message() << c.failures << " " << c.code);
        reset();
        int32_t status = 0;
        ASSERT_TRUE(usb::openInterface({}, &status));
        strcpy(answer().ORB_writeBuffer, "IN;");
        platform.script("WritePipe", gives(c.code), c.failures);
        EXPECT_EQ(ORB_USBwritePlotter(), c.status);
        EXPECT_EQ(answer().ORB_errorID, c.errorID);
        EXPECT_EQ(gORB_FoundationStruct.lastWrite.taken, c.taken);
        EXPECT_EQ(platform.clock.slept, 0U);
        std::string out;
        for (int i = 0; i < c.failures; ++i)
            out.append("[S9] Unable to write on this pipe  1\nORB Vectorix Foundation :").append(c.line);
        EXPECT_EQ(platform.console.out, out);
    }
    // The whole buffer without a NUL is 256 bytes, not more.
    memset(answer().ORB_writeBuffer, 'x', 256);
    platform.registry.written.clear();
    ORB_USBwritePlotter();
    EXPECT_EQ(platform.registry.written.size(), 256U);
}

TEST_F(UsbInterface, ServicesWithoutAnInterface) {
    strcpy(answer().ORB_writeBuffer, "IN;");
    answer().ORB_interfaceOpen = 1; // says the host
    EXPECT_EQ(ORB_VectorixService9(), 0);
    EXPECT_EQ(answer().ORB_errorID, kORB_ErrorPipe);
    EXPECT_EQ(answer().ORB_interfaceOpen, 0U);
    EXPECT_EQ(answer().ORB_lastService, 9);

    constexpr struct { int32_t before, after; } kIDs[] = {{29005, kORB_NoError}, {28004, 28004}};
    for (auto [before, after] : kIDs) {
        answer().ORB_errorID = before;
        EXPECT_EQ(ORB_VectorixService10(), 0);
        EXPECT_EQ(answer().ORB_errorID, after);
    }
    EXPECT_EQ(answer().ORB_lastService, 10);
}

TEST_F(UsbInterface, ServiceTwelveForgetsButTheNextOpenReleases) {
    int32_t status = 0;
    ASSERT_TRUE(usb::openInterface({}, &status));
    EXPECT_EQ(ORB_VectorixService12(), 0);
    EXPECT_EQ(answer().ORB_lastService, 12);
    EXPECT_EQ(answer().ORB_interfaceOpen, 0U);
    EXPECT_TRUE(gORB_interfaceInterface);
    platform.log.clear();
    ASSERT_TRUE(usb::openInterface({}, &status));
    EXPECT_EQ(platform.log, (Log{"released open", "USBInterfaceOpen"}));
}

} // namespace
