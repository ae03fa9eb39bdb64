#include "host/attendance/gate.h"
#include "host/host_fixture.h"
#include "host/plugin/progress.h"
#include "host/plugin/stop_signals.h"

#include <csignal>
#include <filesystem>
#include <set>
#include <thread>

namespace {

using host::Ask;
using host::GateEvent;
using enum host::GateEvent;

class AttendanceTest : public HostTest {};

TEST(Gate, HoldsAPrintWhereThePenIsUp) {
    const struct {
        std::vector<Ask> asked;
        bool isPenUp;
        Ask then; ///< when the print stands still
        bool goesOn;
        std::vector<GateEvent> told;
    } kRows[] = {
        {{Ask::Pause}, false, Ask::Go, true, {Pausing}},
        {{Ask::Pause, Ask::Pause}, true, Ask::Go, true, {Pausing, Paused, GoingOn}},
        {{Ask::Pause, Ask::PauseAtOnce}, false, Ask::Toggle, true, {Pausing, Paused, GoingOn}},
        {{Ask::Toggle, Ask::Toggle}, true, Ask::Stop, true, {Pausing, GoingOn}},
        {{Ask::Pause}, true, Ask::Stop, false, {Pausing, Paused}},
        {{Ask::Pause, Ask::Stop, Ask::Go}, true, Ask::Go, false, {Pausing}},
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
        EXPECT_EQ(gate.pass(row.isPenUp), row.goesOn) << &row - kRows;
        EXPECT_EQ(told, row.told) << &row - kRows;
    }
}

TEST(Progress, CorrectsTheTimeLeftByWhatWasMeasured) {
    EXPECT_EQ(host::paceOf(50, 9, 100), 1); // too early to tell
    EXPECT_EQ(host::paceOf(999, 50, 100), 4);
}

/// What it consists of.
std::set<std::string> instructionsOf(const std::string &plot) {
    std::istringstream text(plot);
    std::set<std::string> all;
    for (std::string one; std::getline(text, one, ';');)
        all.insert(one);
    return all;
}

bool hasAllOf(const std::string &plot, const std::set<std::string> &arrived) {
    const std::set<std::string> wanted = instructionsOf(plot);
    return std::includes(arrived.begin(), arrived.end(), wanted.begin(), wanted.end());
}

TEST_F(AttendanceTest, TakesUpAgainWhatWasStopped) {
    std::string plot = plotOf(2500);
    plot.insert(plot.size() - 4, "LB" + std::string(60'000, 'x') + "\3;");
    const std::string all = file("a.plt", plot), rest = path("rest");
    FarEnd plotter;
    Running print({"print", all, "--port", plotter.port()});
    std::string heard = plotter.read(plot.size() - 40'000);
    print.signal(SIGTERM);
    heard += plotter.read();
    EXPECT_TRUE(heard.ends_with("x\3;PU;SP0;")) << heard.substr(heard.size() - 99);
    EXPECT_TRUE(ended(print.wait(), 130, "; the pen was put away"));
    EXPECT_TRUE(ended(run({"print", all, "--capture", rest, "--resume"}), 0, "note: begins at byte "));
    std::set<std::string> both = instructionsOf(contents(rest));
    EXPECT_FALSE(both.contains("PD0,1000"));
    both.merge(instructionsOf(heard));
    EXPECT_TRUE(hasAllOf(plot, both));
    file("a.plt", plot + "PU;"); // another plot now
    EXPECT_TRUE(ended(run({"print", all, "--capture", rest, "--resume"}), 2, "--resume: no print of "));
}

TEST_F(AttendanceTest, WaitsForPens) {
    const std::string plot = "IN;SP1;PD10,0;PU;SP2;PD20,0;PD30,0;PU;SP3;PD40,0;SP0;", captured = path("out");
    const Words words = {"print", file("a.plt", plot), "--capture", captured, "--pens-held", "1"};
    EXPECT_TRUE(ended(run(words), 2, "there is no terminal to ask at"));
    Words watched = words;
    watched.insert(watched.end(), {"--pen-change", "pause", "--progress", "json:1"});
    Running print(watched);
    for (const char *pen : {"put in pen 2: 1 stroke, ", "put in pen 3: 1 stroke, "}) {
        std::string line;
        while (line.find("\"penWanted\"") == std::string::npos)
            ASSERT_FALSE((line = print.line()).empty());
        EXPECT_TRUE(holds(line, pen));
        print.signal(SIGUSR1);
    }
    EXPECT_TRUE(ended(print.wait(), 0, R"({"event":"done","state":"ended","report":{"exitCode":0)"));
    EXPECT_TRUE(hasAllOf(plot, instructionsOf(contents(captured))));
}

/// Whether it has all parts, in their order.
testing::AssertionResult holdsInOrder(const std::string &text, const std::vector<std::string> &parts) {
    size_t at = 0;
    for (const std::string &part : parts)
        if ((at = text.find(part, at)) == std::string::npos) return testing::AssertionFailure() << part << " in " << text;
    return testing::AssertionSuccess();
}

constexpr const char *kControllers = R"(
import socket, sys
def connected():
    s = socket.socket(socket.AF_UNIX)
    s.connect(sys.argv[1])
    return s.makefile("rw")
one, two = connected(), connected()
print(two.readline())
for line in sys.argv[2:]:
    print(line, file=one, flush=True)
    print(one.readline()))";

TEST_F(AttendanceTest, ObeysOneController) {
    FarEnd plotter;
    const std::string plot = file("a.plt", plotOf(9000)), control = path("control");
    const Words words = {"print", plot, "--port", plotter.port(), "--control", control, "--progress", "json:1"};
    Running print = shell("trap '' INT TERM; exec \"$0\" \"$@\"", words); // as shells start children in the background
    plotter.hasHeard();
    EXPECT_EQ(std::filesystem::status(control).permissions(), std::filesystem::perms(0600));
    EXPECT_TRUE(ended(run({"print", plot, "--capture", path("x"), "--control", control}), 2, "of that name already"));
    Running controllers({"python3", "-c", kControllers, control, "status", "bogus", "pause", "go", "stop"}, "/usr/bin/env");
    const Words answers = {R"({"error":"another)",   R"({"state":"plotting","plotFile")",
                           R"({"error":"unknown)",   R"({"state":"pausing")",
                           R"({"state":"plotting")", R"({"state":"ended")"};
    EXPECT_TRUE(holdsInOrder(controllers.wait().out, answers));
    plotter.read();
    const Result result = print.wait();
    EXPECT_EQ(result.code, 130);
    EXPECT_TRUE(holdsInOrder(result.out, {"{\"event\":\"started", "\"pausing", "\"goingOn", "\"stopped", "\"done"}));
    EXPECT_NE(access(control.c_str(), F_OK), 0);
}

} // namespace
