// What is refused before anything is opened: the exit code, and a message that names the thing and the remedy.
#include "host/host_fixture.h"

#include <filesystem>
#include <nlohmann/json.hpp>
#include <sys/stat.h>

namespace {

struct Refusal {
    const char *what;
    std::vector<std::string> words;
    int code;
    const char *says; ///< part of the message
};

class UsageTest : public HostTest {
protected:
    void expectRefusals(std::initializer_list<Refusal> rows) {
        for (const Refusal &row : rows) {
            SCOPED_TRACE(row.what);
            Result result = run(row.words);
            EXPECT_EQ(result.code, row.code) << result.err;
            EXPECT_EQ(result.out, "");
            EXPECT_EQ(result.err.rfind("vectorix: ", 0), 0U) << result.err;
            EXPECT_NE(result.err.find(row.says), std::string::npos) << result.err;
        }
        EXPECT_TRUE(isTidy());
    }

    std::string plot_ = file("plot.plt", plotOf(3));
};

TEST_F(UsageTest, RefusesWhatContradictsItself) {
    std::string longText(256, 'a');
    expectRefusals({
        {"nothing typed", {}, 2, "subcommand"},
        {"an unknown command", {"prnit"}, 2, "prnit: no such command; did you mean 'print'?"},
        {"one that is like none", {"xyzzy"}, 2, "xyzzy: no such command\nTry 'vectorix --help'."},
        {"an unknown command below another", {"job", "chek"}, 2, "did you mean 'check'?\nTry 'vectorix job --help'."},
        {"an unknown option", {"print", plot_, "--prot", "x"}, 2, "--prot: no such option; did you mean '--port'?"},
        {"its beginning, with a value",
         {"send", "IN", "--emu=hpgl"},
         2,
         "--emu: no such option; did you mean '--emulation'?"},
        {"a colour", {"ports", "--color=blue"}, 2, "blue"},
        {"no plot", {"print"}, 2, "PLOT"},
        {"neither port nor capture", {"print", plot_}, 2, "--port DEVICE, --usb, --capture FILE"},
        {"port and capture", {"print", plot_, "--port", "/dev/x", "--capture", "x"}, 2, "excludes"},
        {"job file and emulation", {"print", plot_, "--port", "x", "--job", "j", "--emulation", "17002"}, 2, "excludes"},
        {"job file and tool", {"print", plot_, "--port", "x", "--job", "j", "--tool", "P1"}, 2, "excludes"},
        {"a rate that would become 9600", {"print", plot_, "--port", "x", "--baud", "57600"}, 2, "19200, 38400"},
        {"the rate that hangs up", {"print", plot_, "--port", "x", "--baud", "0"}, 2, "choose one of 50"},
        {"data bits", {"print", plot_, "--port", "x", "--bits", "9"}, 2, "5, 6, 7, 8"},
        {"parity", {"print", plot_, "--port", "x", "--parity", "mark"}, 2, "none, even, odd"},
        {"an emulation past the last", {"print", plot_, "--port", "x", "--emulation", "17038"}, 2, "17001 to 17037"},
        {"tools without their emulation", {"print", plot_, "--port", "x", "--tool", "P1"}, 2, "--emulation 17008"},
        {"no terminator", {"print", plot_, "--port", "x", "--terminator", ""}, 2, "17002 needs one"},
        {"an unknown escape", {"send", "a\\q", "--port", "x"}, 2, "\"\\q\" is no escape"},
        {"half an escape", {"send", "a\\x1", "--port", "x"}, 2, "\"\\x1\" is no escape"},
        {"a NUL", {"send", "a\\x00b", "--port", "x"}, 2, "NUL"},
        {"a letter outside ASCII", {"send", "gr\u00fcn", "--port", "x"}, 2, "ASCII"},
        {"a text too long", {"send", longText, "--port", "x"}, 2, "256 bytes, 1 more"},
        {"nothing to send", {"send", "", "--port", "x"}, 2, "empty"},
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
        {"a missing plot", {"print", path("none.plt"), "--capture", path("o")}, 3, "none.plt: no such file"},
        {"a folder", {"print", folder_, "--capture", path("o")}, 7, "is a directory"},
        {"a device", {"print", "/dev/zero", "--capture", path("o")}, 7, "no file; name a plot file"},
        {"links in a circle", {"print", path("circle"), "--capture", path("o")}, 3, "where its links lead"},
        {"an empty plot", {"print", empty, "--capture", path("o")}, 7, "empty"},
        {"a job from a pipe", {"print", plot_, "--capture", path("o"), "--job", pipe}, 7, "no file; name a job file"},
        {"a PDF", {"print", pdf, "--capture", path("o")}, 7, "a PDF document"},
        {"a plot of another language", {"print", plot_, "--capture", path("o"), "--emulation", "17008"}, 7, "no \"@\" ends"},
        {"a plot that is not ASCII", {"print", foreign, "--capture", path("o")}, 7, "0xE9 at offset 6"},
        {"a missing job file", {"print", plot_, "--capture", path("o"), "--job", path("none")}, 3, "none: no such file"},
        {"an empty job file", {"print", plot_, "--capture", path("o"), "--job", empty}, 7, "job file is empty"},
        {"a capture in no folder", {"print", plot_, "--capture", path("no/o")}, 3, "no such file"},
        {"a capture that is a folder", {"print", plot_, "--capture", folder_}, 2, "is a directory"},
        {"a path with an escape sequence", {"print", "a\x1B[2J", "--capture", path("o")}, 3, "a\\e[2J"},
    });
    EXPECT_FALSE(std::filesystem::exists(path("o")));

    Result json = run({"print", path("none.plt"), "--capture", path("o"), "--json"});
    EXPECT_EQ(nlohmann::json::parse(json.out)["exitCode"], 3);
}

TEST_F(UsageTest, RefusesWhatIsNoSerialPort) {
    std::filesystem::create_symlink("/dev/null", path("pl\u00f6tter"));
    expectRefusals({
        {"a missing port", {"print", plot_, "--port", "/dev/ttyNONE7"}, 3, "/dev/ttyNONE7: no such device"},
        {"a name without its folder", {"print", plot_, "--port", "null"}, 3, "did you mean /dev/null?"},
        {"a folder", {"print", plot_, "--port", folder_}, 3, "not a serial port"},
        {"a file", {"send", "IN;", "--port", plot_}, 3, "not a serial port"},
        {"a device of another kind", {"send", "IN;", "--port", "/dev/null"}, 3, "not a serial port"},
        {"a path that is not ASCII", {"send", "IN;", "--port", path("pl\u00f6tter")}, 2, "ln -s"},
    });
}

TEST_F(UsageTest, TellsWhoMayAndWhoMayNot) {
    chmod(plot_.c_str(), 0);
    FarEnd plotter;
    std::string other = file("other.plt", plotOf(1));
    ASSERT_EQ(chmod(plotter.port().c_str(), 0), 0);
    expectRefusals({
        {"an unreadable plot", {"print", plot_, "--capture", path("o")}, 4, "permission denied"},
        {"a forbidden port", {"print", other, "--port", plotter.port()}, 4, "permission denied"},
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

TEST_F(UsageTest, HelpAndVersionGoToStandardOutput) {
    Result help = run({"print", "--help"});
    EXPECT_EQ(help.code, 0);
    EXPECT_NE(help.out.find("130  stopped by the user"), std::string::npos) << help.out;
    EXPECT_EQ(run({"--version"}).out.rfind("vectorix ", 0), 0U);
}

} // namespace
