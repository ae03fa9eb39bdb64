#include "host/attendance/gate.h"
#include "host/host_fixture.h"
#include "host/plugin/progress.h"
#include "host/plugin/stop_signals.h"
#include "language/plot_reader.h"

#include <csignal>
#include <nlohmann/json.hpp>
#include <set>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <thread>

namespace {

using host::Ask;
using host::GateEvent;
using enum host::GateEvent;

class AttendanceTest : public HostTest {};

TEST(Gate, HoldsAPrintWhereThePenIsUp) {
    const struct {
        const char *what;
        std::vector<Ask> asked;
        bool isPenUp;
        Ask then; ///< when the print stands still
        bool goesOn;
        std::vector<GateEvent> told;
    } kRows[] = {
        {"pen down", {Ask::Pause}, false, Ask::Go, true, {Pausing}},
        {"pen up", {Ask::Pause, Ask::Pause}, true, Ask::Go, true, {Pausing, Paused, GoingOn}},
        {"pen down, at once", {Ask::Pause, Ask::PauseAtOnce}, false, Ask::Toggle, true, {Pausing, Paused, GoingOn}},
        {"taken back", {Ask::Toggle, Ask::Toggle}, true, Ask::Stop, true, {Pausing, GoingOn}},
        {"nothing to go on from", {Ask::Go}, true, Ask::Stop, true, {}},
        {"stopped in a pause", {Ask::Pause}, true, Ask::Stop, false, {Pausing, Paused}},
        {"stopped before", {Ask::Pause, Ask::Stop, Ask::Go}, true, Ask::Go, false, {Pausing}},
    };
    for (const auto &row : kRows) {
        const host::StopOnSignal signals;
        std::vector<GateEvent> told;
        std::jthread person;
        host::Gate gate([&](GateEvent event, const std::string &) {
            told.push_back(event);
            if (event == Paused) person = std::jthread([&] { gate.ask(row.then); });
        });
        for (Ask ask : row.asked)
            gate.ask(ask);
        EXPECT_EQ(gate.pass(row.isPenUp), row.goesOn) << row.what;
        EXPECT_EQ(told, row.told) << row.what;
    }
}

TEST(Progress, CorrectsTheTimeLeftByWhatWasMeasured) {
    EXPECT_EQ(host::paceOf(50, 9, 100), 1); // too early to tell
    EXPECT_EQ(host::paceOf(45, 30, 1000), 1.5);
    EXPECT_EQ(host::paceOf(999, 50, 100), 4);
    EXPECT_EQ(host::paceOf(1, 50, 100), 0.25);
}

/// The lines that pens draw.
struct Lines final : language::PenSink {
    std::set<std::array<double, 5>> drawn = {};
    int pen = 0;
    language::Point at = {};

    explicit Lines(const std::string &plot) {
        language::PlotReader reader(language::Language::Hpgl, *this, {{0, 0}, {16640, 11040}}, language::Clipping::None);
        reader.take(plot);
        reader.finish();
    }
    void setPen(int number, double) override { pen = number; }
    void begin(language::Point from) override { at = from; }
    void line(language::Point to) override {
        drawn.insert({double(pen), at.x, at.y, to.x, to.y});
        at = to;
    }
    void fill(std::span<const language::Point>, std::span<const size_t>) override {}
};

std::string plotOfPens(int pens, int lines) {
    std::string plot = "IN;";
    for (int pen = 1; pen <= pens; ++pen)
        plot += "SP" + std::to_string(pen) + plotOf(lines).substr(6, plotOf(lines).size() - 10);
    return plot + "SP0;";
}

TEST_F(AttendanceTest, TakesUpAgainWhatWasStopped) {
    const std::string plot = plotOfPens(2, 3000), all = file("a.plt", plot), rest = path("rest");
    FarEnd plotter;
    Running print({"print", all, "--port", plotter.port()});
    std::string heard = plotter.read(plot.size() / 2);
    print.signal(SIGTERM);
    heard += plotter.read();
    EXPECT_TRUE(ended(print.wait(), 130, "; the pen was put away"));
    EXPECT_TRUE(heard.ends_with(";PU;SP0;")) << heard.substr(heard.size() - 99);
    EXPECT_TRUE(ended(run({"print", all, "--capture", rest, "--resume"}), 0, "note: begins at byte "));
    Lines whole(plot), second(contents(rest)), both(heard);
    EXPECT_LT(second.drawn.size(), whole.drawn.size() * 2 / 3);
    EXPECT_TRUE(std::ranges::includes(whole.drawn, second.drawn));
    both.drawn.merge(second.drawn);
    EXPECT_TRUE(std::ranges::includes(both.drawn, whole.drawn));
    file("a.plt", plot + "PU;"); // another plot now
    EXPECT_TRUE(ended(run({"print", all, "--capture", rest, "--resume"}), 2, "--resume: no print of "));
}

TEST_F(AttendanceTest, EndsALabelBeforeThePenIsPutAway) {
    FarEnd plotter;
    Running print(
        {"print", file("a.plt", "IN;SP1;LB" + std::string(90'000, 'x') + ";\3SP0;"), "--port", plotter.port(), "--force"});
    std::string heard = plotter.read(20'000);
    print.signal(SIGINT);
    heard += plotter.read();
    EXPECT_TRUE(heard.ends_with("x\3;PU;SP0;")) << print.wait().err;
}

TEST_F(AttendanceTest, WaitsForPens) {
    const std::string plot = plotOfPens(3, 5), captured = path("out");
    const Words words = {"print", file("a.plt", plot), "--capture", captured, "--pens-held", "1"};
    EXPECT_TRUE(ended(run(words), 2, "there is no terminal to ask at"));
    Words watched = words;
    watched.insert(watched.end(), {"--pen-change", "pause", "--progress", "json:1"});
    Running print(watched);
    for (const char *pen : {"put in pen 2: 5 strokes", "put in pen 3: 5 strokes"}) {
        std::string line;
        while (line.find("\"penWanted\"") == std::string::npos)
            ASSERT_FALSE((line = print.line()).empty());
        EXPECT_TRUE(holds(line, pen));
        print.signal(SIGUSR1);
    }
    EXPECT_TRUE(ended(print.wait(), 0, R"({"event":"done","state":"ended","report":{"exitCode":0)"));
    EXPECT_EQ(Lines(contents(captured)).drawn, Lines(plot).drawn);
}

/// A controller at the socket.
class Controller {
public:
    explicit Controller(const std::string &path) : socket_(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
        sockaddr_un address{AF_UNIX, {}};
        path.copy(address.sun_path, sizeof address.sun_path - 1);
        EXPECT_EQ(connect(socket_.get(), reinterpret_cast<sockaddr *>(&address), sizeof address), 0);
    }
    std::string ask(const std::string &line) const {
        char answer[1000];
        EXPECT_EQ(write(socket_.get(), line.data(), line.size()), static_cast<ssize_t>(line.size()));
        return {answer, static_cast<size_t>(std::max<ssize_t>(0, read(socket_.get(), answer, sizeof answer)))};
    }

private:
    UniqueFd socket_;
};

TEST_F(AttendanceTest, ObeysOneController) {
    FarEnd plotter;
    const std::string plot = file("a.plt", plotOf(9000)), control = path("control");
    const Words words = {"print", plot, "--port", plotter.port(), "--control", control, "--progress", "json:1"};
    Running print = shell("trap '' INT TERM; exec \"$0\" \"$@\"", words); // as shells start children in the background
    plotter.hasHeard();
    struct stat entry {};
    EXPECT_EQ(stat(control.c_str(), &entry) == 0 ? entry.st_mode & 0777 : 0, 0600U);
    EXPECT_TRUE(ended(run({"print", plot, "--capture", path("x"), "--control", control}), 2, "of that name already"));
    const Controller controller(control);
    for (const auto &[line, says] : {std::pair{"status\n", R"({"state":"plotting","plotFile":)"},
                                     {"bogus\n", R"({"error":"unknown command)"},
                                     {"pause\n", R"({"state":"pausing",)"},
                                     {"go\n", R"({"state":"plotting",)"}})
        EXPECT_TRUE(holds(controller.ask(line), says));
    EXPECT_TRUE(holds(Controller(control).ask(""), "another controller"));
    EXPECT_TRUE(holds(controller.ask("stop\n"), R"({"state":"ended",)"));
    plotter.read();
    const Result result = print.wait();
    EXPECT_EQ(result.code, 130);
    std::vector<std::string> events;
    std::istringstream lines(result.out);
    for (std::string line; std::getline(lines, line) && line.starts_with('{');) {
        const std::string event = nlohmann::json::parse(line)["event"];
        if (event != "progress") events.push_back(event);
    }
    EXPECT_EQ(events, (std::vector<std::string>{"started", "pausing", "goingOn", "stopped", "done"}));
    EXPECT_NE(access(control.c_str(), F_OK), 0);
}

} // namespace
