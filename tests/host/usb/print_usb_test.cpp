// The command against USB plotters in software: the whole road, from sysfs to transfers on the bus.
#include "host/usb/bed_fixture.h"
#include "support/usb_plotter.h"

#include <chrono>
#include <csignal>
#include <future>
#include <glib.h>
#include <nlohmann/json.hpp>
#include <utility>

namespace {

// GLib remembers its first answer, which must not be the folder of a test: that goes with the test.
[[maybe_unused]] const char *const kTemporaryFolder = g_get_tmp_dir();

class PrintUsbTest : public BedTest {
protected:
    std::string plot_ = file("plot.plt", plotOf(4));
};

TEST_F(PrintUsbTest, ListsWhatThereIs) {
    EXPECT_EQ(run({"plotters"}).code, 3);
    const bed::UsbPlotter left(*bed, {.place = "1-1", .driver = "usblp"});
    const bed::UsbPlotter right(*bed, {.place = "1-2.3", .vendor = 0x1234, .product = 0x00A1});
    Result table = run({"plotters"});
    EXPECT_EQ(table.code, 0) << table.err;
    EXPECT_EQ(table.out, "MODEL      NAME  SERIAL NUMBER  LOCATION  ACCESS  HOLDER\n"
                         "0b75:0402  -     -              01080000  ok      driver usblp\n"
                         "1234:00a1  -     -              01118000  ok      -\n");

    Result model = run({"plotters", "--vendor", "0x1234", "--product", "a1", "--json"});
    auto plotters = nlohmann::json::parse(model.out)["plotters"];
    ASSERT_EQ(plotters.size(), 1U) << model.out;
    EXPECT_EQ(plotters[0]["location"], "01118000") << "as the plug-in says";
    EXPECT_EQ(plotters[0]["node"], right.node());
    EXPECT_EQ(run({"print", plot_, "--usb"}).code, 2) << "which of the two?";
}

TEST_F(PrintUsbTest, PrintsToTheOneAtThatPlace) {
    const bed::UsbPlotter left(*bed, {.place = "1-1", .vendor = 0x1234});
    bed::UsbPlotter right(*bed, {.place = "1-2", .vendor = 0x1234, .driver = "usblp"});
    Result result = run({"print", plot_, "--usb", "1234:0402@01100000", "-v"});
    EXPECT_EQ(result.code, 0) << result.err;
    EXPECT_EQ(right.written(), "IN;" + contents(plot_));
    EXPECT_EQ(left.written(), "");
    EXPECT_EQ(result.out.rfind("sent " + std::to_string(contents(plot_).size()) + " bytes in ", 0), 0U) << result.out;
    EXPECT_NE(result.out.find(" to 1234:0402@01100000 in "), std::string::npos) << result.out;
    EXPECT_NE(result.err.find("usblp is put aside"), std::string::npos) << result.err;
    EXPECT_EQ(right.driver(), "usblp") << "given back";

    EXPECT_EQ(run({"profile", "add", "right", "--usb", "1234:0402@01100000"}).code, 0);
    EXPECT_EQ(run({"print", plot_, "-p", "right"}).code, 0);
    EXPECT_EQ(right.written(), "IN;" + contents(plot_) + "IN;" + contents(plot_));
    EXPECT_EQ(left.written(), "");
}

TEST_F(PrintUsbTest, SendsATextAsASmallJob) {
    const bed::UsbPlotter plotter(*bed, {.vendor = 0x1234});
    const std::string text = "PU;PA" + std::string(90, '1') + ",1;\\e.R"; // of several pieces, and no terminator behind it
    Result result = run({"send", text, "--usb", "--json"});
    auto report = nlohmann::json::parse(result.out);
    EXPECT_EQ(plotter.written(), report["startText"].get<std::string>() + text.substr(0, 98) + "\x1B.R") << result.err;
    EXPECT_EQ(report["sentBytes"], 101);
    result = run({"send", "PU;", "--usb", "--emulation", "17008"});
    EXPECT_EQ(result.code, 2) << "it would be sent in no part";
}

TEST_F(PrintUsbTest, NamesThePipeThatIsNone) {
    // The plug-in writes to the second pipe of this vendor's plotters.
    const bed::UsbPlotter plotter(*bed, {.vendor = 0x0C30, .settings = {{{0x02}}}});
    Result result = run({"print", plot_, "--usb"});
    EXPECT_EQ(result.code, 1);
    EXPECT_EQ(plotter.written(), "");
    EXPECT_NE(result.err.find("the out pipe 2 of this plotter is not an out endpoint"), std::string::npos) << result.err;
    EXPECT_EQ(result.out.rfind("sent nothing to 0c30:0402@01080000", 0), 0U) << result.out;
}

TEST_F(PrintUsbTest, TellsOfAPlotterUnpluggedOnTheWay) {
    bed::UsbPlotter plotter(*bed, {.vendor = 0x1234});
    std::string longPlot = file("long.plt", plotOf(60));
    plotter.takeOnly(300);
    plotter.onWait = [&] { plotter.unplug(); };
    Result result = run({"print", longPlot, "--usb", "--keep-going"}); // which has nothing to go on with
    EXPECT_EQ(result.code, 6) << result.err;
    EXPECT_NE(result.err.find(" bytes; the plotter is gone;"), std::string::npos) << result.err;
    EXPECT_NE(result.out.find(" in 1 piece failed; "), std::string::npos) << result.out;
    EXPECT_EQ(plotter.written(), ("IN;" + contents(longPlot)).substr(0, 300));
}

/// A second command is kept out meanwhile; once the first is stopped the plotter is free for the next.
TEST_F(PrintUsbTest, StopsWhilePlotterDoesNotTake) {
    bed::UsbPlotter plotter(*bed, {.vendor = 0x1234});
    std::promise<void> waits;
    plotter.takeOnly(100);
    plotter.onWait = [&, once = false]() mutable {
        if (!std::exchange(once, true)) waits.set_value();
    };
    Running printing({"print", file("long.plt", plotOf(60)), "--usb", "--json"}, false);
    ASSERT_EQ(waits.get_future().wait_for(std::chrono::seconds(20)), std::future_status::ready);
    expectRefusals({{{"print", plot_, "--usb"}, 5, "busy: held by "}});
    printing.signal(SIGINT);
    Result result = printing.wait();
    EXPECT_EQ(result.code, 130) << result.err;
    EXPECT_EQ(nlohmann::json::parse(result.out)["sentBytes"], 100 - std::string("IN;").size()) << result.out;
    EXPECT_EQ(plotter.log().back(), "release");
    EXPECT_EQ(plotter.written().size(), 100U) << "nothing of the second command";
    plotter.takeOnly(SIZE_MAX);
    Result next = run({"print", plot_, "--usb"});
    EXPECT_EQ(next.code, 0) << next.err;
    EXPECT_EQ(plotter.written().substr(100), "IN;" + contents(plot_));
}

} // namespace
