// What a report comes to, for the outcomes that no healthy plug-in can be brought to here.
#include "host/host_fixture.h"

#include "host/print/verdict.h"
#include "host/terminal/text.h"

#include <cerrno>
#include <sys/stat.h>

namespace {

using host::ExitCode;

struct Printed {
    host::PrintPlan plan;
    host::PrintReport report;
};

class VerdictTest : public HostTest {
protected:
    /// A plot that holds the text, of which so many bytes were sent and the rest withheld.
    Printed printed(const std::string &text, int64_t sent) {
        host::PlotFile plot(file("plot", text));
        const host::PlotRules rules{17002, ";"};
        host::Examination examination = host::examine(plot, rules);
        Printed result{
            {.plot = std::move(plot), .jobFile = {}, .job = {}, .rules = rules, .examination = examination, .target = {}},
            {}};
        result.plan.target.path = "/dev/ttyUSB0";
        result.report.job.fileBytes = examination.fileBytes;
        result.report.job.sentBytes = sent;
        result.report.job.withheldBytes = examination.fileBytes - sent;
        result.report.job.firstErrorOffset = -1;
        return result;
    }

    /// The print is over USB, to a plotter whose node is its owner's alone.
    void putPlotter(Printed &printed) const {
        host::UsbDevice &usb = printed.plan.target.usb.emplace();
        usb.vendor = 0x0B75;
        usb.product = 0x0402;
        usb.location = 0x01080000;
        usb.node = file("node", "");
        chmod(usb.node.c_str(), 0600);
        printed.report.usbOutPipe = 2;
    }
};

TEST_F(VerdictTest, FailuresOfTheReportBecomeExitCodes) {
    const struct {
        const char *what;
        uint32_t stopReason;
        int32_t errorID;
        int64_t status;
        ExitCode code;
        const char *says;
        bool isUsb = false;
    } kRows[] = {
        {"unplugged", kORB_StopByHost, kORB_ErrorUnvalidPort, ENXIO, ExitCode::Lost, "lost after 3 of 6 bytes"},
        {"a short write", kORB_StopByHost, kORB_ErrorUnvalidPort, EAGAIN, ExitCode::Failed, "only a part"},
        {"another error", kORB_StopByHost, kORB_ErrorUnvalidPort, ENOMEM, ExitCode::Failed, "cannot allocate memory"},
        {"not ASCII", kORB_StopNotASCII, kORB_ErrorPathNameTooLong, 0, ExitCode::Failed, "0xE9 at offset 3"},
        {"the port vanished", kORB_StopNoLink, kORB_ErrorOpeningPort, 0, ExitCode::Lost, "could not be opened"},
        {"refused settings", kORB_StopNoLink, kORB_ErrorSetAttributes, 0, ExitCode::Failed, "line settings"},
        {"the plot vanished", kORB_StopPlotFile, kORB_ErrorOpeningPlotFile, -43, ExitCode::Missing, "could not be opened"},
        {"the plot was locked away", kORB_StopPlotFile, kORB_ErrorOpeningPlotFile, -54, ExitCode::Permission, "opened"},
        {"a bad disk", kORB_StopPlotFile, kORB_ErrorChunkUnreadable, -36, ExitCode::Failed, "every attempt"},
        {"an unfit job", kORB_StopJobFile, kORB_ErrorJobFile, 0, ExitCode::Unfit, "unfit"},
        {"the job vanished", kORB_StopJobFile, kORB_ErrorJobFile, -43, ExitCode::Missing, "job"},
        {"no terminator", kORB_StopJobFile, kORB_ErrorNoTerminator, 0, ExitCode::Unfit, "terminator"},
        {"a tool too long", kORB_StopUnconvertible, kORB_ErrorPathNameTooLong, 0, ExitCode::Unfit,
         "roll.plist: a text is not ASCII or too long"},
        {"a stop of unknown origin", kORB_StopByHost, kORB_ErrorStopped, 0, ExitCode::Failed, "before its end"},
        {"not found", kORB_StopNoLink, kORB_ErrorNoPlotter, 0, ExitCode::Missing, "no such plotter any more", true},
        {"gone before it began", kORB_StopNoLink, kORB_ErrorDeviceNotOpened, 0xE00002C0, ExitCode::Lost, "is gone", true},
        {"device held", kORB_StopNoLink, kORB_ErrorDeviceNotOpened, 0xE00002C5, ExitCode::Busy, "claimed", true},
        {"device forbidden", kORB_StopNoLink, kORB_ErrorDeviceNotOpened, 0xE00002E2, ExitCode::Permission, "udev", true},
        {"device shut for no known reason", kORB_StopNoLink, kORB_ErrorDeviceNotOpened, 0, ExitCode::Failed, "opened", true},
        {"interface held", kORB_StopNoLink, kORB_ErrorInterfaceNotOpened, 0xE00002C5, ExitCode::Busy, "claimed", true},
        {"no registry", kORB_StopNoLink, kORB_ErrorMasterPort, 0xE00002BC, ExitCode::Failed, "(code 0xE00002BC)", true},
        {"pulled out", kORB_StopByHost, kORB_ErrorPipe, 0xE00002C0, ExitCode::Lost, "sent 3 of 6 bytes; the plotter is gone",
         true},
        {"gone by its own word", kORB_StopByHost, kORB_ErrorPlotterGone, 0, ExitCode::Lost, "is gone", true},
        {"a pipe that is none", kORB_StopByHost, kORB_ErrorPipe, 0xE0004061, ExitCode::Failed,
         "the out pipe 2 of this plotter is not an out endpoint", true},
        {"stalled", kORB_StopByHost, kORB_ErrorPipe, 0xE000404F, ExitCode::Failed, "halted its pipe", true},
        {"an unknown code", kORB_StopByHost, kORB_ErrorPipe, 0xE0004099, ExitCode::Failed, "(code 0xE0004099)", true},
    };
    for (const auto &row : kRows) {
        SCOPED_TRACE(row.what);
        Printed print = printed("PU;\xE9;;", 3);
        print.plan.jobFile = "roll.plist";
        print.report.job.stopReason = row.stopReason;
        print.report.job.firstErrorID = row.errorID;
        print.report.job.firstStatus = static_cast<int32_t>(row.status);
        if (row.isUsb) putPlotter(print);
        host::Verdict verdict = host::judge(print.plan, print.report);
        EXPECT_EQ(verdict.code, row.code);
        EXPECT_NE(verdict.message.find(row.says), std::string::npos) << verdict.message;
        EXPECT_EQ(host::callFailed(print.plan, print.report), row.stopReason != kORB_StopNotASCII)
            << "what was foretold is no failure";
        if (row.isUsb) {
            EXPECT_EQ(verdict.message.rfind("0b75:0402@01080000: ", 0), 0U) << verdict.message;
            print.report.isGone = true;
            EXPECT_EQ(host::judge(print.plan, print.report).code, ExitCode::Lost)
                << "a plotter that is gone explains every failure";
        }
        print.report.stopped = true;
        EXPECT_EQ(host::judge(print.plan, print.report).code, ExitCode::Stopped) << "the user's stop explains everything";
    }
}

TEST_F(VerdictTest, JudgesAFinishedJobByWhatBecameOfItsFiles) {
    struct Row {
        const char *what;
        std::string text;
        int64_t sent;
        ExitCode code;
        const char *says; ///< in the message, or in the only note; nullptr for neither
        bool isGone = false;
        host::PlotChange change = {};
    };
    const Row kRows[] = {
        {"nothing withheld", "PU;PD;", 6, ExitCode::Done, nullptr},
        {"padding at the end", "PU;\r\n", 3, ExitCode::Done, "2 bytes at the end not sent (nothing that draws)"},
        {"a command withheld", "PU;SP0", 3, ExitCode::Failed, "3 bytes at the end not sent, from offset 3 on"},
        {"withheld, though the examination found nothing", "PU;PD;", 3, ExitCode::Failed, "3 bytes not sent"},
        {"the port went away behind the last byte", "PU;", 3, ExitCode::Lost, "may not have reached it", true},
        {"written to meanwhile", "PU;SP0", 3, ExitCode::Failed, "plot: written", false, {true, "written"}},
        {"removed meanwhile", "PU;", 3, ExitCode::Done, "removed", false, {false, "removed"}},
    };
    for (const Row &row : kRows) {
        SCOPED_TRACE(row.what);
        Printed print = printed(row.text, row.sent);
        print.report.isGone = row.isGone;
        print.report.change = row.change;
        host::Verdict verdict = host::judge(print.plan, print.report);
        EXPECT_EQ(verdict.code, row.code) << verdict.message;
        std::string said = verdict.code == ExitCode::Done && !verdict.notes.empty() ? verdict.notes[0] : verdict.message;
        EXPECT_NE(said.find(row.says ? row.says : ""), std::string::npos) << said;
        EXPECT_EQ(said.empty(), row.says == nullptr);
    }
}

TEST_F(VerdictTest, TextsForPeople) {
    EXPECT_EQ(host::grouped(999), "999");
    EXPECT_EQ(host::grouped(1234567), "1 234 567");
    EXPECT_EQ(host::counted(1, "piece"), "1 piece");
    EXPECT_EQ(host::duration(59.2), "1 min 0 s");
    EXPECT_EQ(host::duration(7384), "2 h 3 min");
    EXPECT_EQ(host::shown("gr\u00fcn \xC2\x9B"
                          "31m \xFF \xC0\x80"),
              "gr\u00fcn \\xC2\\x9B31m \\xFF \\xC0\\x80");
    EXPECT_EQ(host::excerpt("abcdef", 3), "abc\u2026");
}

} // namespace
