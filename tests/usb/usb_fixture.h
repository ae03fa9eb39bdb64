// What the USB tests share: a bus with a hub and a plotter, and a record that looks for that plotter.
#pragma once

#include "record/state.h"
#include "support/steps.h"
#include "usb/interface.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <optional>
#include <string_view>

using scripted::gives;
using scripted::Log;
using scripted::Steps;

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
