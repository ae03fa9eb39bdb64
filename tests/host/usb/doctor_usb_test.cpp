// vectorix doctor on a system in software.
#include "host/usb/bed_fixture.h"
#include "support/usb_plotter.h"

#include <nlohmann/json.hpp>

namespace {

class DoctorUsbTest : public BedTest {
protected:
    nlohmann::json examine(const std::vector<std::string> &words, int code) {
        std::vector<std::string> all = {"doctor", "--json"};
        all.insert(all.end(), words.begin(), words.end());
        Result result = run(all);
        EXPECT_EQ(result.code, code) << result.out << result.err;
        return nlohmann::json::parse(result.out)["links"];
    }

    static bool has(const nlohmann::json &link, const std::string &name) {
        for (const auto &found : link["findings"]) {
            if (found["name"] == name) return true;
        }
        return false;
    }
};

TEST_F(DoctorUsbTest, NothingAtAll) {
    EXPECT_TRUE(has(examine({}, 3)[0], "nothing-found"));
    EXPECT_TRUE(has(examine({"--usb"}, 3)[0], "no-such-plotter"));
}

TEST_F(DoctorUsbTest, PlottersEachWithItsDriver) {
    const bed::UsbPlotter left(*bed, {.place = "1-1", .driver = "usblp"});
    auto links = examine({"--usb"}, 0);
    EXPECT_EQ(links[0]["link"], "0b75:0402@01080000");
    EXPECT_EQ(links[0]["state"], "free");
    EXPECT_TRUE(has(links[0], "printer-driver"));

    const bed::UsbPlotter claimed(*bed, {.place = "1-2", .driver = "usbfs"});
    const bed::UsbPlotter taken(*bed, {.place = "1-3", .vendor = 0x1234, .driver = "cdc_acm"});
    links = examine({}, 5);
    EXPECT_TRUE(has(links[1], "claimed")) << links;
    EXPECT_TRUE(has(links[2], "foreign-driver")) << links;
    EXPECT_EQ(examine({"--usb", "0b75:0402"}, 5)[1]["link"], "0b75:0402@01100000");
    EXPECT_NE(examine({"--usb", "0b75:0402@01080000"}, 0)[1]["kind"], "usb") << "only the one that was named";
}

TEST_F(DoctorUsbTest, AnAdapterWithoutItsPort) {
    bed->addUsb("1-1", {18, 1, 0, 2, 0, 0, 0, 64, 3, 4, 1, 0x60, 0, 6, 0, 0, 0, 0}, 1);
    auto links = examine({}, 3);
    EXPECT_EQ(links[0]["kind"], "adapter");
    EXPECT_TRUE(has(links[0], "driver-missing"));
    EXPECT_EQ(links[0]["findings"][0]["command"], "sudo modprobe ftdi_sio");
    links = examine({"--port", "/dev/no-such-port"}, 3);
    EXPECT_TRUE(has(links[0], "no-such-port"));
    EXPECT_TRUE(has(links[1], "driver-missing")) << "it may be the port that is missed";
}

} // namespace
