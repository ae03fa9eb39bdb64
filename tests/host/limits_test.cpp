// Queries for the limits: what a report comes to, and two plotters at the far end of a line.
#include "host/host_fixture.h"

#include "host/options/line_settings.h"
#include "host/plugin/query_watch.h"
#include "host/plugin/record.h"
#include "host/print/query_verdict.h"

#include <csignal>
#include <cstring>
#include <fcntl.h>
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
    constexpr auto kNotResponding = static_cast<int32_t>(0xE00002ED), kNotWritable = static_cast<int32_t>(0xE00002CF);
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
        {"an answer to the last read", true, kORB_NoError, 0, "0,0,1,1\r", 98, ExitCode::Done, "", "IN;OH;", 1},
        {"half a reply over USB", true, kORB_NoError, 0, "0,0,9", 99, ExitCode::Failed, "incomplete"},
        {"a plotter hung", true, kORB_ErrorPipe, kNotResponding, "", 9, ExitCode::Lost, "does not answer"},
        {"a plotter that cannot reply", true, kORB_ErrorUSBNotOpen, kNotResponding, "", 9, ExitCode::Lost,
         "perhaps it gives none over USB"},
        {"a pipe that is none", true, kORB_ErrorPipe, kNotWritable, "", 9, ExitCode::Failed, "is not an out endpoint"},
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
        EXPECT_EQ(nlohmann::json::parse(host::queryJson(outcome, verdict).line()).contains("values"),
                  row.code == ExitCode::Done);
        outcome.stopped = true;
        EXPECT_EQ(host::judge(outcome).code, ExitCode::Stopped) << "the user's stop explains everything";
    }
}

TEST(LimitsVerdict, SilenceOnAPipeThatAnIdentifierChooses) {
    QueryOutcome outcome = outcomeOf(kORB_ErrorPipe, "IN;OH;", "", 9);
    outcome.report.status = static_cast<int32_t>(0xE00002ED);
    for (auto [vendor, pipe] : {std::pair{0x0B75, 1}, {0x0B75, 2}, {0x1234, 2}}) {
        outcome.usb.emplace().vendor = static_cast<uint16_t>(vendor);
        outcome.usbOutPipe = static_cast<uint8_t>(pipe);
        const bool isNamed = host::judge(outcome).message.find("--plotter-id") != std::string::npos;
        EXPECT_EQ(isNamed, vendor == 0x0B75 && pipe == 2);
    }
}

TEST(LimitsVerdict, CornersAsThePlotterSaidThem) {
    const std::string kUsual = "lower left   0, 0\nupper right  15200, 10800\nsize         380.0 x 270.0 mm\n";
    const struct {
        const char *reply;
        std::array<double, 4> values; ///< of the record
        const char *note;
        std::string lines;
        int32_t emulation = 17002;
    } kRows[] = {
        {"0,0,15200,10800\r", {0, 0, 15200, 10800}, "", kUsual},
        {"0.0,0.0,15200.0,10800.0\r",
         {0, 0, 152000, 108000},
         "made 0, 0, 152000, 108000: it reads no decimal points",
         kUsual},
        {"0,0,15200,10800\r\n5\r", {0, 0, 15200, 108005}, "behind the end of the line", kUsual},
        {"-20,-20,20,20\r",
         {20, 20, 20, 20},
         "\"-20,-20,20,20\\r\", of which",
         "lower left   -20, -20\nupper right  20, 20\nsize         1.0 x 1.0 mm\n"},
        {"0,0,15200\r", {0, 0, 15200, 0}, "too few numbers", "lower left   0, 0\nupper right  15200, 0\n"},
        {"9 % 0 0 15200 10800\r", {0, 0, 15200, 10800}, "", kUsual, 17005},
        {"1.5,2,3,4\r", {15, 2, 3, 4}, "", "value 1      15\nvalue 2      2\nvalue 3      3\nvalue 4      4\n", 17009},
    };
    for (const auto &row : kRows) {
        SCOPED_TRACE(row.reply);
        QueryOutcome outcome = outcomeOf(kORB_NoError, "IN;OH;", row.reply, 1);
        outcome.values = row.values;
        outcome.emulation = row.emulation;
        host::Verdict verdict = host::judge(outcome);
        EXPECT_EQ(verdict.code, ExitCode::Done);
        const std::string note = verdict.notes.empty() ? "" : verdict.notes[0];
        EXPECT_EQ(note.empty(), *row.note == '\0');
        EXPECT_NE(note.find(row.note), std::string::npos) << note;
        EXPECT_EQ(host::limitLines(outcome), row.lines);
    }
}

class LimitsTest : public HostTest {};

TEST_F(LimitsTest, RefusesWhatContradictsItself) {
    expectRefusals({
        {{"limits"}, 2, "--port DEVICE, --usb"},
        {{"limits", "--port", "x", "--usb"}, 2, "excludes"},
        {{"limits", "--port", "x", "--variant", "9"}, 2, "9 is not a whole number from 1 to 8"},
        {{"limits", "--port", "x", "--emulation", "17038"}, 2, "17001 to 17037"},
        {{"limits", "--usb", "plotter"}, 2, "V:P@LOCATION"},
        {{"limits", "--port", "x", "--plotter-id", "20596"}, 2, "--usb"},
        {{"limits", "--usb", "--plotter-id", "20596x"}, 2, "--plotter-id: 20596x is not a whole number"},
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

// A line that is held as XOFF holds it.
TEST_F(LimitsTest, AQuestionThatCannotLeaveIsGivenUp) {
    FarEnd plotter;
    Descriptor near(open(plotter.port().c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC));
    ASSERT_EQ(tcflow(near.get(), TCOOFF), 0);
    const host::HostString port(plotter.port(), "");
    ORB_ServiceRecord record = host::emptyRecord(kORB_ServiceSerialHardClip);
    host::applyLineSettings({}, record);
    record.ORB_CFSTR_bsdIn_VectorixDevice = port.get();
    host::QueryWatch watch(std::chrono::milliseconds(1), [] { return false; });
    host::releaseStrings(ORB_getVectorixCS2(record));
    QueryOutcome outcome = outcomeOf(0, "", "", 0);
    outcome.isGivenUp = watch.end();
    outcome.whyHeld = host::whyHeld(near.get(), {});
    outcome.report.structSize = sizeof outcome.report;
    ORB_hostGetQueryReport(&outcome.report);
    EXPECT_EQ(host::judge(outcome).code, ExitCode::Lost);
    EXPECT_NE(host::judge(outcome).message.find("the line is held (held by XOFF"), std::string::npos);
}

} // namespace
