// What the registry lists, and its devices.
#include "registry_fixture.h"

#include <list>
#include <unistd.h>
#include <utility>

namespace {

TEST_F(RegistryTest, DevicesInOrderOfLocation) {
    constexpr struct {
        const char *place;
        uint32_t locationID;
    } kPlaces[] = {
        {"2-1", 0x02080000},         {"1-10", 0x01500000},    {"1-2.3", 0x01118000},  {"1-2.3.4", 0x0111A000},
        {"1-3.1.2.3.4", 0x011891A0}, {"1-31.15", 0x01FF8000}, {"1-2.10", 0x01150000},
    };
    std::list<bed::UsbPlotter> plotters;
    for (const auto &place : kPlaces)
        plotters.emplace_back(*bed, bed::PlotterShape{.place = place.place, .product = uint16_t(plotters.size())});

    uint32_t last = 0;
    int32_t status = 0;
    size_t found = 0;
    forEach("IOUSBDevice", [&](const IOObject &service) {
        auto device =
            queryServiceAs<IOUSBDeviceInterface>(service, kIOUSBDeviceUserClientTypeID, kIOUSBDeviceInterfaceID, 0, &status);
        ASSERT_TRUE(device);
        uint32_t location = 0;
        uint16_t vendor = 0, model = 0;
        EXPECT_EQ(device->GetLocationID(&location), kIOReturnSuccess);
        EXPECT_EQ(device->GetDeviceVendor(&vendor), kIOReturnSuccess);
        EXPECT_EQ(device->GetDeviceProduct(&model), kIOReturnSuccess);
        EXPECT_EQ(number(service, "idVendor"), vendor);
        EXPECT_EQ(number(service, "idProduct"), model);
        EXPECT_GT(location, std::exchange(last, location)) << std::hex << location; // hubs among them
        if (vendor != 0x0B75) return;
        EXPECT_EQ(location, kPlaces[model].locationID) << kPlaces[model].place << std::hex << " at " << location;
        ++found;
    });
    EXPECT_EQ(found, std::size(kPlaces));
}

TEST_F(RegistryTest, InterfacesOfTheActiveConfiguration) {
    const bed::UsbPlotter configured(*bed, {.place = "1-1", .product = 1, .configurations = 2, .activeConfiguration = 2});
    const bed::UsbPlotter unconfigured(*bed, {.place = "1-2", .product = 2, .activeConfiguration = 0});
    std::vector<int> products;
    forEach("IOUSBInterface", [&](const IOObject &service) {
        if (number(service, "idVendor") == 0x0B75) products.push_back(number(service, "idProduct"));
    });
    EXPECT_EQ(products, std::vector{1});
    uint32_t location = 0;
    EXPECT_EQ(findInterface()->GetLocationID(&location), kIOReturnSuccess);
    EXPECT_EQ(location, 0x01080000U);
}

std::string tty(const std::string &parent, const std::string &name, const std::string &attributes = "") {
    return "P: " + parent + "/tty/" + name + "\nN: " + name + "\nE: DEVNAME=/dev/" + name + "\nE: SUBSYSTEM=tty\n" +
           attributes + "\n";
}

/// A device on a bus, and its line.
std::string port(const std::string &path, const std::string &bus, const std::string &name, const char *attributes = "") {
    return "P: " + path + "\nE: SUBSYSTEM=" + bus + "\n\n" + tty(path, name, attributes);
}

TEST_F(RegistryTest, SerialPortsWithHardwareInNaturalOrder) {
    const std::string adapters = bed::DeviceBed::usbPath("1-1") + "/1-1:1.0";
    bed->addUsb("1-1", {18, 1, 0, 2, 0, 0, 0, 64, 3, 4, 1, 0x60, 0, 6, 0, 0, 0, 0}, 1);
    for (const char *name : {"ttyUSB10", "ttyUSB2", "ttyUSB0"})
        bed->add(port(adapters + "/" + name, "usb-serial", name));
    bed->add(port("/devices/pnp0/00:04", "pnp", "ttyS0", "A: type=4\\n\n"));
    bed->add(port("/devices/platform/serial8250", "platform", "ttyS1", "A: type=0\\n\n"));
    bed->add(port("/devices/virtual/bluetooth/hci0", "bluetooth", "rfcomm0"));
    bed->add(tty("/devices/virtual", "tty1") + tty("/devices/virtual", "console") + tty("/devices/virtual", "ptmx"));

    Strings names;
    const auto note = [&](const IOObject &service) {
        for (const char *key : {"IOTTYDevice", "IOCalloutDevice", "IODialinDevice"})
            names.emplace_back(platform::stringView(CFRef(IORegistryEntryCreateCFProperty(service.get(), key)).get()));
    };
    forEach("IOSerialBSDClient", note, "IOSerialBSDClientType", "IORS232SerialStream");
    Strings expected;
    for (const std::string name : {"rfcomm0", "ttyS0", "ttyUSB0", "ttyUSB2", "ttyUSB10"})
        expected.insert(expected.end(), {name, "/dev/" + name, "/dev/" + name});
    EXPECT_EQ(names, expected);
}

TEST_F(RegistryTest, ConfigurationsOfADevice) {
    plotter.emplace(*bed, bed::PlotterShape{.configurations = 2});
    auto device = findDevice();
    ASSERT_TRUE(device);
    IOUSBConfigurationDescriptorPtr first = nullptr, second = nullptr, none = nullptr;
    EXPECT_EQ(device->GetConfigurationDescriptorPtr(0, &first), kIOReturnSuccess);
    EXPECT_EQ(device->GetConfigurationDescriptorPtr(1, &second), kIOReturnSuccess);
    EXPECT_EQ(device->GetConfigurationDescriptorPtr(2, &none), kIOReturnNotFound);
    ASSERT_TRUE(first != nullptr && second != nullptr);
    EXPECT_EQ(std::string(reinterpret_cast<const char *>(first), 9), std::string("\x09\x02\x20\0\x01\x01\0\xC0\x01", 9));
    EXPECT_EQ(second->bConfigurationValue, 2);

    EXPECT_EQ(device->SetConfiguration(1), kIOReturnNotOpen);
    EXPECT_EQ(device->USBDeviceOpen(), kIOReturnSuccess);
    EXPECT_EQ(device->SetConfiguration(1), kIOReturnSuccess); // it is active
    EXPECT_EQ(device->SetConfiguration(2), kIOReturnSuccess);
    EXPECT_EQ(device->SetConfiguration(2), kIOReturnSuccess);
    EXPECT_EQ(device->SetConfiguration(3), kIOReturnNotFound);
    plotter->bindDriver("usblp"); // which the device leaves alone
    EXPECT_EQ(device->SetConfiguration(1), kIOReturnExclusiveAccess);
    EXPECT_EQ(plotter->driver(), "usblp");
    EXPECT_EQ(plotter->log(), Strings({"configuration 2", "configuration 3", "configuration 1"}));
}

TEST_F(RegistryTest, DevicesThatCannotBeOpened) {
    plotter.emplace(*bed);
    auto device = findDevice();
    interface = findInterface();
    ASSERT_TRUE(device && interface);
    const std::string node = bed->fileOf(plotter->node());
    ASSERT_EQ(::unlink(node.c_str()), 0);
    ASSERT_EQ(::symlink("/proc/sys/kernel/osrelease", node.c_str()), 0); // which not even root may write to
    EXPECT_EQ(device->USBDeviceOpen(), kIOReturnNotPermitted);
    EXPECT_EQ(interface->USBInterfaceOpen(), kIOReturnNotPermitted);

    ASSERT_EQ(::unlink(node.c_str()), 0);
    EXPECT_EQ(device->USBDeviceOpen(), kIOReturnNoDevice);
    EXPECT_EQ(interface->USBInterfaceOpen(), kIOReturnNoDevice);
}

} // namespace
