// Service 11 on the road through udev and libusb, one plotter for each family of requests; only the pauses are virtual.
#include "registry_fixture.h"

#include "service/state.h"
#include "support/answering_plotter.h"
#include "support/scripted.h"

#include <array>

namespace {

class LimitsTest : public RegistryTest {
protected:
    LimitsTest() { platform::backends().registry = &registry; }

private:
    scripted::Platform platform_;
};

TEST_F(LimitsTest, EachFamilyOfRequests) {
    using Settings = std::vector<bed::PlotterSetting>;
    const bed::PlotterSetting kOutIn = {{0x01}, {0x82}}, kInOut = {{0x81}, {0x02}};
    const Settings kOutFirst = {kOutIn}, kInFirst = {kInOut}, kSecondOutFirst = {{}, kOutIn}, kSecondInFirst = {{}, kInOut};
    const struct {
        const char *what;
        uint16_t vendor;
        Settings settings;
        int32_t plotterID, emulation;
        uint32_t variant;
        std::string asked;
        double right = 10000, top = 8000;
    } kRows[] = {
        {"HP-GL", 0x1234, kOutFirst, 0, 17002, 1, "IN;IN;OH;"},
        {"a first pipe", 0x0B75, kSecondOutFirst, 20596, 17001, 1, "IN;OH;"},
        {"a second pipe", 0x0B75, kSecondInFirst, 0, 17001, 1, "IN;OH;"},
        {"blanks", 0x0C30, kInFirst, 0, 17005, 1, "IN-1;OH;"},
        {"tenths of a millimetre", 0x099F, kInFirst, 0, 17030, 3, ";:EH,ECM,ER,Q@", 2500, 2000},
        {"pairs", 0x0B4D, kOutFirst, 0, 17009, 1, "[[UU"},
        {"behind an escape sequence", 0x0B4D, kOutFirst, 0, 17009, 2, "\x1b%0B\x03NP4,\x03NP7,70,\x03NP7,76,!ST1;"},
    };
    uint16_t port = 0;
    for (const auto &row : kRows) {
        SCOPED_TRACE(row.what);
        ++port;
        const bed::PlotterShape shape{.place = "1-" + std::to_string(port), .vendor = row.vendor, .settings = row.settings};
        const bed::AnsweringPlotter plotter(*bed, shape, row.emulation);
        ORB_ServiceRecord record{};
        record.ORB_serviceNumber = kORB_ServiceUSBHardClip;
        record.ORB_OutputMethode = kORB_OSX_METHOD_USB;
        record.ORB_USBidVendor = row.vendor;
        record.ORB_USBidProduct = shape.product;
        record.ORB_USBlocationID = 0x01000000U + (uint32_t{port} << 19);
        record.ORB_EmulationID = record.ORB_queryEmulationID = row.emulation;
        record.ORB_queryPlotterID = row.plotterID;
        record.ORB_emulationVariant = row.variant;
        record = ORB_getVectorixCS2(record);
        ORB_hostReleaseString(record.ORB_CFSTR_message);
        EXPECT_EQ((std::array{record.ORB_HARDC_1, record.ORB_HARDC_2, record.ORB_HARDC_3, record.ORB_HARDC_4}),
                  (std::array{0.0, 0.0, row.right, row.top}));
        EXPECT_EQ(plotter.usb().written(), row.asked);
        ASSERT_FALSE(plotter.usb().log().empty());
        EXPECT_EQ(plotter.usb().log().back(), "release");
    }
}

} // namespace
