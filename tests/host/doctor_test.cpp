// vectorix doctor on ports that a test can have: pseudo-terminals, and paths that are none.
#include "host/host_fixture.h"

#include <filesystem>
#include <nlohmann/json.hpp>
#include <unistd.h>

namespace {

class DoctorTest : public HostTest {
protected:
    Result examine(const std::string &port) { return run({"doctor", "--port", port}); }

    FarEnd plotter_;
};

TEST_F(DoctorTest, SaysWhatAPortIs) {
    std::filesystem::create_symlink(plotter_.port(), path("plotter"));
    std::filesystem::create_symlink("nowhere", path("dangling"));
    const struct {
        std::string port;
        int code;
        const char *state, *says;
    } kRows[] = {
        {plotter_.port(), 0, "free ", "a pseudo-terminal has no modem lines"},
        {path("plotter"), 0, "free ", ""},
        {"/dev/no-such-port", 3, "in the way ", "there is no /dev/no-such-port\n"},
        {path("dangling"), 3, "in the way ", "there is no "},
        {"null", 3, "in the way ", "/dev/null is another kind of device (mem)"},
        {file("plot.plt", "IN;"), 3, "in the way ", "is a file, not a serial port"},
        {folder_, 3, "in the way ", "is a directory, not a serial port"},
        {"/dev/\xC3\xA4", 2, "", "not ASCII"},
    };
    for (const auto &row : kRows) {
        SCOPED_TRACE(row.port);
        Result result = examine(row.port);
        EXPECT_EQ(result.code, row.code) << result.err;
        EXPECT_EQ(result.out.rfind(row.state, 0), 0U) << result.out;
        EXPECT_NE((result.out + result.err).find(row.says), std::string::npos) << result.out << result.err;
    }
    EXPECT_EQ(run({"doctor", "--usb", "--port", "/dev/x"}).code, 2);
    EXPECT_EQ(run({"doctor", "--usb", "fff0:fff0"}).code, 3);
    EXPECT_EQ(run({"doctor", "--usb", "fff0"}).code, 2);
}

TEST_F(DoctorTest, NamesTheHolderOnce) {
    for (bool locks : {false, true}) {
        Bystander holder(plotter_.port(), locks);
        const std::string who = "host_test (process " + std::to_string(holder.pid()) + ")";
        Result result = examine(plotter_.port());
        EXPECT_EQ(result.code, 5) << result.err;
        size_t at = result.out.find((locks ? "locked by " : "held by ") + who);
        ASSERT_NE(at, std::string::npos) << result.out;
        EXPECT_EQ(result.out.find(who, at + who.size() + 10), std::string::npos) << result.out;
        EXPECT_NE(result.out.find("$ kill " + std::to_string(holder.pid()) + "\n"), std::string::npos) << result.out;
    }
    EXPECT_EQ(examine(plotter_.port()).code, 0);
}

TEST_F(DoctorTest, TellsProgramsAndLeavesThePortAsItIs) {
    const termios before = plotter_.attributes();
    Bystander holder(plotter_.port(), false); // keeps what is set
    Result result = run({"doctor", "--port", plotter_.port(), "--json"});
    auto report = nlohmann::json::parse(result.out);
    EXPECT_EQ(report["exitCode"], 5);
    auto link = report["links"][0];
    EXPECT_EQ(link["kind"], "serial");
    EXPECT_EQ(link["link"], plotter_.port());
    EXPECT_EQ(link["state"], "in the way");
    EXPECT_EQ(link["findings"][0]["name"], "held");
    EXPECT_FALSE(link["lookedAt"].empty());
    EXPECT_NE(run({"doctor", "--port", plotter_.port(), "-v"}).out.find("  looked at          " + plotter_.port() + ": crw"),
              std::string::npos);
    const termios after = plotter_.attributes();
    EXPECT_EQ(before.c_cflag, after.c_cflag);
    EXPECT_EQ(before.c_lflag, after.c_lflag);
}

} // namespace
