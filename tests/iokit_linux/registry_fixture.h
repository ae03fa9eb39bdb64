// The registry of this system over devices of the test.
#pragma once

#include "platform/iokit/linux/linux_registry.h"
#include "platform/posix/stop.h"
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
        platform::endCall();
        EXPECT_EQ(platform::liveRegistryObjects(), 0U);
        EXPECT_EQ(platform::liveObjectCount(), objectsBefore);
    }

    /// Calls visit with each service of the class, in the registry's order, and with those matching key and value only.
    template <typename Visit> void forEach(const char *className, Visit visit, const MatchingDictionary &also = {}) {
        mach_port_t port = 0;
        ASSERT_EQ(registry.masterPort(&port), kIOReturnSuccess);
        MatchingDictionary dictionary;
        ASSERT_TRUE(registry.matching(className, &dictionary));
        dictionary.insert(also.begin(), also.end());
        io_object_t iterator = 0;
        EXPECT_EQ(registry.matchingServices(port, dictionary, &iterator), kIOReturnSuccess);
        EXPECT_EQ(registry.deallocatePort(port), kIOReturnSuccess);
        while (const io_object_t service = registry.next(iterator)) {
            visit(service);
            EXPECT_EQ(registry.release(service), kIOReturnSuccess);
        }
        EXPECT_EQ(registry.release(iterator), kIOReturnSuccess);
    }

    std::string text(io_object_t service, const char *key) {
        const CFRef value(registry.createProperty(service, key));
        return std::string(platform::stringView(value.get()));
    }

    int number(io_object_t service, const char *key) {
        const CFRef value(registry.createProperty(service, key));
        int32_t result = -1;
        CFNumberGetValue(value.get(), kCFNumberSInt32Type, &result);
        return result;
    }

    /// What the service's plug-in gives for an interface ID; empty when it gives nothing.
    template <typename Interface>
    IOReference<Interface> query(io_object_t service, const UUIDBytes &type, const UUIDBytes &interfaceID) {
        IOCFPlugInInterface *plugIn = nullptr;
        EXPECT_EQ(registry.createPlugIn(service, type, &plugIn), kIOReturnSuccess);
        IOUnknown *made = nullptr;
        if (plugIn == nullptr) return {};
        const int32_t result = plugIn->QueryInterface(interfaceID, &made);
        EXPECT_EQ(result == 0, made != nullptr);
        EXPECT_EQ(registry.destroyPlugIn(plugIn), kIOReturnSuccess);
        return IOReference<Interface>(static_cast<Interface *>(made));
    }

    /// The device or interface object of the first one of that vendor.
    template <typename Interface> IOReference<Interface> find(const char *className, int vendor = 0x0B75) {
        constexpr bool kIsDevice = std::is_same_v<Interface, IOUSBDeviceInterface245>;
        IOReference<Interface> found;
        forEach(className, [&](io_object_t service) {
            if (found || number(service, "idVendor") != vendor) return;
            found = query<Interface>(service, kIsDevice ? kIOUSBDeviceUserClientTypeID : kIOUSBInterfaceUserClientTypeID,
                                     kIsDevice ? kIOUSBDeviceInterfaceID245 : kIOUSBInterfaceInterfaceID245);
        });
        return found;
    }
    auto findDevice() { return find<IOUSBDeviceInterface245>("IOUSBDevice"); }
    auto findInterface(int vendor = 0x0B75) { return find<IOUSBInterfaceInterface245>("IOUSBInterface", vendor); }

    platform::IORegistry &registry = platform::linuxRegistry();
    const uint32_t objectsBefore = platform::liveObjectCount();
    std::optional<bed::DeviceBed> bed;
};

using Strings = std::vector<std::string>;
