// The command against USB plotters in software: the whole road, from sysfs to transfers on the bus.
#include "host/usb/bed_fixture.h"
#include "support/answering_plotter.h"

#include <chrono>
#include <csignal>
#include <future>
#include <glib.h>
#include <nlohmann/json.hpp>
#include <unistd.h>
#include <utility>

namespace {

// GLib remembers its first answer, which must not be the folder of a test: that goes with the test.
[[maybe_unused]] const char *const kTemporaryFolder = g_get_tmp_dir();

class PrintUsbTest : public BedTest {
protected:
    const std::string text_ = plotOf(4), plot_ = file("plot.plt", text_);
};

TEST_F(PrintUsbTest, PrintsToTheOneAtThatPlace) {
    const bed::UsbPlotter left(*bed, {.place = "1-1", .vendor = 0x1234});
    bed::UsbPlotter right(*bed, {.place = "1-2", .vendor = 0x1234, .driver = "usblp"});
    EXPECT_EQ(run({"print", plot_, "--usb"}).code, 2) << "which of the two?";
    EXPECT_EQ(run({"profile", "add", "right", "--usb", "1234:0402@01100000"}).code, 0);
    Result result = run({"print", plot_, "-p", "right", "-v"});
    EXPECT_TRUE(ended(result, 0, " to 1234:0402@01100000 in "));
    EXPECT_EQ(right.written(), "IN;" + text_);
    EXPECT_TRUE(result.out.starts_with("sent " + std::to_string(text_.size()) + " bytes in ")) << result.out;
    EXPECT_TRUE(holds(result.err, "usblp is put aside"));
    EXPECT_EQ(right.driver(), "usblp") << "given back";
    EXPECT_EQ(left.written(), "");
}

TEST_F(PrintUsbTest, SendsATextAsASmallJob) {
    const bed::UsbPlotter plotter(*bed, {.vendor = 0x1234});
    const std::string text = "PU;PA" + std::string(90, '1') + ",1;\\e.R"; // of several pieces, and no terminator behind it
    Result result = run({"send", text, "--usb", "--json"});
    auto report = nlohmann::json::parse(result.out);
    EXPECT_EQ(plotter.written(), report["startText"].get<std::string>() + text.substr(0, 98) + "\x1B.R") << result.err;
    EXPECT_EQ(report["sentBytes"], 101);
    EXPECT_EQ(run({"send", "PU;", "--usb", "--emulation", "17008"}).code, 2) << "it would be sent in no part";
}

TEST_F(PrintUsbTest, TellsOfAPlotterUnpluggedOnTheWay) {
    bed::UsbPlotter plotter(*bed, {.vendor = 0x1234});
    plotter.takeOnly(300);
    plotter.onWait = [&] { plotter.unplug(); };
    Result result = run({"print", file("long.plt", plotOf(60)), "--usb", "--keep-going"}); // which has nothing to go on with
    EXPECT_TRUE(ended(result, 6, " bytes; the plotter is gone;"));
    EXPECT_TRUE(holds(result.out, " in 1 piece failed; "));
    EXPECT_EQ(plotter.written(), ("IN;" + plotOf(60)).substr(0, 300));
}

/// A second command is kept out meanwhile; once the first is stopped the plotter is free for the next.
TEST_F(PrintUsbTest, StopsWhilePlotterDoesNotTake) {
    bed::UsbPlotter plotter(*bed, {.vendor = 0x1234});
    std::promise<void> waits;
    plotter.takeOnly(100);
    plotter.onWait = [&, once = false]() mutable {
        if (!std::exchange(once, true)) waits.set_value();
    };
    Running printing({"print", file("long.plt", plotOf(60)), "--usb", "--json"});
    ASSERT_EQ(waits.get_future().wait_for(std::chrono::seconds(20)), std::future_status::ready);
    expectRefusals({{{"print", plot_, "--usb"}, 5, "busy: held by "}});
    printing.signal(SIGINT);
    Result result = printing.wait();
    EXPECT_TRUE(ended(result, 130));
    EXPECT_EQ(nlohmann::json::parse(result.out)["sentBytes"], 100 - std::string("IN;").size());
    EXPECT_EQ(plotter.log().back(), "release");
    EXPECT_EQ(plotter.written().size(), 100U) << "nothing of the second command";
    plotter.takeOnly(SIZE_MAX);
    EXPECT_TRUE(ended(run({"print", plot_, "--usb"}), 0));
    EXPECT_EQ(plotter.written().substr(100), "IN;" + text_);
}

// The pauses of a query are real: four seconds, here side by side. The first plotter listens on the pipe that only its
// identifier names: without it the command would write to the in endpoint. The second is of another language, and has its in
// endpoint first.
TEST_F(PrintUsbTest, AsksThePlotterOnItsOwnPipe) {
    const bed::AnsweringPlotter hpgl(*bed, {.settings = {{}, {{0x01}, {0x82}}}}, 17002);
    const Result result = run({"limits", "--usb", "--plotter-id", "20597"});
    EXPECT_TRUE(ended(result, 0, "lower left   0, 0\nupper right  10000, 8000\nsize         250.0 x 200.0 mm\n"));
    EXPECT_EQ(hpgl.usb().written(), "IN;IN;OH;");
}

TEST_F(PrintUsbTest, AsksThePlotterInItsOwnLanguage) {
    const bed::AnsweringPlotter dmpl(*bed, {.vendor = 0x099F, .settings = {{{0x81}, {0x02}}}}, 17030);
    const Result result = run({"limits", "--usb", "--emulation", "17030", "--variant", "3"});
    EXPECT_TRUE(ended(result, 0, "value 1      0\nvalue 2      0\nvalue 3      2500\nvalue 4      2000\n"));
    EXPECT_EQ(dmpl.usb().written(), ";:EH,ECM,ER,Q@");
    EXPECT_EQ(dmpl.usb().log().back(), "release");
}

TEST_F(PrintUsbTest, EndsWhenThePlotterIsUnplugged) {
    bed::UsbPlotter plotter(*bed, {.vendor = 0x1234});
    plotter.onText = [&](std::string_view) { unlink(bed->fileOf(plotter.node()).c_str()); };
    Result result = run({"limits", "--usb", "--json"});
    EXPECT_TRUE(ended(result, 6, "the plotter is gone"));
    EXPECT_EQ(nlohmann::json::parse(result.out)["errorStatus"], static_cast<int32_t>(0xE00002EB)) << "aborted";
}

} // namespace
