// A query for the limits of a USB plotter in software.
#include "host/usb/bed_fixture.h"
#include "support/answering_plotter.h"

#include <nlohmann/json.hpp>
#include <unistd.h>

namespace {

class LimitsUsbTest : public BedTest {};

// The pauses of a query are real: four seconds each. The first plotter listens on the pipe that only its identifier names:
// without it the command would write to the in endpoint. The second is of another language, and has its in endpoint first.
TEST_F(LimitsUsbTest, AsksThePlotterOnItsOwnPipeInItsOwnLanguage) {
    const bed::AnsweringPlotter hpgl(*bed, {.settings = {{}, {{0x01}, {0x82}}}}, 17002);
    const bed::AnsweringPlotter dmpl(*bed, {.place = "1-2", .vendor = 0x099F, .settings = {{{0x81}, {0x02}}}}, 17030);
    Result result = run({"limits", "--usb", "0b75:0402", "--plotter-id", "20596"});
    EXPECT_EQ(result.code, 0) << result.err;
    EXPECT_EQ(result.out, "lower left   0, 0\nupper right  10000, 8000\nsize         250.0 x 200.0 mm\n");
    EXPECT_EQ(hpgl.usb().written(), "IN;IN;OH;");
    result = run({"limits", "--usb", "099f:0402", "--emulation", "17030", "--variant", "3"});
    EXPECT_EQ(result.code, 0) << result.err;
    EXPECT_EQ(result.out, "value 1      0\nvalue 2      0\nvalue 3      2500\nvalue 4      2000\n");
    EXPECT_EQ(dmpl.usb().written(), ";:EH,ECM,ER,Q@");
    EXPECT_EQ(dmpl.usb().log().back(), "release");
}

TEST_F(LimitsUsbTest, EndsWhenThePlotterIsUnplugged) {
    bed::UsbPlotter plotter(*bed, {.vendor = 0x1234});
    plotter.onText = [&](std::string_view) { unlink(bed->fileOf(plotter.node()).c_str()); };
    Result result = run({"limits", "--usb", "--json"});
    EXPECT_EQ(result.code, 6);
    EXPECT_NE(result.err.find("the plotter is gone"), std::string::npos) << result.err;
    EXPECT_EQ(nlohmann::json::parse(result.out)["errorStatus"], static_cast<int32_t>(0xE00002EB)) << "aborted";
}

} // namespace
