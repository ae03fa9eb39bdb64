// Prints through the plug-in, most of them side by side: each takes the two seconds that a port is given at its close.
#include "host/host_fixture.h"

#include "host/print/capture.h"

#include <algorithm>
#include <csignal>
#include <filesystem>
#include <fmt/format.h>
#include <nlohmann/json.hpp>
#include <sys/stat.h>
#include <unistd.h>

namespace {

class PrintCommandTest : public HostTest {};

TEST_F(PrintCommandTest, ReportsWhatArrivedAndWhatWasNotSent) {
    const std::string plot = plotOf(400), job = path("job.plist"), whole = file("whole", plot);
    ASSERT_EQ(run({"job", "write", job, "--emulation", "17008", "--terminator", "\\x03"}).code, 0);
    const std::tuple<std::string, Words, int, const char *, std::string> kRows[] = {
        // script, words behind the capture, ...
        {"", {file("padded", plot + "\x1B.Z\r\n")}, 0, "note: 5 bytes at the end not sent", plot},
        {"", {file("part", "IN;PD1,1;PU2,"), "--force"}, 1, "4 bytes at the end not sent", "IN;PD1,1;;PU;SP0;"},
        {"", {file("dmpl", "H,LBtext\x03@\n"), "--job", job}, 0, "", ";:H,LBtext\x03@"},
        {"cat " + whole + " | ", {"-"}, 0, "\"plotFile\":\"standard input\"", plot},
        {"trap '' XFSZ; ulimit -f 4; ", {whole}, 1, "file too large", plot.substr(0, 2048)},
        {"ln -s /dev/full 5; ", {whole}, 1, "{\"exitCode\":1,\"message\":\"5: no space left", ""},
    };
    std::vector<Running> printing;
    for (const auto &[script, words, code, says, arrives] : kRows) {
        const std::string out = std::to_string(printing.size());
        printing.push_back(
            shell(fmt::format("cd {}; {}\"$0\" print --json --capture {} \"$@\"", folder_, script, out), words));
    }
    for (size_t i = 0; i < printing.size(); ++i) {
        const auto &[script, words, code, says, arrives] = kRows[i];
        const Result result = printing[i].wait();
        ASSERT_TRUE(ended(result, code, says));
        const auto report = nlohmann::json::parse(result.out); // of one line
        EXPECT_EQ(report["exitCode"], code);
        EXPECT_EQ(report["errorID"], 22007);
        EXPECT_EQ(report["arrivedBytes"], arrives.size());
        EXPECT_EQ(report["fileBytes"], report["sentBytes"].get<size_t>() + report["withheldBytes"].get<size_t>());
        EXPECT_TRUE(arrives.empty() || contents(path(std::to_string(i))) == arrives);
    }
    EXPECT_TRUE(isTidy());
}

TEST_F(PrintCommandTest, SendsToolStringsAndHonoursTheLineSettingsTypedOrOfAProfile) {
    FarEnd plotters[2];
    const std::string print = "exec \"$0\" print -q " + file("plot", ";:H A L0,D,1,2,@");
    const std::string options = " --emulation 17008 --terminator , --tool P1, --tool 'V\\x32,' --baud 2400 --stop-bits 2"
                                " --handshake hardware --port ";
    Running printing[] = {
        shell(print + options + plotters[0].port()),
        shell("\"$0\" profile add dmp" + options + plotters[1].port() + " >/dev/null && " + print + " -p dmp")};
    for (const size_t i : {size_t{0}, size_t{1}}) {
        SCOPED_TRACE(i);
        ASSERT_TRUE(plotters[i].hasHeard());
        const termios line = plotters[i].attributes();
        EXPECT_EQ(cfgetospeed(&line), speed_t{B2400});
        EXPECT_EQ(line.c_cflag & (CSTOPB | CRTSCTS), tcflag_t{CSTOPB | CRTSCTS});
        EXPECT_FALSE(line.c_iflag & IXON);
        EXPECT_EQ(plotters[i].read(), ";:P1,V2,;:H A L0,D,1,2,@");
        const Result result = printing[i].wait();
        EXPECT_TRUE(ended(result, 0));
        EXPECT_EQ(result.out + result.err, "") << "-q says nothing";
    }
}

TEST_F(PrintCommandTest, PrintsEachSheetWithTheTextsOfThePlotter) {
    file("config/vectorix/profiles/roll.toml", "before = 'VS\\x31'\nafter = 'PG;'\n");
    const std::string plot = file("plot", "IN;\x1B.@;0:SP1;PD8,8;"), out = path("out");
    const std::string line = "\"$0\" print - \"$@\" -p roll --json --no-prompt <" + file("piped", "PU1,1;PD2,2;SP0");
    const Result result = shell(line, {plot, "--capture", out}).wait();
    EXPECT_EQ(contents(out), "VS1;PU1,1;PD2,2;SP0;PG;IN;\x1B.@;0:VS1;SP1;PD8,8;PG;");
    EXPECT_EQ(nlohmann::json::parse(result.out)["sheets"][1]["before"], "VS1;") << result.err;
    const Result foretold = run({"print", plot, plot, "--copies", "3", "--capture", out, "--after", "PG;", "--dry-run"});
    EXPECT_TRUE(ended(foretold, 0, "in all      6 sheets, 132 bytes\n"));
    const std::string dmpl = file("dmpl", ";:ECN,A,P2,U0,0,D4,4,U0,0@\n");
    EXPECT_EQ(run({"print", dmpl, "--capture", out, "--before", "V2", "--after", "F"}).code, 0);
    EXPECT_EQ(contents(out), ";:;:ECN,A,V2,P2,U0,0,D4,4,U0,0,F,@");
    EXPECT_TRUE(ended(run({"print", plot, plot, "--capture", out}), 2, "2 sheets, and no terminal to ask for paper"));
    expectRefusals({{{"print", plot, path("none"), "--capture", out, "--no-prompt"}, 3, "none"},
                    {{"print", plot, "--copies", "2", "--virtual", path("o.svg")}, 2, "a picture shows one sheet"},
                    {{"print", plot, plot, "--from", "9", "--capture", out}, 2, "--from: one sheet"},
                    {{"print", plot, "--before", "PA9,9;SP3;", "--capture", out}, 2, "something else would be drawn"}});
}

TEST_F(PrintCommandTest, SaysWhenTheCaptureCannotBeClosed) {
    host::Capture capture(path("out"));
    for (const auto &entry : std::filesystem::directory_iterator("/proc/self/fd")) {
        std::error_code gone;
        if (read_symlink(entry, gone) == path("out")) close(std::stoi(entry.path().filename()));
    }
    capture.end();
    EXPECT_THROW(capture.finish(), host::Failure);
}

TEST_F(PrintCommandTest, SaysWhatIsWrongWithAPipe) {
    auto piped = [&](const char *from) { return shell(from + (" | \"$0\" print - --capture " + path("x"))).wait(); };
    EXPECT_TRUE(ended(piped(":"), 7, "standard input: the plot file is empty"));
    setenv("TMPDIR", "/none", 1);
    EXPECT_TRUE(ended(piped("printf 'IN;'"), 1, "set TMPDIR"));
    setenv("TMPDIR", path("tmp").c_str(), 1);
    EXPECT_TRUE(ended(piped("ulimit -f 1; trap '' XFSZ; head -c 9999999 /dev/zero"), 1, "set TMPDIR"));
    EXPECT_TRUE(isTidy());
}

TEST_F(PrintCommandTest, ASignalEndsTheWaitForAPipe) {
    ASSERT_EQ(mkfifo(path("pipe").c_str(), 0600), 0);
    Running printing({"print", path("pipe"), "--capture", path("out")});
    printing.signal(SIGINT);
    EXPECT_TRUE(ended(printing.wait(), -SIGINT)) << "it waits in the open, or for the first byte, and holds nothing yet";
    EXPECT_TRUE(isTidy());
}

/// Prints that are only looked at: what they say, that they end as the print would, and that nothing is sent or made.
class DryRunTest : public HostTest {
protected:
    Result dryRun(Words words, const Words &more = {}) {
        words.insert(words.begin(), {"print", "--dry-run"});
        words.insert(words.end(), more.begin(), more.end());
        return run(words);
    }
    FarEnd plotter_;
};

TEST_F(DryRunTest, SaysWhatWouldBeSentAndForHowLong) {
    const Words print = {file("plot", plotOf(400)), "--port", plotter_.port()};
    auto bytes = static_cast<double>(plotOf(400).size());
    const std::tuple<Words, double, double> kRows[] = {
        {{"--json"}, 10, 9600},
        {{"--json", "--baud", "300", "--bits", "7", "--parity", "even", "--stop-bits", "2"}, 11, 300}};
    for (const auto &[settings, bitsPerByte, rate] : kRows) {
        auto report = nlohmann::json::parse(dryRun(print, settings).out);
        EXPECT_EQ(report["dryRun"], true);
        EXPECT_EQ(report["bytesToSend"], bytes);
        EXPECT_EQ(report["withheldBytes"], 0);
        EXPECT_EQ(report["line"]["baud"], rate);
        constexpr double kPen = 86.28; // 400 strokes of 25 mm, each with its lifting and the way back
        EXPECT_NEAR(report["estimatedSeconds"].get<double>(), std::max(kPen, bytes * bitsPerByte / rate), 0.01);
    }
    EXPECT_TRUE(ended(dryRun(print), 0, "9600 bit/s, 8 data bits, parity none, 1 stop bit, handshake xonxoff"));
    plotter_.openPort(); // what was sent before would be read before the line's end
    EXPECT_EQ(plotter_.read(), "");
}

/// What is refused before anything is opened is refused here as well: the tests of those refusals try both.
TEST_F(DryRunTest, EndsAsThePrintWould) {
    const std::string plot = file("plot", plotOf(3)), part = file("part", "IN;PD1,1;PU2,"), port = plotter_.port();
    const std::string start = "<plist><dict><key>Plotter emulation ID :</key><integer>17002</integer>",
                      end = "</dict></plist>",
                      odd = "<key>Plotfile terminator :</key><string>;</string><key>X Tile :</key><string>a</string>";
    EXPECT_TRUE(ended(dryRun({part, "--port", port, "--force"}), 1, "4 bytes at the end not sent"));
    EXPECT_TRUE(ended(dryRun({plot, "--port", port, "--job", file("bare", start + end)}), 7, "names no terminator"));
    EXPECT_TRUE(ended(dryRun({plot, "--port", port, "--job", file("odd", start + odd + end)}), 0, "must be a number"));
    EXPECT_TRUE(ended(dryRun({plot, "--capture", path("o")}), 0));
    EXPECT_TRUE(ended(dryRun({plot, "--virtual", path("o.svg")}), 0));
    EXPECT_FALSE(std::filesystem::exists(path("o")) || std::filesystem::exists(path("o.svg")));
    EXPECT_TRUE(isTidy());
}

} // namespace
