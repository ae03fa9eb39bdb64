// The example hosts, each by itself: EXAMPLE_HOST names the one that these are about. Both do the same in the same words.
#include "host/host_fixture.h"
#include "support/usb_plotter.h"

#include <csignal>
#include <cstdlib>

namespace {

class ExampleHostTest : public HostTest {
protected:
    void SetUp() override {
        const char *host = getenv("EXAMPLE_HOST");
        ASSERT_NE(host, nullptr) << "set it to the host to test, as ctest does";
        host_ = host;
        setenv("ORB_VECTORIX_LIBRARY", LIBRARY, 1); // for the one that is not linked to it
    }

    Running start(const std::vector<std::string> &words) { return Running(words, false, "", host_); }

    /// A job file of the usual emulation.
    std::string jobFile() {
        EXPECT_EQ(run({"job", "write", path("job.plist")}).code, 0);
        return path("job.plist");
    }

    std::string host_;
};

/// Everything is refused before the plug-in tries the port for eleven seconds.
TEST_F(ExampleHostTest, RefusesWhatCannotBe) {
    FarEnd plotter;
    const std::string job = jobFile();
    const struct {
        std::vector<std::string> words;
        int code;
        const char *says;
    } kRows[] = {
        {{}, 2, "usage: "},
        {{"print", plotter.port()}, 2, "usage: "},
        {{"limits", "/dev/ttyNONE7"}, 3, "host: /dev/ttyNONE7: "},
        {{"print", "/dev/ttyNONE7", job, EXAMPLE}, 3, "host: /dev/ttyNONE7: "},
        {{"print", plotter.port(), job, "no/plot"}, 3, "host: no/plot: no such file"},
        {{"print", plotter.port(), "no/job", EXAMPLE}, 3, "host: no/job: no such file"},
    };
    for (const auto &row : kRows) {
        SCOPED_TRACE(row.says);
        Result result = start(row.words).wait();
        EXPECT_EQ(result.code, row.code) << result.err;
        EXPECT_EQ(result.err.rfind(row.says, 0), 0U) << result.err;
        EXPECT_EQ(result.out, "");
    }
}

TEST_F(ExampleHostTest, PrintsTheExample) {
    FarEnd plotter;
    Running printing = start({"print", plotter.port(), jobFile(), EXAMPLE});
    const std::string plot = contents(EXAMPLE);
    EXPECT_EQ(plotter.read(), plot);
    Result result = printing.wait();
    EXPECT_EQ(result.code, 0) << result.err;
    const std::string size = std::to_string(plot.size());
    EXPECT_EQ(result.out, "sent " + size + " of " + size + " bytes\n");
    EXPECT_NE(result.err.find("\r 50 % sent"), std::string::npos) << result.err;
    EXPECT_EQ(result.err.substr(result.err.rfind('\r')), "\r100 % sent\n") << "and no line of the plug-in";
}

/// Its last bytes may be lost, though the plug-in's record says that the port was closed well.
TEST_F(ExampleHostTest, TellsThatThePortWasGoneAtTheEnd) {
    FarEnd plotter;
    Running printing = start({"-v", "print", plotter.port(), jobFile(), file("plot", plotOf(2))});
    EXPECT_EQ(plotter.read(plotOf(2).size()), plotOf(2));
    plotter.hangUp();
    Result result = printing.wait();
    EXPECT_EQ(result.code, 1) << result.err;
    EXPECT_NE(result.err.find("[S17] called by ORB Vectorix\n"), std::string::npos) << "-v shows the plug-in's lines";
    EXPECT_NE(result.err.find("plot: "), std::string::npos) << result.err;
}

/// The far end reads nothing, so that the job hangs in a write when Ctrl-C comes.
TEST_F(ExampleHostTest, CtrlCStopsAJobThatAPlotterHolds) {
    FarEnd plotter;
    Running printing = start({"print", plotter.port(), jobFile(), file("plot", plotOf(4000))});
    ASSERT_TRUE(plotter.hasHeard());
    printing.signal(SIGINT);
    Result result = printing.wait();
    EXPECT_EQ(result.code, 130) << result.err;
    EXPECT_NE(result.err.find("stopped\n"), std::string::npos) << result.err;
}

// The plug-in's pauses around a request are real: six seconds.
TEST_F(ExampleHostTest, AsksForTheLimits) {
    FarEnd plotter;
    Running asking = start({"limits", plotter.port()});
    EXPECT_EQ(plotter.read(6), "IN;OH;");
    plotter.write("7,11,15200,10800\r");
    Result result = asking.wait();
    EXPECT_EQ(result.code, 0) << result.err;
    EXPECT_EQ(result.out, "7 11 15200 10800\n");
    EXPECT_EQ(result.err, "");
}

TEST_F(ExampleHostTest, ListsPortsAndPlotters) {
    if (const char *reason = bed::whyNot()) GTEST_SKIP() << reason;
    bed::DeviceBed bed;
    setenv("LD_PRELOAD", "libumockdev-preload.so.0", 1); // for the host, which is not linked to it as this program is
    setenv("ASAN_OPTIONS", "verify_asan_link_order=0", 0);
    EXPECT_EQ(start({"ports"}).wait().code, 3);
    EXPECT_EQ(start({"plotters", "0b75", "0402"}).wait().code, 3);

    bed.add("P: /devices/pnp0/00:04\nE: SUBSYSTEM=pnp\n\n");
    for (const char *name : {"ttyS0", "ttyS1", "ttyS2", "ttyS3", "ttyS4", "ttyS5", "ttyS6"}) {
        bed.add("P: /devices/pnp0/00:04/tty/" + std::string(name) + "\nE: DEVNAME=/dev/" + name +
                "\nE: SUBSYSTEM=tty\nA: type=4\\n\n\n");
    }
    const bed::UsbPlotter left(bed, {.place = "1-1"});
    const bed::UsbPlotter right(bed, {.place = "1-2"});
    Result ports = start({"ports"}).wait();
    EXPECT_EQ(ports.code, 0) << ports.err;
    EXPECT_EQ(ports.out, "/dev/ttyS0\n/dev/ttyS1\n/dev/ttyS2\n/dev/ttyS3\n/dev/ttyS4\n/dev/ttyS6\n")
        << "the seventh takes the sixth's place";
    Result plotters = start({"plotters", "0b75", "0402"}).wait();
    EXPECT_EQ(plotters.code, 0) << plotters.err;
    EXPECT_EQ(plotters.out, "0b75:0402 at 01080000\n0b75:0402 at 01100000\n");
    unsetenv("LD_PRELOAD");
}

} // namespace
