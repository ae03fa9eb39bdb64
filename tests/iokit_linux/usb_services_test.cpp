#include "registry_fixture.h"

namespace {

struct Place {
    const char *place;
    uint32_t locationID;
};

TEST_F(RegistryTest, DevicesInOrderOfLocation) {
    constexpr Place kPlaces[] = {
        {"2-1", 0x02080000},         {"1-10", 0x01500000},    {"1-2.3", 0x01118000},  {"1-2.3.4", 0x0111A000},
        {"1-3.1.2.3.4", 0x011891A0}, {"1-31.15", 0x01FF8000}, {"1-2.10", 0x01150000},
    };
    std::vector<std::unique_ptr<bed::UsbPlotter>> plotters;
    uint16_t product = 0;
    for (const Place &place : kPlaces)
        plotters.push_back(
            std::make_unique<bed::UsbPlotter>(*bed, bed::PlotterShape{.place = place.place, .product = product++}));

    uint32_t last = 0;
    size_t found = 0, hubs = 0;
    forEach("IOUSBDevice", [&](io_object_t service) {
        auto device = query<IOUSBDeviceInterface>(service, kIOUSBDeviceUserClientTypeID, kIOUSBDeviceInterfaceID);
        ASSERT_TRUE(device);
        uint32_t location = 0;
        uint16_t vendor = 0, model = 0;
        uint8_t configurations = 0;
        EXPECT_EQ(device->GetLocationID(&location), kIOReturnSuccess);
        EXPECT_EQ(device->GetDeviceVendor(&vendor), kIOReturnSuccess);
        EXPECT_EQ(device->GetDeviceProduct(&model), kIOReturnSuccess);
        EXPECT_EQ(device->GetNumberOfConfigurations(&configurations), kIOReturnSuccess);
        EXPECT_EQ(number(service, "idVendor"), vendor);
        EXPECT_EQ(number(service, "idProduct"), model);
        EXPECT_EQ(configurations, 1);
        EXPECT_GT(location, last) << std::hex << location << " after " << last;
        last = location;
        if (vendor != 0x0B75) {
            ++hubs;
            return;
        }
        ++found;
        ASSERT_LT(model, std::size(kPlaces));
        EXPECT_EQ(location, kPlaces[model].locationID) << kPlaces[model].place << std::hex << " at " << location;
    });
    EXPECT_EQ(found, std::size(kPlaces));
    EXPECT_GT(hubs, 0U);
}

TEST_F(RegistryTest, InterfacesOfTheActiveConfiguration) {
    const bed::UsbPlotter configured(*bed, {.place = "1-1", .product = 1, .configurations = 2, .activeConfiguration = 2});
    const bed::UsbPlotter unconfigured(*bed, {.place = "1-2", .product = 2, .activeConfiguration = 0});
    int found = 0;
    forEach("IOUSBInterface", [&](io_object_t service) {
        if (number(service, "idVendor") != 0x0B75) return; // a hub's
        ++found;
        EXPECT_EQ(number(service, "idProduct"), 1);
        auto interface =
            query<IOUSBInterfaceInterface245>(service, kIOUSBInterfaceUserClientTypeID, kIOUSBInterfaceInterfaceID245);
        ASSERT_TRUE(interface);
        uint32_t location = 0;
        EXPECT_EQ(interface->GetLocationID(&location), kIOReturnSuccess);
        EXPECT_EQ(location, 0x01080000U);
    });
    EXPECT_EQ(found, 1);
}

TEST_F(RegistryTest, WhatIsNotThere) {
    const bed::UsbPlotter plotter(*bed);
    const auto expectNone = [&](io_object_t service, const UUIDBytes &type, const UUIDBytes &interfaceID) {
        EXPECT_FALSE(query<IOUSBDeviceInterface>(service, type, interfaceID));
    };
    forEach("IOUSBDevice", [&](io_object_t service) {
        expectNone(service, kIOUSBDeviceUserClientTypeID, kIOUSBInterfaceInterfaceID245);
        IOCFPlugInInterface *plugIn = nullptr;
        EXPECT_EQ(registry.createPlugIn(service, kIOUSBInterfaceUserClientTypeID, &plugIn), kIOReturnUnsupported);
        EXPECT_EQ(plugIn, nullptr);
    });
    forEach("IOUSBInterface",
            [&](io_object_t service) { expectNone(service, kIOUSBInterfaceUserClientTypeID, kIOUSBDeviceInterfaceID); });
    forEach("IOAudioDevice", [](io_object_t) { ADD_FAILURE(); });
}

TEST_F(RegistryTest, StaleAndMadeUpHandles) {
    mach_port_t port = 0;
    ASSERT_EQ(registry.masterPort(&port), kIOReturnSuccess);
    MatchingDictionary dictionary;
    ASSERT_TRUE(registry.matching("IOUSBDevice", &dictionary));
    io_object_t iterator = 0;
    EXPECT_EQ(registry.matchingServices(port, {}, &iterator), kIOReturnBadArgument);
    EXPECT_EQ(registry.matchingServices(port ^ 0x10000, dictionary, &iterator), kIOReturnBadArgument);
    EXPECT_EQ(registry.deallocatePort(port), kIOReturnSuccess);
    EXPECT_EQ(registry.deallocatePort(port), kIOReturnBadArgument);
    EXPECT_EQ(registry.matchingServices(port, dictionary, &iterator), kIOReturnBadArgument);

    mach_port_t second = 0;
    ASSERT_EQ(registry.masterPort(&second), kIOReturnSuccess);
    EXPECT_NE(second, port);
    IOCFPlugInInterface *plugIn = nullptr;
    for (const uint32_t handle : {port, second, 0U, ~0U}) {
        EXPECT_EQ(registry.next(handle), 0U);
        EXPECT_EQ(registry.createProperty(handle, "idVendor"), 0U);
        EXPECT_EQ(registry.createPlugIn(handle, kIOUSBDeviceUserClientTypeID, &plugIn), kIOReturnBadArgument);
    }
    EXPECT_EQ(registry.destroyPlugIn(nullptr), kIOReturnBadArgument);
    EXPECT_EQ(registry.deallocatePort(second), kIOReturnSuccess);
}

} // namespace
