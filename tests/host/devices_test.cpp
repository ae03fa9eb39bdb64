// Ports and USB plotters as the command sees them: of made-up terminals, and in a made-up sysfs.
#include "host/devices/serial_ports.h"
#include "host/host_fixture.h"
#include "host/obstacles/usb_obstacles.h"
#include "host/plugin/usb_target.h"

#include <filesystem>
#include <fmt/format.h>
#include <map>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;
using host::PortParent;
using host::UsbDevice;

/// The rest of the port list is that of a system in software (usb/).
TEST(Ports, HardwareAndDriverOfMadeUpTerminals) {
    const PortParent pnp{"pnp", "serial", "", "", "", ""}, unbound{"platform", "", "", "", "", ""};
    const PortParent adapter{"usb", "usb", "0403", "6001", "FTDI", "Plot\x1B[2J\xFF"},
        modem{"usb", "cdc_acm", "", "", "", ""};
    const PortParent nameless{"usb", "usb", "0403", "6001", "", ""}, layer{"serial-base", "port", "", "", "", ""};
    auto told = [](const std::vector<PortParent> &parents) {
        auto port = host::portOf({"tty", "/dev/tty", "/dev/a /dev/serial/by-id/b /dev/c", {}, parents, {}});
        return port->bus + ' ' + port->hardware() + ' ' + port->driver + ' ' + port->stableName;
    };
    EXPECT_EQ(told({modem, adapter}), "usb 0403:6001 Plot\\e[2J\\xFF cdc_acm /dev/serial/by-id/b");
    EXPECT_EQ(told({modem, nameless}), "usb 0403:6001 cdc_acm /dev/serial/by-id/b");
    EXPECT_EQ(told({layer, pnp}), "pnp pnp serial /dev/serial/by-id/b");
    EXPECT_EQ(told({unbound, pnp}), "platform platform serial /dev/serial/by-id/b") << "of one further out";
}

struct Endpoint {
    char address, type;
};

constexpr Endpoint kBulkOut{0x02, 2}, kBulkIn{'\x82', 2}, kInterruptOut{0x01, 3}, kInterruptIn{'\x81', 3};

/// Device, configuration, and one alternate setting for each list of endpoints.
std::string descriptorsOf(char interfaceClass, const std::vector<std::vector<Endpoint>> &settings) {
    std::string bytes = "\x12\x01" + std::string(16, '\0') + "\x09\x02" + std::string(7, '\0');
    char number = 0;
    for (const auto &endpoints : settings) {
        bytes += {9, 4, 0, number++, 0, interfaceClass, 1, 2, 0};
        for (auto [address, type] : endpoints)
            bytes += {7, 5, address, type, 64, 0, 10};
    }
    return bytes;
}

class UsbTest : public HostTest {
protected:
    /// A device with its files, or one of its interfaces.
    void add(const std::string &name, const std::map<std::string, std::string> &files, const std::string &below = "") {
        const std::string folder = "sys/devices/" + below + name + "/";
        for (const auto &[key, value] : files)
            file(folder + key, value);
        fs::create_directories(path("sys/bus/usb/devices"));
        fs::create_directory_symlink(path("sys/devices/" + below + name), path("sys/bus/usb/devices/" + name));
    }

    std::vector<UsbDevice> devices() const { return host::usbDevices(path("sys"), path("dev")); }

    /// A node of the device, as a file.
    UsbDevice withNode(const std::string &driver) const {
        UsbDevice device;
        device.vendor = 0x0B75;
        device.driver = driver;
        device.node = file("node", "");
        return device;
    }
};

TEST_F(UsbTest, PlottersAmongTheDevices) {
    const std::tuple<const char *, const char *, std::string, bool> kRows[] = {
        {"a printer", "1234", descriptorsOf(7, {{kBulkOut, kBulkIn}}), true},
        {"a printer without an out endpoint", "1234", descriptorsOf(7, {{kBulkIn}}), false},
        {"a known vendor, endpoints in the second setting", "0b75", descriptorsOf(-1, {{}, {kInterruptIn, kBulkOut}}), true},
        {"a known vendor without a bulk endpoint", "0b75", descriptorsOf(-1, {{kInterruptOut}}), false},
        {"descriptors cut short", "1234", descriptorsOf(7, {{kBulkOut}}).substr(0, 38), false},
    };
    size_t count = 0;
    for (const auto &[what, vendor, descriptors, isPlotter] : kRows) {
        add("1-" + std::to_string(++count), {{"idVendor", vendor}, {"idProduct", "0001"}, {"descriptors", descriptors}});
        EXPECT_EQ(devices().at(count - 1).isPlotter, isPlotter) << what;
    }
}

TEST_F(UsbTest, WhatSysfsTells) {
    file("sys/devices/3-2.1/manufacturer", "Acme\x1B[2J\n");
    file("sys/devices/3-2.1/product", "Line\xFF\n");
    file("sys/devices/3-2.1/serial", "A 1\n");
    add("3-2.1", {{"idVendor", "428d\n"}, {"idProduct", "a0F1\n"}, {"busnum", "3\n"}, {"devnum", "17\n"}});
    add("usb1", {{"idVendor", "1d6b\n"}, {"idProduct", "0002\n"}});
    add("3-2.1:1.1", {{"bInterfaceClass", "02\n"}}, "3-2.1/");
    add("3-2.1:1.0", {{"bInterfaceClass", "07\n"}, {"usbmisc/lp4/dev", "180:4\n"}}, "3-2.1/");
    fs::create_directory_symlink("../../drivers/cdc_acm", path("sys/devices/3-2.1/3-2.1:1.1/driver"));
    fs::create_directory_symlink("../../drivers/usblp", path("sys/devices/3-2.1/3-2.1:1.0/driver"));

    auto found = devices();
    ASSERT_EQ(found.size(), 2U) << "interfaces are no devices";
    EXPECT_EQ(found[0].location, 0x01000000U);
    EXPECT_EQ(found[1].id(), "428d:a0f1@03108000");
    EXPECT_EQ(found[1].title(), "Acme\\e[2J Line\\xFF");
    EXPECT_EQ(found[1].serialNumber, "A 1");
    EXPECT_EQ(found[1].node, path("dev/bus/usb/003/017"));
    EXPECT_EQ(found[1].driver, "usblp") << "of the first interface";
    EXPECT_EQ(found[1].printerNode, makedev(180, 4));
    EXPECT_TRUE(found[1].isPrinter && found[1].interface == "3-2.1:1.0");
    EXPECT_TRUE(host::usbDevices(path("nowhere"), path("dev")).empty());
    EXPECT_EQ(host::usbLocation("1-3.1.2.3.4"), 0x011891A0U);
    for (const char *name : {"1-2:1.0", "usb", "1", "1-", "1.2", "lp0", ""})
        EXPECT_FALSE(host::usbLocation(name)) << name;
}

TEST_F(UsbTest, TheOneThatIsMeant) {
    for (const char *text : {"0b75", ":", "0b75:", ":0402", "0b755:0402", "0b75:0402@", "0b75:0402@123456789", "@01080000",
                             "0b75:04g2", "-1:0402", "0b75: 402", "0b75:0402:1", "0x:0402"})
        EXPECT_THROW(host::parseUsbChoice(text), host::Failure) << text;

    const std::string kPrinter = descriptorsOf(7, {{kBulkOut}});
    add("1-1", {{"idVendor", "0b75"}, {"idProduct", "0001"}, {"product", "left"}, {"descriptors", kPrinter}});
    add("1-2", {{"idVendor", "0b75"}, {"idProduct", "0001"}, {"product", "right"}, {"descriptors", kPrinter}});
    add("1-3", {{"idVendor", "1234"}, {"idProduct", "0002"}, {"descriptors", descriptorsOf(8, {{kBulkOut}})}});
    constexpr std::tuple<const char *, uint32_t, int, const char *> kRows[] = {
        {"0b75:1@01100000", 0x01100000, 0, ""},
        {"0xB75:0X0001@0x1100000", 0x01100000, 0, ""},
        {"1234:2", 0x01180000, 0, ""}, // what was named need not look like a plotter
        {"0b75:1", 0, 2, "\n  --usb 0b75:0001@01080000  left\n  --usb 0b75:0001@01100000  right"},
        {"0b75:2", 0, 3, "no USB device 0b75:0002;"},
        {"1234:2@01080000", 0, 3, "1234:0002@01080000"},
    };
    for (const auto &[choice, location, code, says] : kRows) {
        uint32_t found = 0; // as it stays after a failure
        auto choose = [&, text = choice] { found = host::chooseUsbDevice(devices(), host::parseUsbChoice(text)).location; };
        EXPECT_TRUE(ended(failureOf(choose), code, says)) << choice;
        EXPECT_EQ(found, location) << choice;
    }
    auto withoutLeft = devices();
    withoutLeft.erase(withoutLeft.begin());
    EXPECT_EQ(host::chooseUsbDevice(withoutLeft, {}).name, "right") << "the only plotter need not be named";
}

TEST_F(UsbTest, NamesTheProgramThatHasIt) {
    // Stands in for the node: like it, a character device that a program can keep open, and one that nobody else has.
    const FarEnd farEnd;
    UsbDevice device = withNode("usbfs");
    device.node = farEnd.port();
    const Bystander holder(device.node, false);
    const std::string name = " (process " + std::to_string(holder.pid()) + ")";
    EXPECT_TRUE(holds(host::usersText(device), name));
    EXPECT_TRUE(ended(failureOf([&] { host::requireFree(device); }), 5, name));
    device.driver = "";
    EXPECT_NO_THROW(host::requireFree(device)) << "open, but not claimed";
    EXPECT_TRUE(holds(host::notesOf(device), name));

    // A printer's node is known by its number alone. Others may have this one open too: their names do not matter here.
    const Bystander printing("/dev/full", false);
    struct stat status;
    ASSERT_EQ(stat("/dev/full", &status), 0);
    device = withNode("usblp");
    EXPECT_NO_THROW(host::requireFree(device));
    EXPECT_TRUE(holds(host::notesOf(device), "put aside"));
    device.printerNode = status.st_rdev;
    EXPECT_TRUE(host::usersText(device).starts_with("driver usblp, ")) << host::usersText(device);
    EXPECT_THROW(host::requireFree(device), host::Failure) << "its printer's node is in use";
    EXPECT_TRUE(ended(failureOf([&] { host::requireFree(withNode("ftdi_sio")); }), 5, "--port"));
    device.node += "x";
    EXPECT_EQ(host::accessTo(device.node), host::NodeAccess::NoNode);
}

TEST_F(UsbTest, TheRulesNameTheKnownVendors) {
    const std::string rules = contents(UDEV_RULES);
    for (uint16_t vendor = 1; vendor != 0; ++vendor)
        ASSERT_EQ(host::isPlotterVendor(vendor),
                  rules.find(fmt::format("\nATTR{{idVendor}}==\"{:04x}\"", vendor)) != rules.npos);
}

} // namespace
