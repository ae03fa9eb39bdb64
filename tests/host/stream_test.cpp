// Plots that come through a pipe.
#include "host/host_fixture.h"

#include <csignal>
#include <nlohmann/json.hpp>
#include <sys/stat.h>

namespace {

class StreamTest : public HostTest {
protected:
    /// In a shell, with the command behind the script's "$0".
    Running shell(const std::string &script) { return Running({"-c", script, VECTORIX}, false, "", "/bin/sh"); }
};

TEST_F(StreamTest, ArePrintedAndDrawnAsFilesAre) {
    std::string plot = file("plot", plotOf(4000));
    Result printed = shell("cat " + plot + " | \"$0\" print - --capture " + path("out") + " --json").wait();
    EXPECT_EQ(printed.code, 0) << printed.err;
    EXPECT_EQ(contents(path("out")), contents(plot));
    EXPECT_EQ(nlohmann::json::parse(printed.out)["plotFile"], "standard input");

    ASSERT_EQ(mkfifo(path("pipe").c_str(), 0600), 0);
    std::string pipe = path("pipe"), fromPipe = path("pipe.svg"), fromFile = path("file.svg");
    Result drawn = shell("cat " + plot + " > " + pipe + " & \"$0\" preview " + pipe + " -o " + fromPipe).wait();
    EXPECT_EQ(drawn.code, 0) << drawn.err;
    EXPECT_EQ(run({"preview", plot, "-o", fromFile}).code, 0);
    EXPECT_EQ(contents(fromPipe), contents(fromFile));
    EXPECT_TRUE(isTidy());
}

TEST_F(StreamTest, SayWhatIsWrongWithThem) {
    const struct {
        const char *what;
        std::string script;
        int code;
        const char *says;
    } kRows[] = {
        {"nothing came", ": | \"$0\" print - --capture x", 7, "standard input: the plot file is empty"},
        {"unfit", "printf 'IN;PU' | \"$0\" print - --capture x", 7, "standard input: "},
        {"nowhere to keep it", "printf 'IN;' | TMPDIR=/none \"$0\" print - --capture x", 1, "set TMPDIR"},
        {"no room", "ulimit -f 1; trap '' XFSZ; head -c 9999999 /dev/zero | \"$0\" print - --capture x", 1, "set TMPDIR"},
    };
    for (const auto &row : kRows) {
        SCOPED_TRACE(row.what);
        Result result = shell("cd '" + folder_ + "'; " + row.script).wait();
        EXPECT_EQ(result.code, row.code) << result.err;
        EXPECT_NE(result.err.find(row.says), std::string::npos) << result.err;
    }
    EXPECT_TRUE(isTidy());
}

TEST_F(StreamTest, EndWithASignalWhileTheyAreWaitedFor) {
    ASSERT_EQ(mkfifo(path("pipe").c_str(), 0600), 0);
    Running printing({"print", path("pipe"), "--capture", path("out")}, false);
    printing.signal(SIGINT);
    EXPECT_EQ(printing.wait().code, -SIGINT) << "it waits in the open, or for the first byte, and holds nothing yet";
    EXPECT_TRUE(isTidy());
}

} // namespace
