// vectorix doctor: what it reads of the system, each file of made-up contents against what is to be understood of it; which
// findings that makes; and what it says of ports that a test can have, pseudo-terminals and paths that are none.
#include "host/doctor/checks.h"
#include "host/doctor/told_reports.h"
#include "host/host_fixture.h"
#include "host/obstacles/system_files.h"

#include <filesystem>
#include <fmt/format.h>
#include <nlohmann/json.hpp>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;
using host::ExitCode;
using host::LinkReport;

Words namesIn(const LinkReport &report) {
    Words names;
    for (const auto &found : report.findings)
        names.emplace_back(found.name);
    return names;
}

class DoctorTest : public HostTest {
protected:
    DoctorTest() {
        port_.path = plotter_.port(); // stands in for the node
        stat(port_.path.c_str(), &node_);
    }

    /// A file below the made-up root.
    void put(const std::string &name, const std::string &text) const { file("root/" + name, text); }
    std::string root(const std::string &name = "") const { return path("root/" + name); }

    /// Of the port, but for the note that a pseudo-terminal's always has.
    Words portFindings() {
        Words names = namesIn(host::checkPort(system_, port_));
        std::erase(names, "no-wires");
        return names;
    }

    const FarEnd plotter_;
    struct stat node_ {};
    host::SerialPort port_;
    host::Computer system_{root()};
};

TEST_F(DoctorTest, Processes) {
    put("proc/77/stat", "77 (kworker/0:1) I 2 0 0 0 -1\n");
    put("proc/801/stat", "801 (a (b) c) S 1 801 801 1088 801\n"); // 4:64
    put("proc/802/stat", "802 (cu) S 1 802 802 0 -1\n");
    put("proc/803/stat", "803 (cut");
    fs::create_directories(root("proc/804/stat")); // a read of it fails, as that of a process that ends meanwhile
    fs::create_directories(root("proc/802/fd"));
    auto found = host::runningProcesses(root());
    std::sort(found.begin(), found.end(), [](const auto &a, const auto &b) { return a.pid < b.pid; });
    ASSERT_EQ(found.size(), 2U) << "neither the kernel's own nor one that is gone";
    EXPECT_EQ(found[0].name, "a (b) c");
    EXPECT_EQ(found[0].terminal, makedev(4, 64));
    EXPECT_TRUE(found[0].isHidden);
    EXPECT_FALSE(found[1].isHidden);
}

TEST_F(DoctorTest, LocksAndModemLines) {
    struct stat node {};
    node.st_dev = makedev(0, 5);
    node.st_ino = 13;
    put("proc/locks", "1: POSIX  ADVISORY  WRITE 7 00:05:13 0 EOF\n2: FLOCK  ADVISORY  WRITE 8 00:05:130 0 EOF\n");
    EXPECT_FALSE(host::lockOwner(root("proc"), node));
    put("proc/locks", "2: -> FLOCK  ADVISORY  WRITE 8 00:05:13 0 EOF\n2: FLOCK  ADVISORY  WRITE 9 00:05:13 0 EOF\n");
    EXPECT_EQ(host::lockOwner(root("proc"), node), 9);

    put("proc/tty/driver/serial", "serinfo:1.0 driver revision:\n1: uart:16550A port:000002F8 irq:3 tx:0 rx:0 RTS|CTS\n"
                                  "2: uart:16550A port:000003F8 irq:4 tx:0 rx:0\n3: uart:unknown port:000003E8 irq:4\n");
    EXPECT_EQ(host::modemLines(root("proc"), "ttyS1"), "RTS|CTS");
    EXPECT_EQ(host::modemLines(root("proc"), "ttyS2"), "");
    EXPECT_FALSE(host::modemLines(root("proc"), "ttyS3"));
}

TEST_F(DoctorTest, RulesForBrailleDisplays) {
    const host::RuleDevice kCh340{"1a86", "7523", "", "USB Serial"}, kFtdi{"0403", "6001", "FTDI", "FT232R USB UART"};
    const std::tuple<const char *, host::RuleDevice, bool> kRows[] = {
        {R"(ENV{PRODUCT}=="1a86/7523/*", ENV{BRLTTY_BRAILLE_DRIVER}="bm", GOTO="brltty_usb_run")", kCh340, true},
        {R"(ENV{PRODUCT}=="403/6001/*",ENV{BRLTTY_BRAILLE_DRIVER}="fs")", kFtdi, true},
        {R"(ENV{PRODUCT}=="403/6001/*", ATTRS{manufacturer}=="Hedo *", ENV{BRLTTY_BRAILLE_DRIVER}="hd")", kFtdi, false},
        {R"(ENV{PRODUCT}=="403/6001/*", ATTR{manufacturer}=="Hedo *|FTDI", ENV{BRLTTY_BRAILLE_DRIVER}="hd")", kFtdi, true},
        {"ATTRS{idVendor}==\"1a86\", \\\n ATTRS{idProduct}==\"7523\", ENV{BRLTTY_BRAILLE_DRIVER}=\"bm\"", kCh340, true},
        {R"(ATTRS{idVendor}=="1a86", ENV{BRLTTY_BRAILLE_DRIVER}="")", kCh340, false},
        {R"(#ENV{PRODUCT}=="1a86/7523/*", ENV{BRLTTY_BRAILLE_DRIVER}="bm")", kCh340, false},
    };
    for (const auto &[rule, device, takes] : kRows) {
        put("usr/lib/udev/rules.d/85-brltty.rules", std::string("# rules\n\n") + rule + "\n");
        EXPECT_EQ(host::brlttyRulesFor(host::rulesFiles(root()), device), takes ? "85-brltty.rules" : "") << rule;
    }
    put("usr/lib/udev/rules.d/85-brltty.rules", std::get<0>(kRows[0]));
    fs::create_directories(root("etc/udev/rules.d"));
    fs::create_symlink("/dev/null", root("etc/udev/rules.d/85-brltty.rules"));
    EXPECT_EQ(host::brlttyRulesFor(host::rulesFiles(root()), kCh340), "") << "masked";
}

TEST_F(DoctorTest, PrintQueues) {
    EXPECT_EQ(host::printQueues(root()).unseen, "") << "no print system";
    put("etc/cups/printers.conf",
        "# Printer configuration\nNextPrinterId 3\n<Printer Line>\nPrinterId 1\n"
        "DeviceURI serial:/dev/ttyUSB0?baud=9600+bits=8\nState Idle\n</Printer>\n"
        "<DefaultPrinter Big>\nDeviceURI usb://HP/DesignJet%20500?serial=A%201\n</DefaultPrinter>\n");
    auto asked = host::parseLpstat("device for Line: serial:/dev/ttyUSB0?baud=9600+bits=8\n"
                                   "lpstat: something\ndevice for Big: usb://HP/DesignJet%20500?serial=A%201\n");
    for (const auto &queues : {host::printQueues(root()).queues, asked}) {
        ASSERT_EQ(queues.size(), 2U);
        EXPECT_EQ(queues[0].name + queues[0].uri, "Lineserial:/dev/ttyUSB0?baud=9600+bits=8");
        EXPECT_EQ(queues[1].name + queues[1].uri, "Bigusb://HP/DesignJet%20500?serial=A%201");
    }
    EXPECT_TRUE(host::sendsTo(asked[0], {"/dev/plotter", "/dev/ttyUSB0"}));
    EXPECT_FALSE(host::sendsTo(asked[0], {"/dev/ttyUSB1", ""}));
    constexpr std::tuple<const char *, const char *, const char *, const char *, bool> kRows[] = {
        {"usb://HP/DesignJet%20500?serial=A%201&interface=1", "x", "y", "A 1", true},
        {"usb://HP/DesignJet%20500?serial=A%201", "HP", "DesignJet 500", "A 2", false},
        {"usb://HP/DesignJet%20500?serial=A%201", "Hewlett-Packard", "DesignJet-500", "", true},
        {"usb://HP/DesignJet%20500", "Hewlett-Packard", "HP DesignJet 500", "A 2", true},
        {"ipp://HP/DesignJet%20500", "HP", "DesignJet 500", "", false},
    };
    for (auto [uri, maker, name, serial, sends] : kRows) {
        host::UsbDevice device;
        std::tie(device.manufacturer, device.name, device.serialNumber) = std::tie(maker, name, serial);
        EXPECT_EQ(host::sendsTo({"Big", uri}, device), sends) << uri << " " << name << " " << serial;
    }
}

TEST_F(DoctorTest, WhyANodeIsRefused) {
    constexpr gid_t kDaemon = 1;
    using host::NodeAccess, host::Refusal;
    const std::tuple<const char *, mode_t, host::User, Refusal> kRows[] = {
        {"not in the group", 0660, {"alice", false, {77}, {77}}, Refusal::NotInGroup},
        {"since the login", 0660, {"alice", false, {}, {kDaemon}}, Refusal::NotInSession},
        {"in the group, and refused", 0660, {"alice", false, {kDaemon}, {}}, Refusal::NoGroup},
        {"a group that may only read", 0640, {"alice", false, {}, {}}, Refusal::NoGroup},
    };
    struct stat node {};
    node.st_gid = kDaemon;
    for (const auto &[what, mode, user, refusal] : kRows) {
        node.st_mode = S_IFCHR | mode;
        EXPECT_EQ(host::refusalOf(NodeAccess::NoPermission, node, user), refusal) << what;
        EXPECT_EQ(host::refusalOf(NodeAccess::Ok, node, user), Refusal::None) << what;
    }
    EXPECT_EQ(host::rightsOf(node), "crw-r----- root daemon");
}

TEST_F(DoctorTest, EachFindingHasItsWords) {
    host::Words words;
    for (const char *name :
         {"port", "what", "node",   "rights", "user", "group", "vendor", "product", "file",   "name",
          "who",  "pid",  "driver", "queue",  "uri",  "lines", "where",  "count",   "reason", "interface"})
        words.emplace_back(name, "x");
    for (int i = 0; i <= static_cast<int>(host::Obstacle::Container); ++i) {
        host::Found found = host::found(static_cast<host::Obstacle>(i), words);
        EXPECT_NE(found.text, "") << i;
        EXPECT_EQ(found.severity == host::Severity::Blocks, found.code != ExitCode::Done) << found.name;
        EXPECT_TRUE(found.severity == host::Severity::Note || !found.command.empty()) << found.name;
    }
    host::Found hostile = host::found(host::Obstacle::NoNodeInContainer, {{"node", "/dev/a\x1B b';reboot"}});
    EXPECT_EQ(hostile.text, "this container has not been given /dev/a\\e b';reboot");
    EXPECT_EQ(hostile.command, "docker run --device='/dev/a\\e b'\\'';reboot' ...");
}

TEST_F(DoctorTest, ProgramsThatLookAtAdapters) {
    port_.bus = "usb";
    port_.stableName = "/dev/serial/by-id/usb-A1";
    port_.vendor = "1a86";
    port_.product = "7523";
    port_.driver = "ch341";
    port_.modemMarks = {"ID_MM_CANDIDATE"};
    system_.processes = {{77, "ModemManager", 0, true}};
    EXPECT_EQ(portFindings(), Words{"modem-manager-near"});
    port_.driver = "cdc_acm";
    EXPECT_EQ(portFindings(), Words{"modem-manager"});
    port_.modemMarks.insert("ID_MM_DEVICE_IGNORE");
    EXPECT_EQ(portFindings(), Words{});
    put("usr/lib/udev/rules.d/85-brltty.rules", R"(ENV{PRODUCT}=="1a86/7523/*", ENV{BRLTTY_BRAILLE_DRIVER}="bm")");
    system_.rules = host::rulesFiles(system_.root);
    LinkReport report = host::checkPort(system_, port_);
    EXPECT_EQ(report.findings[0].command,
              "sudo ln -sf /dev/null /etc/udev/rules.d/85-brltty.rules && sudo udevadm control --reload");
    EXPECT_EQ(host::exitCodeOf({report}), ExitCode::Done) << "it only may be";
    system_.queues = {{{"Line", "serial:/dev/serial/by-id/usb-A1?baud=9600"}, {"Other", "serial:/dev/ttyS1"}}, "", ""};
    EXPECT_EQ(portFindings(), (Words{"brltty-rule", "print-queue"}));
}

TEST_F(DoctorTest, WhoIsOnTheLine) {
    port_.name = "ttyS0";
    port_.bus = "pnp";
    port_.driver = "serial";
    system_.processes = {{88, "bash", node_.st_rdev, false}, {87, "login", node_.st_rdev, true}, {89, "cu", 0, true}};
    LinkReport report = host::checkPort(system_, port_);
    EXPECT_EQ(report.findings[0].text, "a login is on this port: login (process 87)") << "bash goes with it";
    EXPECT_EQ(report.findings[0].command, "sudo systemctl mask --now serial-getty@ttyS0.service");
    system_.processes = {{88, "bash", node_.st_rdev, false}};
    EXPECT_EQ(portFindings(), Words{"held"});
    system_.processes = {};

    const std::string number = fmt::format("{}:{}", major(node_.st_rdev), minor(node_.st_rdev));
    put("proc/consoles", "tty0 -WU (EC p ) 4:7\nttyS0 -W- (EC p a) " + number + "\n");
    put("proc/tty/driver/serial", "0: uart:16550A port:000003F8 irq:4 tx:0 rx:0 RTS|DTR\n");
    put("proc/locks", fmt::format("1: FLOCK  ADVISORY  WRITE 0 {:02x}:{:02x}:{} 0 EOF\n", major(node_.st_dev),
                                  minor(node_.st_dev), node_.st_ino));
    EXPECT_EQ(portFindings(), (Words{"console", "locked", "lines-down"}));
    EXPECT_EQ(host::exitCodeOf({host::checkPort(system_, port_)}), ExitCode::Busy);

    put("sys/dev/char/" + number + "/type", "0\n");
    EXPECT_EQ(portFindings(), Words{"no-hardware"});
    fs::create_symlink("../../../class/misc", root("sys/dev/char/" + number + "/subsystem"));
    EXPECT_EQ(portFindings(), Words{"not-serial"});
    port_.path = path("gone");
    EXPECT_EQ(portFindings(), Words{"no-node"});
    system_.isContainer = true;
    EXPECT_EQ(portFindings(), Words{"no-node-in-container"});
}

TEST_F(DoctorTest, DevicesWithoutTheirDriver) {
    host::UsbDevice adapter;
    adapter.vendor = 0x1A86;
    adapter.product = 0x7523;
    adapter.folder = root("sys/bus/usb/devices/1-1");
    fs::create_directories(adapter.folder / "1-1:1.0");
    ASSERT_TRUE(host::isAdapterWithoutPort(adapter));
    EXPECT_EQ(namesIn(host::checkAdapter(system_, adapter)), Words{"driver-missing"});
    fs::create_directories(root("sys/module/ch341"));
    EXPECT_EQ(namesIn(host::checkAdapter(system_, adapter)), Words{"no-port-made"});
    adapter.driver = "usbfs";
    EXPECT_EQ(namesIn(host::checkAdapter(system_, adapter)), Words{"claimed"});
    system_.processes = {{77, "brltty", 0, true}};
    EXPECT_EQ(namesIn(host::checkAdapter(system_, adapter)), Words{"brltty-holds"});
    fs::create_directories(adapter.folder / "1-1:1.0/ttyUSB0");
    EXPECT_FALSE(host::isAdapterWithoutPort(adapter));

    host::UsbDevice printer;
    printer.node = plotter_.port();
    printer.isPlotter = printer.isPrinter = true;
    printer.interface = "1-1:1.0";
    EXPECT_EQ(namesIn(host::checkPlotter(system_, printer)), Words{}) << "nor is that driver loaded";
    fs::create_directories(root("sys/bus/usb/drivers/usblp"));
    EXPECT_EQ(host::checkPlotter(system_, printer).findings.at(0).command,
              "echo -n 1-1:1.0 | sudo tee /sys/bus/usb/drivers/usblp/bind");
}

TEST_F(DoctorTest, RightToAPlotter) {
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
    device.isPlotter = true;
    device.node = file("node", "");
    chmod(device.node.c_str(), 0);
    auto first = [&] { return host::checkPlotter(system_, device).findings.at(0); };
    EXPECT_TRUE(
        first().line.starts_with(device.node + ": permission denied; copy packaging/udev/70-orb-vectorix.rules into"));
    put("etc/udev/rules.d/70-orb-vectorix.rules", contents(UDEV_RULES));
    system_.rules = host::rulesFiles(system_.root);
    EXPECT_EQ(first().name, std::string("rules-not-applied"));
    device.vendor = 0x1234;
    put("usr/lib/udev/rules.d/60-other.rules", R"(ATTR{idVendor}=="1234", ENV{ID_X}="1")"); // gives nothing
    put("usr/lib/udev/rules.d/61-other.rules", R"(ATTR{idVendor}=="1234", ATTR{idProduct}=="0002", MODE="0666")");
    system_.rules = host::rulesFiles(system_.root);
    EXPECT_TRUE(holds(first().line, "vendor 1234 added"));
    // What the remedy makes must be understood.
    const std::string command = first().command, rule = command.substr(command.find('\'') + 1);
    put("etc/udev/rules.d/70-plotter-1234.rules", rule.substr(0, rule.find('\'')));
    system_.rules = host::rulesFiles(system_.root);
    EXPECT_EQ(first().name, std::string("rules-not-applied"));
}

TEST_F(DoctorTest, SaysWhatAPortIsAndLeavesItAsItIs) {
    const termios before = plotter_.attributes();
    const Bystander holder(plotter_.port(), false); // keeps what is set
    fs::create_symlink(plotter_.port(), path("plotter"));
    fs::create_symlink("nowhere", path("dangling"));
    auto examine = [](const std::string &port) { return run({"doctor", "-v", "--port", port}); };
    EXPECT_TRUE(ended(examine(path("dangling")), 3, "in the way "));
    EXPECT_TRUE(ended(examine(file("plot.plt", "IN;")), 3, "is a file, not a serial port"));
    EXPECT_TRUE(ended(examine("/dev/\xC3\xA4"), 2, "not ASCII"));
    EXPECT_TRUE(ended(examine(path("plotter")), 5, "  looked at          " + path("plotter") + ": crw"));
    auto link = nlohmann::json::parse(run({"doctor", "--port", plotter_.port(), "--json"}).out)["links"][0];
    EXPECT_EQ(link["link"], plotter_.port());
    EXPECT_EQ(link["state"], "in the way");
    EXPECT_EQ(link["findings"][0]["name"], "held");
    const termios after = plotter_.attributes();
    EXPECT_EQ(before.c_cflag, after.c_cflag);
    EXPECT_EQ(before.c_lflag, after.c_lflag);
}

} // namespace
