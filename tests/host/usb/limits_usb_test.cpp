// A query for the limits of a USB plotter in software.
#include "host/usb/bed_fixture.h"
#include "support/answering_plotter.h"

namespace {

class LimitsUsbTest : public BedTest {};

// The pauses of a query are real: four seconds. Without the identifier the command would write to the in endpoint.
TEST_F(LimitsUsbTest, AsksThePlotterOnThePipeOfItsIdentifier) {
    const bed::AnsweringPlotter plotter(*bed, {.settings = {{}, {{0x01}, {0x82}}}}, 17002);
    const Result result = run({"limits", "--usb", "--plotter-id", "20596"});
    EXPECT_EQ(result.code, 0) << result.err;
    EXPECT_EQ(result.out, "lower left   0, 0\nupper right  10000, 8000\nsize         250.0 x 200.0 mm\n");
    EXPECT_EQ(plotter.usb().written(), "IN;IN;OH;");
}

} // namespace
