// The registry of this system over devices of the test.
#pragma once

#include "platform/iokit/linux/linux_registry.h"
#include "platform/posix/stop.h"
#include "record/service_search.h"
#include "support/usb_plotter.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

class RegistryTest : public testing::Test {
protected:
    void SetUp() override {
        if (const char *reason = bed::whyNot()) GTEST_SKIP() << reason;
        bed.emplace();
        platform::beginCall();
    }

    void TearDown() override {
        interface.reset();
        plotter.reset();
        platform::endCall();
        EXPECT_EQ(platform::liveRegistryObjects(), 0U);
        EXPECT_EQ(platform::liveObjectCount(), objectsBefore);
    }

    /// Calls visit with each service of the class, in the registry's order, and of those with that value only.
    template <typename Visit>
    static void forEach(const char *className, Visit visit, const char *property = nullptr, const char *value = nullptr) {
        int32_t status = 0;
        ServiceSearch search;
        ASSERT_TRUE(search.begin(className, &status, property, value));
        while (const IOObject service = search.next())
            visit(service);
    }

    static int number(const IOObject &service, const char *key) {
        const CFRef value(IORegistryEntryCreateCFProperty(service.get(), key));
        int32_t result = -1;
        CFNumberGetValue(value.get(), kCFNumberSInt32Type, &result);
        return result;
    }

    /// What the plug-in of the first service of that vendor gives.
    template <typename Interface>
    static IOReference<Interface> find(const char *className, int vendor, const UUIDBytes &type, const UUIDBytes &id) {
        IOReference<Interface> found;
        int32_t status = 0;
        forEach(className, [&](const IOObject &service) {
            if (!found && number(service, "idVendor") == vendor)
                found = queryServiceAs<Interface>(service, type, id, 0, &status);
        });
        return found;
    }
    static auto findDevice() {
        return find<IOUSBDeviceInterface245>("IOUSBDevice", 0x0B75, kIOUSBDeviceUserClientTypeID,
                                             kIOUSBDeviceInterfaceID245);
    }
    static auto findInterface(int vendor = 0x0B75) {
        return find<IOUSBInterfaceInterface245>("IOUSBInterface", vendor, kIOUSBInterfaceUserClientTypeID,
                                                kIOUSBInterfaceInterfaceID245);
    }

    const uint32_t objectsBefore = platform::liveObjectCount();
    std::optional<bed::DeviceBed> bed;
    std::optional<bed::UsbPlotter> plotter;
    IOReference<IOUSBInterfaceInterface245> interface;
};

using Strings = std::vector<std::string>;
