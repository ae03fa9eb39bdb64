// What vectorix doctor reads of the system: files of made-up contents, each against what is to be understood of it.
#include "host/doctor/print_queues.h"
#include "host/host_fixture.h"
#include "host/obstacles/obstacles.h"
#include "host/obstacles/processes.h"
#include "host/obstacles/system_files.h"
#include "host/obstacles/udev_rules.h"
#include "host/obstacles/user.h"

#include <filesystem>
#include <sys/sysmacros.h>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;

class DoctorFacts : public HostTest {
protected:
    /// A file below the made-up root.
    void put(const std::string &name, const std::string &text) const { file("root/" + name, text); }
    std::string root(const std::string &name = "") const { return path("root/" + name); }
};

TEST_F(DoctorFacts, Processes) {
    put("proc/2/stat", "2 (kthreadd) S 0 0 0 0 -1\n");
    put("proc/77/stat", "77 (kworker/0:1) I 2 0 0 0 -1\n");
    put("proc/801/stat", "801 (a (b) c) S 1 801 801 1088 801\n"); // 4:64
    put("proc/802/stat", "802 (cu) S 1 802 802 0 -1\n");
    put("proc/803/stat", "803 (cut");
    fs::create_directories(root("proc/804/stat")); // a read of it fails, as that of a process that ends meanwhile
    put("proc/tty/drivers", "");
    fs::create_directories(root("proc/802/fd"));
    auto found = host::runningProcesses(root());
    std::sort(found.begin(), found.end(), [](const auto &a, const auto &b) { return a.pid < b.pid; });
    ASSERT_EQ(found.size(), 2U) << "neither the kernel's own nor one that is gone";
    EXPECT_EQ(found[0].name, "a (b) c");
    EXPECT_EQ(found[0].terminal, makedev(4, 64));
    EXPECT_TRUE(found[0].isHidden);
    EXPECT_EQ(found[1].terminal, dev_t{0});
    EXPECT_FALSE(found[1].isHidden);
}

TEST_F(DoctorFacts, ConsolesLocksAndModemLines) {
    put("proc/consoles", "tty0                 -WU (EC  p  )    4:7\nttyS0                -W- (EC  p a)    4:64\n");
    EXPECT_TRUE(host::isConsole(root("proc"), makedev(4, 64)));
    EXPECT_FALSE(host::isConsole(root("proc"), makedev(4, 6)));

    struct stat node {};
    node.st_dev = makedev(0, 5);
    node.st_ino = 13;
    put("proc/locks", "1: POSIX  ADVISORY  WRITE 7 00:05:13 0 EOF\n2: FLOCK  ADVISORY  WRITE 8 00:05:130 0 EOF\n");
    EXPECT_FALSE(host::lockOwner(root("proc"), node));
    put("proc/locks", "2: -> FLOCK  ADVISORY  WRITE 8 00:05:13 0 EOF\n2: FLOCK  ADVISORY  WRITE 9 00:05:13 0 EOF\n");
    EXPECT_EQ(host::lockOwner(root("proc"), node), 9);

    EXPECT_FALSE(host::modemLines(root("proc"), "ttyS0")) << "the file is there for root alone";
    put("proc/tty/driver/serial", "serinfo:1.0 driver revision:\n"
                                  "0: uart:16550A port:000003F8 irq:4 tx:0 rx:0 RTS|CTS|DTR\n"
                                  "1: uart:16550A port:000002F8 irq:3 tx:0 rx:0\n"
                                  "2: uart:unknown port:000003E8 irq:4\n");
    EXPECT_EQ(host::modemLines(root("proc"), "ttyS0"), "RTS|CTS|DTR");
    EXPECT_EQ(host::modemLines(root("proc"), "ttyS1"), "");
    for (const char *name : {"ttyS2", "ttyS3", "ttyUSB0", "0"})
        EXPECT_FALSE(host::modemLines(root("proc"), name)) << name;
}

TEST_F(DoctorFacts, RulesForBrailleDisplays) {
    const host::RuleDevice kCh340{"1a86", "7523", "", "USB Serial"}, kFtdi{"0403", "6001", "FTDI", "FT232R USB UART"};
    const struct {
        const char *what, *rule;
        host::RuleDevice device;
        bool takes;
    } kRows[] = {
        {"by model", R"(ENV{PRODUCT}=="1a86/7523/*", ENV{BRLTTY_BRAILLE_DRIVER}="bm", GOTO="brltty_usb_run")", kCh340, true},
        {"another model", R"(ENV{PRODUCT}=="1a86/7523/*", ENV{BRLTTY_BRAILLE_DRIVER}="bm")", kFtdi, false},
        {"a comment", R"(  # ENV{PRODUCT}=="1a86/7523/*", ENV{BRLTTY_BRAILLE_DRIVER}="bm")", kCh340, false},
        {"numbers without zeros", R"(ENV{PRODUCT}=="403/6001/*",ENV{BRLTTY_BRAILLE_DRIVER}="fs")", kFtdi, true},
        {"another maker of the same chip",
         R"(ENV{PRODUCT}=="403/6001/*", ATTRS{manufacturer}=="Hedo *", ENV{BRLTTY_BRAILLE_DRIVER}="hd")", kFtdi, false},
        {"one of two makers",
         R"(ENV{PRODUCT}=="403/6001/*", ATTR{manufacturer}=="Hedo *|FTDI", ENV{BRLTTY_BRAILLE_DRIVER}="hd")", kFtdi, true},
        {"by attributes, over two lines",
         "ATTRS{idVendor}==\"1a86\", \\\n ATTRS{idProduct}==\"7523\", ENV{BRLTTY_BRAILLE_DRIVER}=\"bm\"", kCh340, true},
        {"a rule that clears it", R"(ATTRS{idVendor}=="1a86", ENV{BRLTTY_BRAILLE_DRIVER}="")", kCh340, false},
        {"a rule for any", R"(ENV{BRLTTY_BRAILLE_DRIVER}="bm")", kCh340, false},
        {"cut short", R"(ENV{PRODUCT}=="1a86/7523/*", ENV{BRLTTY_BRAILLE_DRIVER}="b)", kCh340, false},
    };
    for (const auto &row : kRows) {
        put("usr/lib/udev/rules.d/85-brltty.rules", std::string("# rules\n\n") + row.rule + "\n");
        EXPECT_EQ(host::brlttyRulesFor(host::rulesFiles(root()), row.device), row.takes ? "85-brltty.rules" : "")
            << row.what;
    }
    put("usr/lib/udev/rules.d/85-brltty.rules", kRows[0].rule);
    fs::create_directories(root("etc/udev/rules.d"));
    fs::create_symlink("/dev/null", root("etc/udev/rules.d/85-brltty.rules"));
    EXPECT_EQ(host::brlttyRulesFor(host::rulesFiles(root()), kCh340), "") << "masked";
}

TEST_F(DoctorFacts, RulesThatGivePlottersToPeople) {
    const host::RuleDevice kKnown{"0b75", "0402", "", ""}, kOther{"1234", "0001", "", ""};
    EXPECT_FALSE(host::hasPlotterRules(host::rulesFiles(root())));
    put("usr/lib/udev/rules.d/70-orb-vectorix.rules", contents(UDEV_RULES));
    put("usr/lib/udev/rules.d/60-other.rules", R"(ATTR{idVendor}=="1234", ENV{ID_X}="1")");
    auto files = host::rulesFiles(root());
    EXPECT_TRUE(host::hasPlotterRules(files));
    EXPECT_EQ(host::rulesGiving(files, kKnown), root("usr/lib/udev/rules.d/70-orb-vectorix.rules"));
    EXPECT_EQ(host::rulesGiving(files, kOther), "") << "a rule that gives nothing";
    put("etc/udev/rules.d/60-other.rules", R"(ATTR{idVendor}=="1234", ATTR{idProduct}=="0002", MODE="0666")");
    EXPECT_EQ(host::rulesGiving(host::rulesFiles(root()), kOther), "") << "another model";
    // What the remedy makes must be understood.
    host::Found rule = host::found(host::Obstacle::NoRuleForVendor, {{"rights", ""}, {"vendor", "1234"}, {"where", ""}});
    size_t start = rule.command.find('\'') + 1;
    put("etc/udev/rules.d/70-plotter-1234.rules", rule.command.substr(start, rule.command.find('\'', start) - start));
    EXPECT_EQ(host::rulesGiving(host::rulesFiles(root()), kOther), root("etc/udev/rules.d/70-plotter-1234.rules"));
}

TEST_F(DoctorFacts, PrintQueues) {
    EXPECT_EQ(host::printQueues(root()).unseen, "") << "no print system";
    put("etc/cups/printers.conf",
        "# Printer configuration\nNextPrinterId 3\n<Printer Line>\nPrinterId 1\n"
        "DeviceURI serial:/dev/ttyUSB0?baud=9600+bits=8\nState Idle\n</Printer>\n"
        "<DefaultPrinter Big>\nDeviceURI usb://HP/DesignJet%20500?serial=A%201\n</DefaultPrinter>\n");
    auto queues = host::printQueues(root()).queues;
    auto asked = host::parseLpstat("device for Line: serial:/dev/ttyUSB0?baud=9600+bits=8\n"
                                   "lpstat: something\ndevice for Big: usb://HP/DesignJet%20500?serial=A%201\n");
    ASSERT_EQ(queues.size(), 2U);
    ASSERT_EQ(asked.size(), 2U);
    for (size_t i = 0; i < 2; ++i) {
        EXPECT_EQ(queues[i].name, asked[i].name);
        EXPECT_EQ(queues[i].uri, asked[i].uri);
    }
    EXPECT_TRUE(host::sendsTo(queues[0], {"/dev/plotter", "/dev/ttyUSB0"}));
    EXPECT_FALSE(host::sendsTo(queues[0], {"/dev/ttyUSB1", ""}));
    EXPECT_TRUE(host::sendsTo({"raw", "file:///dev/ttyUSB0"}, {"/dev/ttyUSB0"}));
    const struct {
        const char *uri, *manufacturer, *name, *serial;
        bool sends;
    } kRows[] = {
        {"usb://HP/DesignJet%20500?serial=A%201", "x", "y", "A 1", true},
        {"usb://HP/DesignJet%20500?serial=A%201&interface=1", "x", "y", "A 1", true},
        {"usb://HP/DesignJet%20500?serial=A%201", "HP", "DesignJet 500", "A 2", false},
        {"usb://HP/DesignJet%20500?serial=A%201", "Hewlett-Packard", "DesignJet-500", "", true},
        {"usb://HP/DesignJet%20500", "Hewlett-Packard", "HP DesignJet 500", "A 2", true},
        {"usb://HP/DesignJet%20500", "HP", "DesignJet 800", "", false},
        {"usb://HP/DesignJet%20500", "", "", "", false},
        {"ipp://HP/DesignJet%20500", "HP", "DesignJet 500", "", false},
        {"", "HP", "DesignJet 500", "", false},
    };
    for (const auto &row : kRows) {
        host::UsbDevice device;
        device.manufacturer = row.manufacturer;
        device.name = row.name;
        device.serialNumber = row.serial;
        EXPECT_EQ(host::sendsTo({"Big", row.uri}, device), row.sends) << row.uri << " " << row.name << " " << row.serial;
    }
}

TEST_F(DoctorFacts, WhyANodeIsRefused) {
    constexpr gid_t kDaemon = 1, kOther = 77;
    using host::NodeAccess, host::Refusal;
    const struct {
        const char *what;
        NodeAccess access;
        mode_t mode;
        host::User user;
        Refusal refusal;
    } kRows[] = {
        {"allowed", NodeAccess::Ok, 0660, {"alice", false, {}, {}}, Refusal::None},
        {"not in the group", NodeAccess::NoPermission, 0660, {"alice", false, {kOther}, {kOther}}, Refusal::NotInGroup},
        {"since the login", NodeAccess::NoPermission, 0660, {"alice", false, {}, {kDaemon}}, Refusal::NotInSession},
        {"in the group, and refused", NodeAccess::NoPermission, 0660, {"alice", false, {kDaemon}, {}}, Refusal::NoGroup},
        {"a group that may only read", NodeAccess::NoPermission, 0640, {"alice", false, {}, {}}, Refusal::NoGroup},
    };
    for (const auto &row : kRows) {
        struct stat node {};
        node.st_mode = S_IFCHR | row.mode;
        node.st_gid = kDaemon;
        EXPECT_EQ(host::refusalOf(row.access, node, row.user), row.refusal) << row.what;
    }
    struct stat node {};
    node.st_mode = S_IFCHR | 0640;
    node.st_gid = kDaemon;
    EXPECT_EQ(host::rightsOf(node), "crw-r----- root daemon");
}

TEST(DoctorFindings, EachHasItsWords) {
    const host::Words words = {{"port", "p"},  {"what", "w"},   {"node", "n"},    {"rights", "r"}, {"user", "u"},
                               {"group", "g"}, {"vendor", "v"}, {"product", "d"}, {"file", "f"},   {"name", "m"},
                               {"who", "h"},   {"pid", "1"},    {"driver", "v"},  {"queue", "q"},  {"uri", "i"},
                               {"lines", "l"}, {"where", ""},   {"count", "2"},   {"reason", "z"}, {"interface", "x"}};
    for (int i = 0; i <= static_cast<int>(host::Obstacle::Container); ++i) {
        host::Found found = host::found(static_cast<host::Obstacle>(i), words);
        EXPECT_NE(found.text, "") << i;
        EXPECT_EQ(found.severity == host::Severity::Blocks, found.code != host::ExitCode::Done) << found.name;
        EXPECT_TRUE(found.severity == host::Severity::Note || !found.command.empty()) << found.name;
    }
    host::Found hostile = host::found(host::Obstacle::NoNodeInContainer, {{"node", "/dev/a\x1B b';reboot"}});
    EXPECT_EQ(hostile.text, "this container has not been given /dev/a\\e b';reboot");
    EXPECT_EQ(hostile.command, "docker run --device='/dev/a\\e b'\\'';reboot' ...");
}

} // namespace
