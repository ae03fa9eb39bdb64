// The port list of a system in software, beside the plug-in's own.
#include "host/usb/bed_fixture.h"

#include <nlohmann/json.hpp>
#include <orb/vectorix.h>

namespace {

class ListPortsTest : public BedTest {
protected:
    /// Without its node: the bed would make a pseudo-terminal of it, and then fail to resolve its path.
    void add(const std::string &above, const std::string &name, const std::string &attributes = "") {
        bed->add("P: " + above + "/tty/" + name + "\nE: DEVNAME=/dev/" + name + "\nE: SUBSYSTEM=tty\n" + attributes + "\n");
    }

    /// Ports of one chip.
    void addBoardPorts(const std::string &chip, std::initializer_list<const char *> names, const std::string &type) {
        bed->add("P: /devices/pnp0/" + chip + "\nE: SUBSYSTEM=pnp\n\n");
        for (const char *name : names)
            add("/devices/pnp0/" + chip, name, "A: type=" + type + "\\n\n");
    }

    std::vector<std::string> names() {
        Result result = run({"ports", "--json"});
        EXPECT_EQ(result.code, 0) << result.err;
        std::vector<std::string> found;
        const auto list = nlohmann::json::parse(result.out);
        for (const auto &port : list["ports"])
            found.push_back(port["name"]);
        return found;
    }

    /// As the plug-in lists them.
    static std::vector<std::string> listedNames() {
        ORB_ServiceRecord record{};
        record.ORB_serviceNumber = kORB_ServiceListPorts;
        record.ORB_portFD = -1;
        record = ORB_getVectorixCS2(record);
        std::vector<std::string> found;
        for (int32_t i = 0; i < record.ORB_deviceCount && i < 6; ++i) {
            char name[64];
            ORB_hostGetString(record.ORB_CFSTR_TTYDevice[i], name, sizeof name);
            found.push_back(name);
        }
        return found;
    }
};

TEST_F(ListPortsTest, TheFirstSixAreThePlugInsAndThereMayBeMore) {
    addBoardPorts("00:04", {"ttyS10", "ttyS2", "ttyS0", "ttyS3", "ttyS1"}, "4");
    addBoardPorts("00:05", {"ttyS4", "ttyS5"}, "0");
    add("/devices/virtual", "tty1");
    bed->add("P: /devices/virtual/bluetooth/hci0\nE: SUBSYSTEM=bluetooth\n\n");
    add("/devices/virtual/bluetooth/hci0", "rfcomm0");
    const std::vector<std::string> six = {"rfcomm0", "ttyS0", "ttyS1", "ttyS2", "ttyS3", "ttyS10"};
    EXPECT_EQ(names(), six);
    EXPECT_EQ(listedNames(), six);

    addBoardPorts("00:06", {"ttyS11", "ttyS12"}, "4");
    EXPECT_EQ(names().size(), 8U);
}

TEST_F(ListPortsTest, AnAdapterInTheTable) {
    bed->addUsb("1-1", {18, 1, 0, 2, 0, 0, 0, 64, 3, 4, 1, 0x60, 0, 6, 0, 0, 0, 0}, 1);
    const std::string above = bed::DeviceBed::usbPath("1-1") + "/1-1:1.0/ttyUSB0";
    bed->add("P: " + above + "\nE: SUBSYSTEM=usb-serial\nE: DRIVER=ftdi_sio\nL: driver=../../ftdi_sio\n\n");
    add(above, "ttyUSB0", "E: DEVLINKS=/dev/serial/by-id/usb-A1-if00\n");
    Result result = run({"ports"});
    EXPECT_EQ(result.code, 0) << result.err;
    EXPECT_EQ(result.out, "NAME     PATH          STABLE NAME                    HARDWARE   DRIVER    ACCESS   HOLDER\n"
                          "ttyUSB0  /dev/ttyUSB0  /dev/serial/by-id/usb-A1-if00  0403:6001  ftdi_sio  no node  -\n");
}

TEST_F(ListPortsTest, NoPortAtAll) {
    Result result = run({"ports"});
    EXPECT_EQ(result.code, 3);
    EXPECT_EQ(result.out, "");
    EXPECT_EQ(result.err.rfind("vectorix: no serial port found; plug the adapter in", 0), 0U) << result.err;
    EXPECT_EQ(nlohmann::json::parse(run({"ports", "--json"}).out)["exitCode"], 3);
}

} // namespace
