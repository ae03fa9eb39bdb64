// What is refused before anything is opened: the exit code, and a message that names the thing and the remedy.
#include "host/host_fixture.h"

#include "host/terminal/text.h"

#include <filesystem>
#include <sys/stat.h>

namespace {

class UsageTest : public HostTest {
protected:
    std::string plot_ = file("plot.plt", plotOf(3));
};

TEST_F(UsageTest, RefusesWhatContradictsItself) {
    const std::string picture = path("p.svg"), link = path("link");
    std::filesystem::create_symlink(plot_, link);
    expectRefusals({
        {{}, 2, "subcommand"},
        {{"prnit"}, 2, "prnit: no such command; did you mean 'print'?"},
        {{"send", "IN", "--emu=hpgl"}, 2, "--emu: no such option; did you mean '--emulation'?"},
        {{"print", plot_}, 2, "--port DEVICE, --usb, --capture FILE"},
        {{"print", plot_, "--port", "/dev/x", "--capture", "x"}, 2, "excludes"},
        {{"print", plot_, "--port", "x", "--job", "j", "--tool", "P1"}, 2, "excludes"},
        {{"print", plot_, "--port", "x", "--baud", "57600"}, 2, "19200, 38400"},
        {{"print", plot_, "--port", "x", "--tool", "P1"}, 2, "--emulation 17008"},
        {{"print", "--usb=fff0:fff0@01080000", plot_}, 3, "no USB device fff0:fff0@01080000"},
        {{"print", plot_, "--virtual", path("p")}, 2, "must end in .svg, .png or .pdf"},
        {{"send", "a\\x1", "--port", "x"}, 2, "unknown escape \"\\x1\""},
        {{"send", "gr\u00fcn", "--port", "x"}, 2, "ASCII"},
        {{"send", std::string(256, 'a'), "--port", "x"}, 2, "256 bytes, 1 more"},
        {{"limits", "--port", "x", "--plotter-id", "20596"}, 2, "--usb"},
        {{"plotters", "--vendor", "0b75"}, 2, "--product"},
        {{"preview", plot_, "-o", plot_}, 2, "is the input; name another file"},
        {{"preview", file("note", "Hello, a note;"), "-o", picture}, 7, "or draw it all the same with --language"},
        {{"simulate", "--link", plot_}, 2, "is there already, and is not a link that"},
        {{"simulate", "--link", link}, 2, "is there already"},
    });
    EXPECT_EQ(run({"print", plot_, "--capture", path("tmp/../plot.plt")}).code, 2);
    EXPECT_EQ(contents(plot_), plotOf(3)) << "a plot must survive being named as its own capture";
    EXPECT_FALSE(std::filesystem::exists(picture));
}

TEST_F(UsageTest, RefusesFilesThatCannotBePrinted) {
    const std::string out = path("o"), pipe = path("pipe"), empty = file("empty.plt", ""), closed = file("closed", "IN;");
    const FarEnd plotter;
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600) | chmod(closed.c_str(), 0) | chmod(plotter.port().c_str(), 0), 0);
    std::filesystem::create_symlink("circle", path("circle"));
    std::filesystem::create_symlink("/dev/null", path("pl\u00f6tter"));
    expectRefusals({
        {{"print", path("circle"), "--capture", out}, 3, "where its links lead"},
        {{"print", empty, "--capture", out}, 7, "the plot file is empty"},
        {{"print", closed, "--capture", out}, 4, "permission denied"},
        {{"print", file("a.pdf", "%PDF-1.7;"), "--capture", out}, 7, "a.pdf: "},
        {{"print", plot_, "--capture", out, "--emulation", "17008"}, 7, "in HP-GL, not in DM/PL"},
        {{"print", file("foreign.plt", "IN;PU;\xE9;"), "--capture", out}, 7, "0xE9 at offset 6"},
        {{"print", plot_, "--capture", out, "--job", pipe}, 7, "file; name a job file"},
        {{"print", plot_, "--capture", out, "--job", empty}, 7, "job file is empty"},
        {{"print", plot_, "--capture", folder_}, 2, "is a directory"},
        {{"print", "a\x1B[2J", "--capture", out}, 3, "a\\e[2J"},
        {{"print", plot_, "--port", "/dev/ttyNONE7"}, 3, "/dev/ttyNONE7: no such device"},
        {{"print", plot_, "--port", "null"}, 3, "/dev/null: another kind of device (mem), not a serial port"},
        {{"send", "IN;", "--port", plot_}, 3, "not a serial port"},
        {{"send", "IN;", "--port", path("pl\u00f6tter")}, 2, "ln -s"},
        {{"print", plot_, "--port", plotter.port()}, 4, "permission denied"},
    });
    EXPECT_FALSE(std::filesystem::exists(out));
    EXPECT_TRUE(holds(run({"print", path("none.plt"), "--capture", out, "--json"}).out, "\"exitCode\":3"));
}

TEST_F(UsageTest, ColoursOnlyTerminalsThatWantIt) {
    auto said = [](const std::string &script) {
        FarEnd screen;
        shell("exec 2>" + screen.port() + "; " + script).wait();
        return screen.read();
    };
    const std::string plain = "vectorix: --prot: no", coloured = "\x1B[31mvectorix:\x1B[m --prot: no";
    EXPECT_TRUE(said("\"$0\" print --prot").starts_with(coloured));
    EXPECT_TRUE(said("\"$0\" print --prot --color=never").starts_with(plain));
    EXPECT_TRUE(said("NO_COLOR=1 \"$0\" print --prot").starts_with(plain));
    EXPECT_TRUE(run({"print", "--prot"}).err.starts_with(plain));
    EXPECT_TRUE(run({"print", "--prot", "--color=always"}).err.starts_with(coloured));
}

TEST_F(UsageTest, TextsForPeople) {
    EXPECT_EQ(host::duration(59.2), "1 min 0 s");
    EXPECT_EQ(host::shown("gr\u00fcn \u009B31m \xFF \xC0\x80"), "gr\u00fcn \\xC2\\x9B31m \\xFF \\xC0\\x80");
    EXPECT_EQ(host::wrapped("one two three\nfour", 0), "one two three\nfour");
    EXPECT_EQ(host::wrapped("one two three\nfour", 9), "one two\n  three\nfour");
    EXPECT_EQ(host::wrapped("\u00e4\u00e4 \u00e4\u00e4", 5), "\u00e4\u00e4 \u00e4\u00e4");
    EXPECT_EQ(host::wrapped("a pathlongerthanall b", 8), "a\n  pathlongerthanall\n  b");
    EXPECT_EQ(host::wrapped("  --long-option  Say nothing", 14), "  --long-option\n      Say\n      nothing");
}

TEST_F(UsageTest, HelpAndVersionGoToStandardOutput) {
    EXPECT_TRUE(holds(run({"print", "--help"}).out, "130  stopped by the user"));
    EXPECT_TRUE(run({"--version"}).out.starts_with("vectorix "));
}

} // namespace
