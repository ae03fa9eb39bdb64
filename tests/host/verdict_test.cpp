// What a report comes to, for the outcomes that no healthy plug-in can be brought to here.
#include "host/host_fixture.h"

#include "host/print/query_verdict.h"
#include "host/print/verdict.h"

#include <cerrno>
#include <cstring>
#include <sys/stat.h>

namespace {

using host::ExitCode;

struct Printed {
    host::PrintPlan plan;
    host::PrintReport report = {};
};

class VerdictTest : public HostTest {
protected:
    /// A plot that holds the text, of which so many bytes were sent and the rest withheld.
    Printed printed(const std::string &text, int64_t sent) {
        host::PlotFile plot(file("plot", text));
        const host::PlotRules rules{17002, ";"};
        host::Examination found = host::examine(plot, rules);
        Printed result{
            {.plot = std::move(plot), .jobFile = "roll", .job = {}, .rules = rules, .examination = found, .target = {}}};
        result.plan.target.path = "/dev/ttyUSB0";
        result.report.job.fileBytes = found.fileBytes;
        result.report.job.sentBytes = sent;
        result.report.job.withheldBytes = found.fileBytes - sent;
        result.report.job.firstErrorOffset = -1;
        return result;
    }
};

TEST_F(VerdictTest, FailuresOfTheReportBecomeExitCodes) {
    constexpr std::tuple<uint32_t, int32_t, int64_t, ExitCode, const char *> kRows[] = {
        {kORB_StopByHost, kORB_ErrorUnvalidPort, ENXIO, ExitCode::Lost, "lost after 3 of 6 bytes"},
        {kORB_StopByHost, kORB_ErrorUnvalidPort, EAGAIN, ExitCode::Failed, "only a part"},
        {kORB_StopByHost, kORB_ErrorUnvalidPort, ENOMEM, ExitCode::Failed, "cannot allocate memory"},
        {kORB_StopNotASCII, kORB_ErrorPathNameTooLong, 0, ExitCode::Failed, "0xE9 at offset 3"},
        {kORB_StopPlotFile, kORB_ErrorOpeningPlotFile, -54, ExitCode::Permission, "opened"},
        {kORB_StopJobFile, kORB_ErrorJobFile, -43, ExitCode::Missing, "job"},
        {kORB_StopUnconvertible, kORB_ErrorPathNameTooLong, 0, ExitCode::Unfit, "roll: a text is not"},
        {kORB_StopNoLink, kORB_ErrorDeviceNotOpened, 0xE00002E2, ExitCode::Permission, "udev"},
        {kORB_StopNoLink, kORB_ErrorDeviceNotOpened, 0, ExitCode::Failed, "opened"},
        {kORB_StopByHost, kORB_ErrorPipe, 0xE00002C0, ExitCode::Lost, "sent 3 of 6 bytes; the plotter"},
        {kORB_StopByHost, kORB_ErrorPipe, 0xE0004099, ExitCode::Failed, "(code 0xE0004099)"},
    };
    for (auto [stopReason, errorID, status, code, says] : kRows) {
        SCOPED_TRACE(says);
        const bool isUsb = status > 0xE0000000 || errorID == kORB_ErrorDeviceNotOpened;
        auto [plan, report] = printed("PU;\xE9;;", 3);
        report.job.stopReason = stopReason;
        report.job.firstErrorID = errorID;
        report.job.firstStatus = static_cast<int32_t>(status);
        if (isUsb) {
            plan.target.usb.emplace().node = file("node", "");
            chmod(path("node").c_str(), 0600); // its owner's alone
        }
        host::Verdict verdict = host::judge(plan, report);
        EXPECT_EQ(verdict.code, code);
        EXPECT_TRUE(holds(verdict.message, says));
        EXPECT_EQ(host::callFailed(plan, report), stopReason != kORB_StopNotASCII) << "what was foretold is no failure";
        report.isGone = isUsb;
        EXPECT_EQ(host::judge(plan, report).code, isUsb ? ExitCode::Lost : code) << "which explains every failure";
        report.stopped = true;
        EXPECT_EQ(host::judge(plan, report).code, ExitCode::Stopped) << "the user's stop explains everything";
    }
}

TEST_F(VerdictTest, JudgesAFinishedJobByWhatBecameOfItsFiles) {
    const struct {
        std::string text;
        int64_t sent;
        ExitCode code;
        const char *says; ///< in the message, or in the only note
        bool isGone = false;
        host::PlotChange change = {};
    } kRows[] = {
        {"PU;\r\n", 3, ExitCode::Done, "2 bytes at the end not sent (nothing that draws)"},
        {"PU;SP0", 3, ExitCode::Failed, "3 bytes at the end not sent, from offset 3 on"},
        {"PU;PD;", 3, ExitCode::Failed, "3 bytes not sent"}, // though the examination found nothing
        {"PU;", 3, ExitCode::Lost, "may not have reached it", true},
        {"PU;SP0", 3, ExitCode::Failed, "plot: written", false, {true, "written"}},
        {"PU;", 3, ExitCode::Done, "removed", false, {false, "removed"}},
    };
    for (const auto &row : kRows) {
        SCOPED_TRACE(row.text + row.says);
        auto [plan, report] = printed(row.text, row.sent);
        report.isGone = row.isGone;
        report.change = row.change;
        host::Verdict verdict = host::judge(plan, report);
        EXPECT_EQ(verdict.code, row.code) << verdict.message;
        std::string said = verdict.code == ExitCode::Done && !verdict.notes.empty() ? verdict.notes[0] : verdict.message;
        EXPECT_TRUE(holds(said, row.says));
        EXPECT_EQ(said.empty(), *row.says == '\0');
    }
}

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
        {"a second reply missing", false, kORB_ErrorNoReply, 0, "7,8\r", 11, ExitCode::Failed, "U is incomplete", "U", 8},
        {"a line that hung up", false, kORB_NoError, 0, "", 1, ExitCode::Lost, "hung up"},
        {"a write that failed", false, kORB_ErrorUnvalidPort, 0, "", 0, ExitCode::Lost, "IN;OH; could not be sent"},
        {"zeros alone", false, kORB_NoError, 0, "0,0,0,0,\r", 1, ExitCode::Failed, "\"0,0,0,0,\\r\" gives no area"},
        {"silence over USB", true, kORB_NoError, 0, "", 99, ExitCode::Lost, "no reply to IN;OH;; is"},
        {"an answer to the last read", true, kORB_NoError, 0, "0,0,1,1\r", 98, ExitCode::Done, "", "IN;OH;", 1},
        {"a plotter hung", true, kORB_ErrorPipe, kNotResponding, "", 9, ExitCode::Lost, "does not answer"},
        {"a plotter that cannot reply", true, kORB_ErrorUSBNotOpen, kNotResponding, "", 9, ExitCode::Lost,
         "perhaps it gives none over USB"},
    };
    for (const auto &row : kRows) {
        SCOPED_TRACE(row.what);
        QueryOutcome outcome = outcomeOf(row.errorID, row.request, row.reply, row.reads);
        outcome.values = {0, 0, row.upper, row.upper};
        outcome.report.status = row.status;
        if (row.isUsb) outcome.usb.emplace();
        host::Verdict verdict = host::judge(outcome);
        EXPECT_EQ(verdict.code, row.code);
        EXPECT_TRUE(holds(verdict.message, row.says));
        const std::string told = host::queryJson(outcome, verdict).line();
        EXPECT_EQ(told.find("\"values\"") != told.npos, row.code == ExitCode::Done) << told;
        outcome.stopped = true;
        EXPECT_EQ(host::judge(outcome).code, ExitCode::Stopped) << "the user's stop explains everything";
    }
}

TEST(LimitsVerdict, CornersAsThePlotterSaidThem) {
    const std::string kUsual = "lower left   0, 0\nupper right  15200, 10800\nsize         380.0 x 270.0 mm\n";
    const std::string kNegative = "lower left   -20, -20\nupper right  20, 20\nsize         1.0 x 1.0 mm\n";
    const struct {
        const char *reply;
        std::array<double, 4> values; ///< of the record
        const char *note;
        std::string lines;
        int32_t emulation = 17002;
    } kRows[] = {
        {"0,0,15200,10800\r", {0, 0, 15200, 10800}, "", kUsual},
        {"0.0,0.0,15200.0,10800.0\r", {0, 0, 152000, 108000}, "108000: it reads no decimal points", kUsual},
        {"0,0,15200,10800\r\n5\r", {0, 0, 15200, 108005}, "behind the end of the line", kUsual},
        {"-20,-20,20,20\r", {20, 20, 20, 20}, "20\\r\", of which", kNegative},
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
        EXPECT_TRUE(holds(note, row.note));
        EXPECT_EQ(host::limitLines(outcome), row.lines);
    }
}

} // namespace
