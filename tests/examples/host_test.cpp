// The example hosts, each by itself: EXAMPLE_HOST names the one that these are about. Both do the same in the same words.
#include "host/usb/bed_fixture.h"

#include <csignal>
#include <cstdlib>

namespace {

class ExampleHostTest : public BedTest {
protected:
    void SetUp() override {
        ASSERT_NE(getenv("EXAMPLE_HOST"), nullptr) << "set it to the host to test, as ctest does";
        setenv("ORB_VECTORIX_LIBRARY", LIBRARY, 1); // for the one that is not linked to it
    }

    static Running start(const Words &words) { return Running(words, getenv("EXAMPLE_HOST")); }

    FarEnd plotter_;
    const std::string job_ = file("job", "<plist><dict><key>Plotter emulation ID :</key><integer>17002</integer>"
                                         "<key>Plotfile terminator :</key><string>;</string></dict></plist>");
};

/// Everything is refused before the plug-in tries the port for eleven seconds.
TEST_F(ExampleHostTest, RefusesWhatCannotBe) {
    EXPECT_TRUE(ended(start({}).wait(), 2, "usage: "));
    EXPECT_TRUE(ended(start({"print", plotter_.port()}).wait(), 2, "usage: "));
    EXPECT_TRUE(ended(start({"print", "/dev/ttyNONE7", job_, EXAMPLE}).wait(), 3, "host: /dev/ttyNONE7: "));
    EXPECT_TRUE(ended(start({"print", plotter_.port(), job_, "no/plot"}).wait(), 3, "host: no/plot: no such file"));
    EXPECT_TRUE(ended(start({"print", plotter_.port(), "no/job", EXAMPLE}).wait(), 3, "host: no/job: no such file"));
}

/// Side by side, each at a plotter of its own. The pauses around a request for the limits are real: six seconds.
TEST_F(ExampleHostTest, PrintsAndAsks) {
    FarEnd asked, gone, held;
    Running printing = start({"print", plotter_.port(), job_, EXAMPLE});
    Running asking = start({"limits", asked.port()});
    Running losing = start({"-v", "print", gone.port(), job_, file("plot", plotOf(2))});
    Running stopping = start({"print", held.port(), job_, file("long", plotOf(4000))});

    // It hangs in a write when Ctrl-C comes.
    ASSERT_TRUE(held.hasHeard());
    stopping.signal(SIGINT);
    // Its last bytes may be lost, though the plug-in's record says that the port was closed well.
    EXPECT_EQ(gone.read(plotOf(2).size()), plotOf(2));
    gone.hangUp();
    const std::string plot = contents(EXAMPLE), size = std::to_string(plot.size());
    EXPECT_EQ(plotter_.read(plot.size()), plot);
    EXPECT_EQ(asked.read(6), "IN;OH;");
    asked.write("7,11,15200,10800\r");

    EXPECT_TRUE(ended(stopping.wait(), 130, "stopped\n"));
    const Result lost = losing.wait(), printed = printing.wait(), limits = asking.wait();
    EXPECT_TRUE(ended(lost, 1, "plot: "));
    EXPECT_TRUE(holds(lost.err, "[S17] called by ORB Vectorix\n")) << "-v shows the plug-in's lines";
    EXPECT_TRUE(ended(printed, 0, "\r 50 % sent"));
    EXPECT_EQ(printed.out, "sent " + size + " of " + size + " bytes\n");
    EXPECT_TRUE(printed.err.ends_with("\r100 % sent\n")) << "and no line of the plug-in: " << printed.err;
    EXPECT_EQ(limits.code, 0);
    EXPECT_EQ(limits.out + limits.err, "7 11 15200 10800\n");
}

TEST_F(ExampleHostTest, ListsPortsAndPlotters) {
    makeBed();
    if (IsSkipped()) return;
    EXPECT_EQ(start({"ports"}).wait().code, 3);
    EXPECT_EQ(start({"plotters", "0b75", "0402"}).wait().code, 3);

    bed->add("P: /devices/pnp0/00:04\nE: SUBSYSTEM=pnp\n\n");
    for (const char *name : {"ttyS0", "ttyS1", "ttyS2", "ttyS3", "ttyS4", "ttyS5", "ttyS6"})
        addPort("/devices/pnp0/00:04", name, "A: type=4\\n\n");
    const bed::UsbPlotter left(*bed, {.place = "1-1"}), right(*bed, {.place = "1-2"});
    EXPECT_EQ(start({"ports"}).wait().out, "/dev/ttyS0\n/dev/ttyS1\n/dev/ttyS2\n/dev/ttyS3\n/dev/ttyS4\n/dev/ttyS6\n")
        << "the seventh takes the sixth's place";
    EXPECT_EQ(start({"plotters", "0b75", "0402"}).wait().out, "0b75:0402 at 01080000\n0b75:0402 at 01100000\n");
}

} // namespace
