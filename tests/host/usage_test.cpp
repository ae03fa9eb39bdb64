// What is refused before anything is opened: the exit code, and a message that names the thing and the remedy.
#include "host/host_fixture.h"

#include "host/terminal/text.h"

#include <filesystem>
#include <nlohmann/json.hpp>
#include <sys/stat.h>

namespace {

class UsageTest : public HostTest {
protected:
    std::string plot_ = file("plot.plt", plotOf(3));
};

TEST_F(UsageTest, RefusesWhatContradictsItself) {
    std::string longText(256, 'a');
    expectRefusals({
        {{}, 2, "subcommand"},
        {{"prnit"}, 2, "prnit: no such command; did you mean 'print'?"},
        {{"xyzzy"}, 2, "xyzzy: no such command\nTry 'vectorix --help'."},
        {{"job", "chek"}, 2, "did you mean 'check'?\nTry 'vectorix job --help'."},
        {{"print", plot_, "--prot", "x"}, 2, "--prot: no such option; did you mean '--port'?"},
        {{"send", "IN", "--emu=hpgl"}, 2, "--emu: no such option; did you mean '--emulation'?"},
        {{"ports", "--color=blue"}, 2, "blue"},
        {{"print"}, 2, "PLOT"},
        {{"print", plot_}, 2, "--port DEVICE, --usb, --capture FILE"},
        {{"print", plot_, "--port", "/dev/x", "--capture", "x"}, 2, "excludes"},
        {{"print", plot_, "--port", "x", "--job", "j", "--emulation", "17002"}, 2, "excludes"},
        {{"print", plot_, "--port", "x", "--job", "j", "--tool", "P1"}, 2, "excludes"},
        {{"print", plot_, "--port", "x", "--baud", "57600"}, 2, "19200, 38400"},
        {{"print", plot_, "--port", "x", "--baud", "0"}, 2, "choose one of 50"},
        {{"print", plot_, "--port", "x", "--bits", "9"}, 2, "5, 6, 7, 8"},
        {{"print", plot_, "--port", "x", "--parity", "mark"}, 2, "none, even, odd"},
        {{"print", plot_, "--port", "x", "--emulation", "17038"}, 2, "17001 to 17037"},
        {{"print", plot_, "--port", "x", "--tool", "P1"}, 2, "--emulation 17008"},
        {{"print", plot_, "--port", "x", "--terminator", ""}, 2, "17002 needs one"},
        {{"send", "a\\q", "--port", "x"}, 2, "unknown escape \"\\q\""},
        {{"send", "a\\x1", "--port", "x"}, 2, "unknown escape \"\\x1\""},
        {{"send", "a\\x00b", "--port", "x"}, 2, "NUL"},
        {{"send", "gr\u00fcn", "--port", "x"}, 2, "ASCII"},
        {{"send", longText, "--port", "x"}, 2, "256 bytes, 1 more"},
        {{"send", "", "--port", "x"}, 2, "empty"},
    });
    EXPECT_EQ(run({"print", plot_, "--capture", path("tmp/../plot.plt")}).code, 2);
    EXPECT_EQ(contents(plot_), plotOf(3)) << "a plot must survive being named as its own capture";
}

TEST_F(UsageTest, RefusesFilesThatCannotBePrinted) {
    std::string empty = file("empty.plt", "");
    std::string pdf = file("a.pdf", "%PDF-1.7;");
    std::string pipe = path("pipe");
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    std::string foreign = file("foreign.plt", "IN;PU;\xE9;");
    std::filesystem::create_symlink("circle", path("circle"));
    expectRefusals({
        {{"print", path("none.plt"), "--capture", path("o")}, 3, "none.plt: no such file"},
        {{"print", folder_, "--capture", path("o")}, 7, "is a directory"},
        {{"print", "/dev/zero", "--capture", path("o")}, 7, "not a file; name a plot file"},
        {{"print", path("circle"), "--capture", path("o")}, 3, "where its links lead"},
        {{"print", empty, "--capture", path("o")}, 7, "the plot file is empty"},
        {{"print", plot_, "--capture", path("o"), "--job", pipe}, 7, "file; name a job file"},
        {{"print", pdf, "--capture", path("o")}, 7, "a PDF document"},
        {{"print", plot_, "--capture", path("o"), "--emulation", "17008"}, 7, "in HP-GL, not in DM/PL"},
        {{"print", foreign, "--capture", path("o")}, 7, "0xE9 at offset 6"},
        {{"print", plot_, "--capture", path("o"), "--job", path("none")}, 3, "none: no such file"},
        {{"print", plot_, "--capture", path("no/o")}, 3, "no such file"},
        {{"print", plot_, "--capture", folder_}, 2, "is a directory"},
        {{"print", "a\x1B[2J", "--capture", path("o")}, 3, "a\\e[2J"},
    });
    EXPECT_FALSE(std::filesystem::exists(path("o")));

    Result noJob = run({"print", plot_, "--capture", path("o"), "--job", empty});
    EXPECT_EQ(noJob.code, 7);
    EXPECT_NE(noJob.err.find("job file is empty"), std::string::npos) << noJob.err;
    Result json = run({"print", path("none.plt"), "--capture", path("o"), "--json"});
    EXPECT_EQ(nlohmann::json::parse(json.out)["exitCode"], 3);
}

TEST_F(UsageTest, RefusesWhatIsNoSerialPort) {
    std::filesystem::create_symlink("/dev/null", path("pl\u00f6tter"));
    expectRefusals({
        {{"print", plot_, "--port", "/dev/ttyNONE7"}, 3, "/dev/ttyNONE7: no such device"},
        {{"print", plot_, "--port", "null"}, 3, "/dev/null: another kind of device (mem), not a serial port"},
        {{"print", plot_, "--port", folder_}, 3, "not a serial port"},
        {{"send", "IN;", "--port", plot_}, 3, "not a serial port"},
        {{"send", "IN;", "--port", path("pl\u00f6tter")}, 2, "ln -s"},
    });
}

TEST_F(UsageTest, TellsWhoMayAndWhoMayNot) {
    chmod(plot_.c_str(), 0);
    FarEnd plotter;
    std::string other = file("other.plt", plotOf(1));
    ASSERT_EQ(chmod(plotter.port().c_str(), 0), 0);
    expectRefusals({
        {{"print", plot_, "--capture", path("o")}, 4, "permission denied"},
        {{"print", other, "--port", plotter.port()}, 4, "permission denied"},
    });
}

TEST_F(UsageTest, ColoursOnlyTerminalsThatWantIt) {
    std::string plain = "vectorix: --prot: no such option", coloured = "\x1B[31mvectorix:\x1B[m --prot: no such option";
    auto begins = [](const std::string &text, const std::string &start) { return text.rfind(start, 0) == 0; };
    EXPECT_TRUE(begins(Running({"print", "--prot"}, true).wait().err, coloured));
    EXPECT_TRUE(begins(Running({"print", "--prot", "--color=never"}, true).wait().err, plain));
    EXPECT_TRUE(begins(run({"print", "--prot"}).err, plain));
    EXPECT_TRUE(begins(run({"print", "--prot", "--color=always"}).err, coloured));
    setenv("NO_COLOR", "1", 1);
    EXPECT_TRUE(begins(Running({"print", "--prot"}, true).wait().err, plain));
    unsetenv("NO_COLOR");
}

TEST_F(UsageTest, BreaksLinesAtBlanks) {
    const struct {
        const char *text;
        size_t width;
        const char *lines;
    } kRows[] = {
        {"one two three\nfour", 0, "one two three\nfour"},
        {"one two three\nfour", 9, "one two\n  three\nfour"},
        {"\u00e4\u00e4\u00e4\u00e4 \u00e4\u00e4\u00e4\u00e4", 9, "\u00e4\u00e4\u00e4\u00e4 \u00e4\u00e4\u00e4\u00e4"},
        {"a pathlongerthanall b", 8, "a\n  pathlongerthanall\n  b"},
        {"  -q  Say nothing but errors", 18, "  -q  Say nothing\n      but errors"},
        {"  --long-option  Say nothing", 14, "  --long-option\n      Say\n      nothing"},
    };
    for (const auto &row : kRows)
        EXPECT_EQ(host::wrapped(row.text, row.width), row.lines);
}

TEST_F(UsageTest, HelpAndVersionGoToStandardOutput) {
    Result help = run({"print", "--help"});
    EXPECT_EQ(help.code, 0);
    EXPECT_NE(help.out.find("130  stopped by the user"), std::string::npos) << help.out;
    EXPECT_EQ(run({"--version"}).out.rfind("vectorix ", 0), 0U);
}

} // namespace
