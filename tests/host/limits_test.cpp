// Queries for the limits: what a report comes to, and two plotters at the far end of a line.
#include "host/host_fixture.h"

#include "host/query_verdict.h"

#include <csignal>
#include <cstring>
#include <nlohmann/json.hpp>

namespace {

using host::ExitCode;
using host::QueryOutcome;

QueryOutcome outcomeOf(int32_t errorID, const std::string &request, const std::string &reply, uint32_t reads) {
    QueryOutcome outcome{};
    outcome.source = "/dev/ttyUSB0";
    outcome.emulation = 17002;
    outcome.report.errorID = errorID;
    outcome.report.reads = reads;
    outcome.report.requestBytes = static_cast<uint32_t>(request.size());
    memcpy(outcome.report.request, request.data(), request.size());
    outcome.report.replyBytes = static_cast<uint32_t>(reply.size());
    memcpy(outcome.report.reply, reply.data(), reply.size());
    return outcome;
}

TEST(LimitsVerdict, ReportsBecomeExitCodes) {
    constexpr auto kNotResponding = static_cast<int32_t>(0xE00002ED);
    const struct {
        const char *what;
        bool isUsb;
        int32_t errorID, status;
        const char *reply;
        uint32_t reads;
        ExitCode code;
        const char *says;
        const char *request = "IN;OH;";
        double upper = 0; ///< both coordinates of the upper right corner
    } kRows[] = {
        {"an answer", false, kORB_NoError, 0, "0,0,1,1\r", 1, ExitCode::Done, "", "IN;OH;", 1},
        {"silence", false, kORB_ErrorNoReply, 0, "", 11, ExitCode::Lost,
         "/dev/ttyUSB0: no reply to IN;OH; within about 11 seconds; is the plotter on-line"},
        {"a request with control characters", false, kORB_ErrorNoReply, 0, "", 11, ExitCode::Lost,
         "no reply to \\e%0B\\x03NP4, within", "\x1B%0B\x03NP4,"},
        {"half a reply", false, kORB_ErrorNoReply, 0, "0,0,\x1B\xFF", 1, ExitCode::Failed, "incomplete: \"0,0,\\e\\xFF\""},
        {"a second reply that stays away", false, kORB_ErrorNoReply, 0, "7,8\r", 11, ExitCode::Failed,
         "the reply to U is incomplete", "U", 8},
        {"a line that hung up", false, kORB_NoError, 0, "", 1, ExitCode::Lost, "hung up"},
        {"a write that failed", false, kORB_ErrorUnvalidPort, 0, "", 0, ExitCode::Lost, "IN;OH; could not be sent"},
        {"a port that would not open", false, kORB_ErrorOpeningPort, 5, "", 0, ExitCode::Lost, "could not be opened", ""},
        {"refused settings", false, kORB_ErrorSetAttributes, 22, "", 0, ExitCode::Failed, "--bits 8", ""},
        {"zeros alone", false, kORB_NoError, 0, "0,0,0,0,\r", 1, ExitCode::Failed, "\"0,0,0,0,\\r\" gives no area"},
        {"an answer over USB", true, kORB_NoError, 0, "0,0,1,1\r", 1, ExitCode::Done, "", "IN;OH;", 1},
        {"silence over USB", true, kORB_NoError, 0, "", 99, ExitCode::Lost, "no reply to IN;OH;; is"},
        {"half a reply over USB", true, kORB_NoError, 0, "0,0,9", 99, ExitCode::Failed, "incomplete"},
        {"a plotter hung", true, kORB_ErrorPipe, kNotResponding, "", 9, ExitCode::Lost, "does not answer"},
        {"a plotter that cannot reply", true, kORB_ErrorUSBNotOpen, kNotResponding, "", 9, ExitCode::Lost,
         "perhaps it gives none over USB"},
        {"a plotter not made ready", true, kORB_ErrorDeviceNotOpened, 0, "", 0, ExitCode::Failed, "cannot be opened", ""},
    };
    for (const auto &row : kRows) {
        SCOPED_TRACE(row.what);
        QueryOutcome outcome = outcomeOf(row.errorID, row.request, row.reply, row.reads);
        outcome.values = {0, 0, row.upper, row.upper};
        outcome.report.status = row.status;
        if (row.isUsb) outcome.usb.emplace();
        host::Verdict verdict = host::judge(outcome);
        EXPECT_EQ(verdict.code, row.code);
        EXPECT_EQ(verdict.message.empty(), row.code == ExitCode::Done);
        EXPECT_NE(verdict.message.find(row.says), std::string::npos) << verdict.message;
        EXPECT_EQ(nlohmann::json::parse(host::json(outcome, verdict)).contains("values"), row.code == ExitCode::Done);
        outcome.stopped = true;
        EXPECT_EQ(host::judge(outcome).code, ExitCode::Stopped) << "the user's stop explains everything";
    }
}

TEST(LimitsVerdict, SilenceOnAPipeThatAnIdentifierChooses) {
    QueryOutcome outcome = outcomeOf(kORB_ErrorPipe, "IN;OH;", "", 9);
    outcome.report.status = static_cast<int32_t>(0xE00002ED);
    for (uint16_t vendor : {uint16_t{0x0B75}, uint16_t{0x1234}}) {
        for (uint8_t pipe : {uint8_t{1}, uint8_t{2}}) {
            outcome.usb.emplace().vendor = vendor;
            outcome.usbOutPipe = pipe;
            const bool isNamed = host::judge(outcome).message.find("--plotter-id") != std::string::npos;
            EXPECT_EQ(isNamed, vendor == 0x0B75 && pipe == 2);
        }
    }
}

TEST(LimitsVerdict, CornersAreHpglsAlone) {
    QueryOutcome outcome = outcomeOf(kORB_NoError, "IN;OH;", "0,0,15200,10800\r", 1);
    outcome.values = {0, 0, 15200, 10800};
    EXPECT_EQ(host::limitLines(outcome), "lower left   0, 0\nupper right  15200, 10800\nsize         380.0 x 270.0 mm\n");
    for (int32_t emulation : {17008, 17009, 17010, 17030}) {
        outcome.emulation = emulation;
        EXPECT_EQ(host::limitLines(outcome), "value 1      0\nvalue 2      0\nvalue 3      15200\nvalue 4      10800\n");
    }
}

TEST(LimitsVerdict, ValuesThatLostTheirSignsGiveNoSize) {
    QueryOutcome outcome = outcomeOf(kORB_NoError, "IN;OH;", "-100,-50,16000,10000\r", 1);
    outcome.values = {100, 50, 16000, 10000};
    host::Verdict verdict = host::judge(outcome);
    EXPECT_EQ(verdict.code, ExitCode::Done);
    ASSERT_EQ(verdict.notes.size(), 1U);
    EXPECT_NE(verdict.notes[0].find("\"-100,-50,16000,10000\\r\""), std::string::npos) << verdict.notes[0];
    EXPECT_EQ(host::limitLines(outcome).find("size"), std::string::npos);
}

class LimitsTest : public HostTest {};

TEST_F(LimitsTest, RefusesWhatContradictsItself) {
    expectRefusals({
        {{"limits"}, 2, "--port DEVICE, --usb"},
        {{"limits", "--port", "x", "--usb"}, 2, "excludes"},
        {{"limits", "--port", "x", "--variant", "9"}, 2, "variant"},
        {{"limits", "--port", "x", "--emulation", "17038"}, 2, "17001 to 17037"},
        {{"limits", "--usb", "plotter"}, 2, "V:P@LOCATION"},
        {{"limits", "--port", "x", "--plotter-id", "20596"}, 2, "--usb"},
        {{"limits", "--usb", "--plotter-id", "20596x"}, 2, "--plotter-id"},
        {{"limits", "--port", "/dev/ttyNONE7"}, 3, "/dev/ttyNONE7: no such device"},
        {{"ports", "ttyS0"}, 2, "ttyS0"},
    });
}

// The plug-in's pauses around a request are real: six seconds.
TEST_F(LimitsTest, AsksThePlotter) {
    FarEnd plotter;
    Running asking({"limits", "--port", plotter.port(), "-v"}, false);
    EXPECT_EQ(plotter.read(6), "IN;OH;");
    plotter.write("0,0,15200,10800\r");
    Result result = asking.wait();
    EXPECT_EQ(result.code, 0) << result.err;
    EXPECT_EQ(result.out, "lower left   0, 0\nupper right  15200, 10800\nsize         380.0 x 270.0 mm\n");
    EXPECT_NE(result.err.find("sent \"IN;OH;\", heard \"0,0,15200,10800\\r\""), std::string::npos) << result.err;
}

TEST_F(LimitsTest, CtrlCEndsTheWaitForASilentPlotter) {
    FarEnd plotter;
    Running asking({"limits", "--port", plotter.port()}, true);
    EXPECT_EQ(plotter.read(6), "IN;OH;");
    asking.signal(SIGINT);
    Result result = asking.wait();
    EXPECT_EQ(result.code, 130) << result.err;
    EXPECT_EQ(result.out, "");
    EXPECT_NE(result.err.find("asking " + plotter.port()), std::string::npos) << result.err;
    EXPECT_EQ(result.err.find("no reply"), std::string::npos) << result.err;
}

} // namespace
