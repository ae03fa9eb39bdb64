// USB plotters as the command sees them: in a made-up sysfs, and on the command line.
#include "host/host_fixture.h"

#include "host/failure_of.h"
#include "host/obstacles/usb_obstacles.h"
#include "host/plugin/usb_target.h"
#include "host/terminal/text.h"

#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;
using host::ExitCode;
using host::UsbDevice;

struct Endpoint {
    uint8_t address, type;
};

constexpr Endpoint kBulkOut{0x02, 2}, kBulkIn{0x82, 2}, kInterruptOut{0x01, 3}, kInterruptIn{0x81, 3};

/// Device, configuration, and one alternate setting for each list of endpoints.
std::string descriptorsOf(uint8_t interfaceClass, const std::vector<std::vector<Endpoint>> &settings) {
    std::string bytes =
        std::string("\x12\x01", 2) + std::string(16, '\0') + std::string("\x09\x02", 2) + std::string(7, '\0');
    uint8_t number = 0;
    for (const auto &endpoints : settings) {
        for (unsigned value : {9U, 4U, 0U, unsigned{number++}, 0U, unsigned{interfaceClass}, 1U, 2U, 0U})
            bytes += static_cast<char>(value);
        for (const Endpoint &endpoint : endpoints)
            bytes += {7, 5, static_cast<char>(endpoint.address), static_cast<char>(endpoint.type), 64, 0, 10};
    }
    return bytes;
}

class UsbTest : public HostTest {
protected:
    void add(const std::string &name, const std::map<std::string, std::string> &attributes, const std::string &descriptors) {
        fs::path device = folder_ + "/sys/devices/" + name;
        fs::path bus = folder_ + "/sys/bus/usb/devices";
        fs::create_directories(device);
        fs::create_directories(bus);
        fs::create_directory_symlink(device, bus / name);
        for (const auto &[key, value] : attributes)
            std::ofstream(device / key) << value << "\n";
        std::ofstream(device / "descriptors", std::ios::binary) << descriptors;
    }

    void addInterface(const std::string &device, const std::string &name, const std::string &driver) {
        fs::path interface = folder_ + "/sys/devices/" + device + "/" + name;
        fs::create_directories(interface);
        fs::create_directory_symlink(interface, folder_ + "/sys/bus/usb/devices/" + name);
        if (!driver.empty()) fs::create_directory_symlink("../../drivers/" + driver, interface / "driver");
    }

    std::vector<UsbDevice> devices() const { return host::usbDevices(path("sys"), path("dev")); }

    /// A node of the device, as a file with that mode.
    UsbDevice withNode(const std::string &driver, mode_t mode = 0600) const {
        UsbDevice device;
        device.vendor = 0x0B75;
        device.product = 0x0402;
        device.location = 0x01080000;
        device.driver = driver;
        device.node = file("node", "");
        chmod(device.node.c_str(), mode);
        return device;
    }
};

TEST_F(UsbTest, PlottersAmongTheDevices) {
    const struct {
        const char *what;
        std::string vendor;
        std::string descriptors;
        bool isPlotter;
    } kRows[] = {
        {"a printer", "1234", descriptorsOf(7, {{kBulkOut, kBulkIn}}), true},
        {"a printer without an out endpoint", "1234", descriptorsOf(7, {{kBulkIn}}), false},
        {"a known vendor", "0b4d", descriptorsOf(255, {{kInterruptIn, kBulkOut}}), true},
        {"a known vendor, endpoints in the second setting", "0b75", descriptorsOf(255, {{}, {kBulkOut}}), true},
        {"a known vendor without a bulk endpoint", "0b75", descriptorsOf(255, {{kInterruptOut}}), false},
        {"a disk", "1234", descriptorsOf(8, {{kBulkOut, kBulkIn}}), false},
        {"a hub", "1d6b", descriptorsOf(9, {{kInterruptIn}}), false},
        {"descriptors cut short", "1234", descriptorsOf(7, {{kBulkOut}}).substr(0, 38), false},
        {"a descriptor of no length", "1234", std::string(40, '\0'), false},
    };
    int port = 0;
    for (const auto &row : kRows)
        add("1-" + std::to_string(++port), {{"idVendor", row.vendor}, {"idProduct", "0001"}}, row.descriptors);
    auto found = devices();
    ASSERT_EQ(found.size(), std::size(kRows));
    for (size_t i = 0; i < found.size(); ++i)
        EXPECT_EQ(found[i].isPlotter, kRows[i].isPlotter) << kRows[i].what;
}

TEST_F(UsbTest, WhatSysfsTells) {
    add("3-2.1",
        {{"idVendor", "428d"},
         {"idProduct", "a0F1"},
         {"busnum", "3"},
         {"devnum", "17"},
         {"manufacturer", "Acme\x1B[2J"},
         {"product", "Line\xFF"},
         {"serial", "A 1"}},
        descriptorsOf(255, {{kBulkOut}}));
    add("usb1", {{"idVendor", "1d6b"}, {"idProduct", "0002"}}, descriptorsOf(9, {{kInterruptIn}}));
    addInterface("3-2.1", "3-2.1:1.1", "cdc_acm");
    addInterface("3-2.1", "3-2.1:1.0", "usblp");
    file("sys/devices/3-2.1/3-2.1:1.0/bInterfaceClass", "07\n");
    file("sys/devices/3-2.1/3-2.1:1.0/usbmisc/lp4/dev", "180:4\n");

    auto found = devices();
    ASSERT_EQ(found.size(), 2U) << "interfaces are no devices";
    EXPECT_EQ(found[0].location, 0x01000000U);
    EXPECT_EQ(found[0].driver, "");
    EXPECT_EQ(found[1].id(), "428d:a0f1@03108000");
    EXPECT_EQ(found[1].title(), "Acme\\e[2J Line\\xFF");
    EXPECT_EQ(found[1].serialNumber, "A 1");
    EXPECT_EQ(found[1].node, path("dev/bus/usb/003/017"));
    EXPECT_EQ(found[1].driver, "usblp") << "of the first interface";
    EXPECT_EQ(found[1].printerNode, makedev(180, 4));
    EXPECT_TRUE(found[1].isPrinter && found[1].interface == "3-2.1:1.0");
    EXPECT_TRUE(host::usbDevices(path("nowhere"), path("dev")).empty());
}

TEST(UsbLocation, IsThePluginsOwn) {
    constexpr std::pair<const char *, uint32_t> kDevices[] = {
        {"usb2", 0x02000000},    {"2-1", 0x02080000},         {"1-10", 0x01500000},    {"1-2.3", 0x01118000},
        {"1-2.3.4", 0x0111A000}, {"1-3.1.2.3.4", 0x011891A0}, {"1-31.15", 0x01FF8000}, {"1-2.10", 0x01150000},
    };
    for (auto [name, location] : kDevices)
        EXPECT_EQ(host::usbLocation(name), location) << name;
    for (const char *name : {"1-2:1.0", "1-0:1.0", "usb", "1", "1-", "1.2", "lp0", ""})
        EXPECT_FALSE(host::usbLocation(name)) << name;
}

TEST(UsbChoice, IsReadAsTyped) {
    const struct {
        const char *text;
        uint16_t vendor, product;
        std::optional<uint32_t> location;
    } kGood[] = {
        {"0b75:0402", 0x0B75, 0x0402, {}},     {"b75:402", 0x0B75, 0x0402, {}},
        {"0x0B75:0X0402", 0x0B75, 0x0402, {}}, {"428d:ffff@01118000", 0x428D, 0xFFFF, 0x01118000},
        {"1:2@0xFF080000", 1, 2, 0xFF080000},
    };
    for (const auto &row : kGood) {
        host::UsbChoice choice = host::parseUsbChoice(row.text);
        EXPECT_EQ(choice.vendor, row.vendor) << row.text;
        EXPECT_EQ(choice.product, row.product) << row.text;
        EXPECT_EQ(choice.location, row.location) << row.text;
    }
    for (const char *text : {"0b75", ":", "0b75:", ":0402", "0b755:0402", "0b75:0402@", "0b75:0402@123456789", "@01080000",
                             "0b75:04g2", "-1:0402", "0b75: 402", "0b75:0402:1", "0x:0402", "drawing.plt"}) {
        EXPECT_THROW(host::parseUsbChoice(text), host::Failure) << text;
    }
}

TEST_F(UsbTest, TheOneThatIsMeant) {
    const std::string kPrinter = descriptorsOf(7, {{kBulkOut}}), kDisk = descriptorsOf(8, {{kBulkOut}});
    add("1-1", {{"idVendor", "0b75"}, {"idProduct", "0001"}, {"product", "left"}}, kPrinter);
    add("1-2", {{"idVendor", "0b75"}, {"idProduct", "0001"}, {"product", "right"}}, kPrinter);
    add("1-3", {{"idVendor", "1234"}, {"idProduct", "0002"}}, kDisk);
    const struct {
        const char *choice;
        uint32_t location; ///< 0: a failure
        ExitCode code;
        const char *says;
    } kRows[] = {
        {"0b75:1@01100000", 0x01100000, ExitCode::Done, ""},
        {"1234:2", 0x01180000, ExitCode::Done, ""}, // what was named need not look like a plotter
        {"0b75:1", 0, ExitCode::Usage, "\n  --usb 0b75:0001@01080000  left\n  --usb 0b75:0001@01100000  right"},
        {"", 0, ExitCode::Usage, "2 plotters"},
        {"0b75:2", 0, ExitCode::Missing, "no USB device 0b75:0002;"},
        {"1234:2@01080000", 0, ExitCode::Missing, "1234:0002@01080000"},
    };
    for (const auto &row : kRows) {
        SCOPED_TRACE(row.choice);
        uint32_t location = 0;
        auto [code, said] =
            failureOf([&] { location = host::chooseUsbDevice(devices(), host::parseUsbChoice(row.choice)).location; });
        EXPECT_EQ(location, row.location);
        EXPECT_EQ(code, row.code);
        EXPECT_NE(said.find(row.says), std::string::npos) << said;
    }
    auto withoutLeft = devices();
    withoutLeft.erase(withoutLeft.begin());
    EXPECT_EQ(host::chooseUsbDevice(withoutLeft, {}).name, "right") << "the only plotter need not be named";
}

TEST_F(UsbTest, WhoStandsInTheWay) {
    const struct {
        const char *driver;
        ExitCode code;
        const char *says;
    } kRows[] = {
        {"", ExitCode::Done, ""},
        {"usblp", ExitCode::Done, "put aside"},
        {"usbfs", ExitCode::Busy, "another program"},
        {"ftdi_sio", ExitCode::Busy, "--port"},
    };
    for (const auto &row : kRows) {
        SCOPED_TRACE(row.driver);
        UsbDevice device = withNode(row.driver);
        auto [code, said] = failureOf([&] { host::requireFree(device); });
        EXPECT_EQ(code, row.code);
        if (code == ExitCode::Done) said = host::notesOf(device);
        EXPECT_NE(said.find(row.says), std::string::npos) << said;
    }
    UsbDevice gone = withNode("");
    gone.node += "x";
    EXPECT_EQ(host::accessTo(gone.node), host::NodeAccess::NoNode);
    EXPECT_THROW(host::requireFree(gone), host::Failure);
}

TEST_F(UsbTest, NamesTheProgramThatHasIt) {
    // Stands in for the node: like it, a character device that a program can keep open, and one that nobody else has.
    const int farEnd = posix_openpt(O_RDWR | O_NOCTTY);
    ASSERT_NE(farEnd, -1);
    ASSERT_EQ(unlockpt(farEnd), 0);
    const std::string node = ptsname(farEnd);
    UsbDevice device = withNode("usbfs");
    device.node = node;
    Bystander holder(node, false);
    std::string name = " (process " + std::to_string(holder.pid()) + ")";
    EXPECT_NE(host::usersText(device).find(name), std::string::npos) << host::usersText(device);
    auto [code, said] = failureOf([&] { host::requireFree(device); });
    EXPECT_EQ(code, ExitCode::Busy);
    EXPECT_NE(said.find(name), std::string::npos) << said;
    device.driver = "";
    EXPECT_NO_THROW(host::requireFree(device)) << "open, but not claimed";
    EXPECT_NE(host::notesOf(device).find(name), std::string::npos);

    // A printer's node is known by its number alone. Others may have this one open too: their names do not matter here.
    Bystander printing("/dev/full", false);
    struct stat status;
    ASSERT_EQ(stat("/dev/full", &status), 0);
    device = withNode("usblp");
    device.printerNode = status.st_rdev;
    EXPECT_EQ(host::usersText(device).rfind("driver usblp, ", 0), 0U) << host::usersText(device);
    EXPECT_THROW(host::requireFree(device), host::Failure) << "its printer's node is in use";
    close(farEnd);
}

TEST_F(UsbTest, SaysHowToGetTheRight) {
    UsbDevice device = withNode("", 0660);
    constexpr gid_t kDaemon = 1;
    if (chown(device.node.c_str(), 0, kDaemon) != 0) GTEST_SKIP() << "only root gives files away";
    const std::string said = host::permissionRefusal(device);
    EXPECT_EQ(said.rfind("permission denied; add yourself to the group daemon: sudo usermod -aG daemon $USER", 0), 0U)
        << said;
}

TEST_F(UsbTest, TheRulesNameTheKnownVendors) {
    std::istringstream rules(contents(UDEV_RULES));
    const std::string kKey = "ATTR{idVendor}==\"";
    int found = 0;
    for (std::string line; std::getline(rules, line);) {
        if (line.rfind(kKey, 0) != 0) continue;
        std::string vendor = line.substr(kKey.size(), 4);
        EXPECT_TRUE(host::isPlotterVendor(static_cast<uint16_t>(std::stoul(vendor, nullptr, 16)))) << vendor;
        ++found;
    }
    EXPECT_EQ(found, 6);
}

TEST_F(UsbTest, RefusesWhatWasTyped) {
    std::string plot = file("plot.plt", plotOf(1));
    expectRefusals({
        {{"plotters", "--vendor", "0b75"}, 2, "--product"},
        {{"plotters", "--product", "0402"}, 2, "--vendor"},
        {{"plotters", "--vendor", "0b75", "--product", "plotter"}, 2, "hexadecimal"},
        {{"plotters", "--vendor", "fff0", "--product", "fff0"}, 3, "no USB device fff0:fff0"},
        {{"print", plot, "--usb", "0b75"}, 2, "V:P@LOCATION"},
        {{"print", plot, "--usb", "fff0:fff0"}, 3, "no USB device fff0:fff0"},
        {{"print", "--usb=fff0:fff0@01080000", plot}, 3, "no USB device fff0:fff0@01080000"},
        {{"print", plot, "--usb", "--port", "/dev/x"}, 2, "excludes"},
        {{"print", plot, "--capture", "x", "--usb"}, 2, "excludes"},
    });
}

} // namespace
