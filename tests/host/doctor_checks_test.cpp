// The checks of vectorix doctor on links of made-up systems: which findings, in which order.
#include "host/doctor/checks.h"
#include "host/doctor/told_reports.h"
#include "host/host_fixture.h"

#include <filesystem>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;
using host::LinkReport;

std::vector<std::string> namesIn(const LinkReport &report) {
    std::vector<std::string> names;
    for (const auto &found : report.findings)
        names.emplace_back(found.name);
    return names;
}

using Names = std::vector<std::string>;

class DoctorChecks : public HostTest {
protected:
    DoctorChecks() {
        stat(line_.port().c_str(), &node_);
        port_.name = "ttyUSB0";
        port_.path = line_.port(); // stands in for the node
        port_.stableName = "/dev/serial/by-id/usb-A1";
        port_.bus = "usb";
        port_.vendor = "1a86";
        port_.product = "7523";
        port_.driver = "ch341";
        port_.modemMarks = {"ID_MM_CANDIDATE"};
    }

    void put(const std::string &name, const std::string &text) const { file("root/" + name, text); }

    /// Of the port, but for the note that a pseudo-terminal's always has.
    Names portFindings() {
        Names names = namesIn(host::checkPort(system_, port_));
        std::erase(names, "no-wires");
        return names;
    }

    FarEnd line_;
    struct stat node_ {};
    host::Computer system_{path("root")};
    host::SerialPort port_;
};

TEST_F(DoctorChecks, ProgramsThatLookAtAdapters) {
    EXPECT_EQ(portFindings(), Names{});
    system_.processes = {{77, "ModemManager", 0, true}};
    EXPECT_EQ(portFindings(), Names{"modem-manager-near"});
    port_.driver = "cdc_acm";
    EXPECT_EQ(portFindings(), Names{"modem-manager"});
    port_.modemMarks.insert("ID_MM_DEVICE_IGNORE");
    EXPECT_EQ(portFindings(), Names{});
    put("usr/lib/udev/rules.d/85-brltty.rules", R"(ENV{PRODUCT}=="1a86/7523/*", ENV{BRLTTY_BRAILLE_DRIVER}="bm")");
    system_.rules = host::rulesFiles(system_.root);
    LinkReport report = host::checkPort(system_, port_);
    EXPECT_EQ(report.severity(), host::Severity::MayBlock);
    EXPECT_EQ(report.findings[0].command,
              "sudo ln -sf /dev/null /etc/udev/rules.d/85-brltty.rules && sudo udevadm control --reload");
    EXPECT_EQ(host::exitCodeOf({report}), host::ExitCode::Done) << "it only may be";
    system_.queues = {{{"Line", "serial:/dev/serial/by-id/usb-A1?baud=9600"}, {"Other", "serial:/dev/ttyS1"}}, "", ""};
    EXPECT_EQ(portFindings(), (Names{"brltty-rule", "print-queue"}));
}

TEST_F(DoctorChecks, WhoIsOnTheLine) {
    port_ = {};
    port_.name = "ttyS0";
    port_.path = line_.port();
    port_.bus = "pnp";
    port_.driver = "serial";
    system_.processes = {{88, "bash", node_.st_rdev, false}, {87, "login", node_.st_rdev, true}, {89, "cu", 0, true}};
    LinkReport report = host::checkPort(system_, port_);
    EXPECT_EQ(report.findings[0].text, "a login is on this port: login (process 87)") << "bash goes with it";
    EXPECT_EQ(report.findings[0].command, "sudo systemctl mask --now serial-getty@ttyS0.service");
    system_.processes = {{88, "bash", node_.st_rdev, false}};
    EXPECT_EQ(portFindings(), Names{"held"});
    system_.processes = {};

    auto number = [](dev_t device) { return std::to_string(major(device)) + ":" + std::to_string(minor(device)); };
    put("proc/consoles", "ttyS0 -W- (EC p a) " + number(node_.st_rdev) + "\n");
    put("proc/tty/driver/serial", "0: uart:16550A port:000003F8 irq:4 tx:0 rx:0 RTS|DTR\n");
    char inode[64];
    snprintf(inode, sizeof inode, "%02x:%02x:%ju", major(node_.st_dev), minor(node_.st_dev),
             static_cast<uintmax_t>(node_.st_ino));
    put("proc/locks", std::string("1: FLOCK  ADVISORY  WRITE 0 ") + inode + " 0 EOF\n");
    report = host::checkPort(system_, port_);
    EXPECT_EQ(portFindings(), (Names{"console", "locked", "lines-down"}));
    EXPECT_EQ(host::exitCodeOf({report}), host::ExitCode::Busy);

    put("sys/dev/char/" + number(node_.st_rdev) + "/type", "0\n");
    EXPECT_EQ(portFindings(), Names{"no-hardware"});
    fs::create_symlink("../../../class/misc", path("root/sys/dev/char/" + number(node_.st_rdev) + "/subsystem"));
    EXPECT_EQ(portFindings(), Names{"not-serial"});
    port_.path = path("gone");
    EXPECT_EQ(portFindings(), Names{"no-node"});
    system_.isContainer = true;
    EXPECT_EQ(portFindings(), Names{"no-node-in-container"});
}

TEST_F(DoctorChecks, AdapterWithoutAPort) {
    host::UsbDevice device;
    device.vendor = 0x1A86;
    device.product = 0x7523;
    device.folder = path("root/sys/bus/usb/devices/1-1");
    fs::create_directories(device.folder / "1-1:1.0");
    ASSERT_TRUE(host::isAdapterWithoutPort(device));
    EXPECT_EQ(namesIn(host::checkAdapter(system_, device)), Names{"driver-missing"});
    fs::create_directories(path("root/sys/module/ch341"));
    EXPECT_EQ(namesIn(host::checkAdapter(system_, device)), Names{"no-port-made"});
    device.driver = "usbfs";
    EXPECT_EQ(namesIn(host::checkAdapter(system_, device)), Names{"claimed"});
    system_.processes = {{77, "brltty", 0, true}};
    EXPECT_EQ(namesIn(host::checkAdapter(system_, device)), Names{"brltty-holds"});
    fs::create_directories(device.folder / "1-1:1.0/ttyUSB0");
    EXPECT_FALSE(host::isAdapterWithoutPort(device));
}

TEST_F(DoctorChecks, APrinterThatLostItsDriver) {
    host::UsbDevice device;
    device.node = line_.port();
    device.isPlotter = device.isPrinter = true;
    device.interface = "1-1:1.0";
    EXPECT_EQ(namesIn(host::checkPlotter(system_, device)), Names{}) << "nor is that driver loaded";
    fs::create_directories(path("root/sys/bus/usb/drivers/usblp"));
    EXPECT_EQ(host::checkPlotter(system_, device).findings.at(0).command,
              "echo -n 1-1:1.0 | sudo tee /sys/bus/usb/drivers/usblp/bind");
}

TEST_F(DoctorChecks, RightToAPlotter) {
    // Rights are those of the real user; root, who may use every node, gives that up for a moment.
    struct Nobody {
        const uid_t before = getuid();
        Nobody() { EXPECT_TRUE(before != 0 || setresuid(65534, 0, 0) == 0); }
        ~Nobody() { EXPECT_TRUE(before != 0 || setresuid(0, 0, 0) == 0); }
    } nobody;
    system_.user = host::currentUser();
    EXPECT_FALSE(system_.user->isRoot);
    host::UsbDevice device;
    device.vendor = 0x0B75;
    device.product = 0x0402;
    device.isPlotter = true;
    device.node = file("node", "");
    chmod(device.node.c_str(), 0);
    auto first = [&] { return host::checkPlotter(system_, device).findings.at(0); };
    auto name = [&] { return std::string(first().name); };
    EXPECT_EQ(name(), "no-usb-rules");
    EXPECT_EQ(first().line.rfind(device.node + ": permission denied; copy packaging/udev/70-orb-vectorix.rules into", 0),
              0U);
    put("etc/udev/rules.d/70-orb-vectorix.rules", contents(UDEV_RULES));
    system_.rules = host::rulesFiles(system_.root);
    EXPECT_EQ(name(), "rules-not-applied");
    device.vendor = 0x1234;
    EXPECT_EQ(name(), "no-rule-for-vendor");
    EXPECT_NE(first().line.find("vendor 1234 added"), std::string::npos) << first().line;
}

} // namespace
