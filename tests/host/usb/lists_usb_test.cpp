// vectorix ports, plotters and doctor on a system in software.
#include "host/usb/bed_fixture.h"

#include <algorithm>
#include <nlohmann/json.hpp>
#include <orb/vectorix.h>

namespace {

using nlohmann::json;

class ListsTest : public BedTest {
protected:
    static json listed(Words words, int code, const char *list) {
        words.push_back("--json");
        const Result result = run(words);
        EXPECT_TRUE(ended(result, code));
        return json::parse(result.out)[list];
    }
    static json examined(Words words, int code) {
        words.insert(words.begin(), "doctor");
        return listed(words, code, "links");
    }
    static bool has(const json &link, const std::string &name) {
        return std::any_of(link["findings"].begin(), link["findings"].end(),
                           [&](auto &found) { return found["name"] == name; });
    }

    /// Ports of one chip.
    void addBoardPorts(const std::string &chip, std::initializer_list<const char *> names, const std::string &type) {
        bed->add("P: /devices/pnp0/" + chip + "\nE: SUBSYSTEM=pnp\n\n");
        for (const char *name : names)
            addPort("/devices/pnp0/" + chip, name, "A: type=" + type + "\\n\n");
    }
};

TEST_F(ListsTest, NothingAtAll) {
    EXPECT_TRUE(has(examined({}, 3)[0], "nothing-found"));
    EXPECT_TRUE(has(examined({"--usb"}, 3)[0], "no-such-plotter"));
    Result ports = run({"ports"});
    EXPECT_TRUE(ended(ports, 3, "vectorix: no serial port found; plug the adapter in"));
    EXPECT_EQ(ports.out, "");
}

TEST_F(ListsTest, TheFirstSixPortsAreThePlugInsAndThereMayBeMore) {
    addBoardPorts("00:04", {"ttyS10", "ttyS2", "ttyS0", "ttyS3", "ttyS1"}, "4");
    addBoardPorts("00:05", {"ttyS4", "ttyS5"}, "0");
    addPort("/devices/virtual", "tty1");
    bed->add("P: /devices/virtual/bluetooth/hci0\nE: SUBSYSTEM=bluetooth\n\n");
    addPort("/devices/virtual/bluetooth/hci0", "rfcomm0");
    ORB_ServiceRecord record{};
    record.ORB_serviceNumber = kORB_ServiceListPorts;
    record.ORB_portFD = -1;
    record = ORB_getVectorixCS2(record);
    ASSERT_EQ(record.ORB_deviceCount, 6);
    const char *const kSix[] = {"rfcomm0", "ttyS0", "ttyS1", "ttyS2", "ttyS3", "ttyS10"};
    json ports = listed({"ports"}, 0, "ports");
    for (size_t i = 0; i < 6; ++i) {
        char name[64];
        ORB_hostGetString(record.ORB_CFSTR_TTYDevice[i], name, sizeof name);
        EXPECT_STREQ(name, kSix[i]);
        EXPECT_EQ(ports[i]["name"], kSix[i]);
    }
    addBoardPorts("00:06", {"ttyS11", "ttyS12"}, "4");
    EXPECT_EQ(listed({"ports"}, 0, "ports").size(), 8U);
}

TEST_F(ListsTest, AnAdapterInTheTableAndWithoutItsPort) {
    addAdapter();
    json links = examined({}, 3);
    EXPECT_TRUE(has(links[0], "driver-missing"));
    EXPECT_EQ(links[0]["findings"][0]["command"], "sudo modprobe ftdi_sio");
    links = examined({"--port", "/dev/no-such-port"}, 3);
    EXPECT_TRUE(has(links[0], "no-such-port"));
    EXPECT_TRUE(has(links[1], "driver-missing")) << "it may be the port that is missed";

    const std::string above = bed::DeviceBed::usbPath("1-1") + "/1-1:1.0/ttyUSB0";
    bed->add("P: " + above + "\nE: SUBSYSTEM=usb-serial\nE: DRIVER=ftdi_sio\nL: driver=../../ftdi_sio\n\n");
    addPort(above, "ttyUSB0", "E: DEVLINKS=/dev/serial/by-id/usb-A1-if00\n");
    EXPECT_EQ(run({"ports"}).out,
              "NAME     PATH          STABLE NAME                    HARDWARE   DRIVER    ACCESS   HOLDER\n"
              "ttyUSB0  /dev/ttyUSB0  /dev/serial/by-id/usb-A1-if00  0403:6001  ftdi_sio  no node  -\n");
}

TEST_F(ListsTest, PlottersEachWithItsDriver) {
    const bed::UsbPlotter left(*bed, {.place = "1-1", .driver = "usblp"});
    json links = examined({"--usb"}, 0);
    EXPECT_EQ(links[0]["link"], "0b75:0402@01080000");
    EXPECT_TRUE(has(links[0], "printer-driver"));

    const bed::UsbPlotter right(*bed, {.place = "1-2.3", .vendor = 0x1234, .product = 0x00A1});
    EXPECT_EQ(run({"plotters"}).out, "MODEL      NAME  SERIAL NUMBER  LOCATION  ACCESS  HOLDER\n"
                                     "0b75:0402  -     -              01080000  ok      driver usblp\n"
                                     "1234:00a1  -     -              01118000  ok      -\n");
    json plotters = listed({"plotters", "--vendor", "0x1234", "--product", "a1"}, 0, "plotters");
    ASSERT_EQ(plotters.size(), 1U);
    EXPECT_EQ(plotters[0]["location"], "01118000") << "as the plug-in says";
    EXPECT_EQ(plotters[0]["node"], right.node());

    const bed::UsbPlotter claimed(*bed, {.place = "1-3", .driver = "usbfs"});
    const bed::UsbPlotter taken(*bed, {.place = "1-4", .vendor = 0x1234, .driver = "cdc_acm"});
    links = examined({}, 5);
    EXPECT_TRUE(has(links[2], "claimed")) << links;
    EXPECT_TRUE(has(links[3], "foreign-driver")) << links;
    EXPECT_EQ(examined({"--usb", "0b75:0402"}, 5)[1]["link"], "0b75:0402@01180000");
    EXPECT_NE(examined({"--usb", "0b75:0402@01080000"}, 0)[1]["kind"], "usb") << "only the one that was named";
}

} // namespace
