// Prints through the plug-in. Each takes the two seconds that a port is given at its close.
#include "host/host_fixture.h"

#include "host/print/capture.h"
#include "host/terminal/failure.h"

#include <algorithm>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <unistd.h>

namespace {

class PrintCommandTest : public HostTest {};

TEST_F(PrintCommandTest, CapturesThePlotUpToItsLastMark) {
    std::string plot = plotOf(400);
    Result result = run({"print", file("plot.plt", plot + "\x1B.Z\r\n"), "--capture", path("out")});
    EXPECT_EQ(result.code, 0) << result.err;
    EXPECT_EQ(contents(path("out")), plot);
    std::string bytes = std::to_string(plot.size()).insert(1, " ");
    EXPECT_EQ(result.out.rfind("sent " + bytes + " bytes in ", 0), 0U) << result.out;
    EXPECT_NE(result.out.find("; 5 bytes not sent"), std::string::npos) << result.out;
    EXPECT_NE(result.err.find("note: 5 bytes at the end not sent"), std::string::npos) << result.err;
    EXPECT_TRUE(isTidy());
}

TEST_F(PrintCommandTest, ReportsWithheldCommandsAsJSON) {
    Result result = run({"print", file("plot.plt", "IN;PD1,1;PU2,2"), "--capture", path("out"), "--json", "--force"});
    EXPECT_EQ(result.code, 1);
    EXPECT_NE(result.err.find("5 bytes at the end not sent, from offset 9 on, for no \";\" ends them: \"PU2,2\""),
              std::string::npos)
        << result.err;
    auto report = nlohmann::json::parse(result.out);
    EXPECT_EQ(report["exitCode"], 1);
    EXPECT_EQ(report["fileBytes"], 14);
    EXPECT_EQ(report["sentBytes"], 9);
    EXPECT_EQ(report["withheldBytes"], 5);
    EXPECT_EQ(report["stopReason"], "finished");
    EXPECT_EQ(report["errorID"], 22007);
}

TEST_F(PrintCommandTest, SendsToolStringsAndHonoursTheLineSettingsTypedOrOfAProfile) {
    for (bool byProfile : {false, true}) {
        SCOPED_TRACE(byProfile);
        FarEnd plotter;
        std::vector<std::string> words = {"print", file("plot", ";:H A L0,D,1,2,@"), "-q"};
        std::vector<std::string> keep = {"profile", "add", "dmp"};
        std::vector<std::string> &options = byProfile ? keep : words;
        for (const char *word :
             {"--port", plotter.port().c_str(), "--emulation", "17008", "--terminator", ",", "--tool", "P1,", "--tool",
              "V\\x32,", "--baud", "2400", "--stop-bits", "2", "--handshake", "hardware"})
            options.emplace_back(word);
        if (byProfile) {
            EXPECT_EQ(run(keep).code, 0);
            words.insert(words.end(), {"-p", "dmp"});
        }
        Running printing(words, false);
        ASSERT_TRUE(plotter.hasHeard());
        termios line = plotter.attributes();
        EXPECT_EQ(cfgetospeed(&line), speed_t{B2400});
        EXPECT_TRUE(line.c_cflag & CSTOPB);
        EXPECT_TRUE(line.c_cflag & CRTSCTS);
        EXPECT_FALSE(line.c_iflag & IXON);
        EXPECT_EQ(plotter.read(), ";:P1,V2,;:H A L0,D,1,2,@");
        Result result = printing.wait();
        EXPECT_EQ(result.code, 0);
        EXPECT_EQ(result.out + result.err, "") << "-q says nothing";
    }
}

TEST_F(PrintCommandTest, PrintsTheJobFileThatItWrote) {
    std::string job = path("job.plist");
    ASSERT_EQ(run({"job", "write", job, "--emulation", "17008", "--terminator", "\\x03"}).code, 0);
    Result result = run({"print", file("plot", "H,LBtext\x03@\n"), "--capture", path("out"), "--job", job});
    EXPECT_EQ(result.code, 0) << result.err;
    EXPECT_EQ(contents(path("out")), ";:H,LBtext\x03@") << "the port opens with the job's own start-up bytes";
}

TEST_F(PrintCommandTest, SaysWhenTheCaptureCannotBeWritten) {
    // One report, which knows of it.
    Result result = run({"print", file("plot", plotOf(1)), "--capture", "/dev/full", "--json"});
    EXPECT_EQ(result.code, 1);
    EXPECT_EQ(std::count(result.out.begin(), result.out.end(), '\n'), 1) << result.out;
    EXPECT_EQ(result.out.find("{\"exitCode\":1,\"message\":\"/dev/full: no space left"), 0U) << result.out;
    EXPECT_NE(result.out.find("\"stopReason\":\"finished\""), std::string::npos) << result.out;
    EXPECT_NE(result.out.find("\"arrivedBytes\":0,"), std::string::npos) << result.out;
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

} // namespace
