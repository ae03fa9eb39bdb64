// vectorix limits: asks a plotter how far its pen can go.
#include "emulations/emulations.h"
#include "host/commands/commands.h"
#include "host/job/job_options.h"
#include "host/obstacles/port_lock.h"
#include "host/obstacles/usb_obstacles.h"
#include "host/options/apply_profile.h"
#include "host/options/line_settings.h"
#include "host/options/plotter_options.h"
#include "host/options/profile.h"
#include "host/plugin/console_lines.h"
#include "host/plugin/query_watch.h"
#include "host/plugin/record.h"
#include "host/plugin/stop_signals.h"
#include "host/plugin/usb_target.h"
#include "host/print/query_verdict.h"
#include "host/terminal/output.h"
#include "host/terminal/text.h"
#include "language/geometry.h"

#include <chrono>
#include <fmt/format.h>
#include <fmt/ranges.h>
#include <memory>
#include <unistd.h>

namespace host {

namespace {

struct LimitsOptions {
    std::string port;
    bool toUsb = false;
    std::string usbChoice;
    int emulation = emulations::kHpgl;
    uint32_t variant = 1;
    int32_t plotterID = 0;
    LineSettings line;
    bool isKept = false; ///< in the profile
    std::string profile;
    Telling telling;
};

/// The record of the query; a USB plotter is made ready for it.
ORB_ServiceRecord recordOf(const LimitsOptions &options, const std::optional<UsbDevice> &usb, CFStringRef portPath) {
    ORB_ServiceRecord record = usb ? recordFor(*usb) : emptyRecord(kORB_ServiceSerialHardClip);
    if (usb) {
        record.ORB_serviceNumber = kORB_ServicePreparePlotter;
        record = ORB_getVectorixCS2(record);
        releaseStrings(record);
        record.ORB_CFSTR_message = 0;
        record.ORB_serviceNumber = kORB_ServiceUSBHardClip;
        record.ORB_queryEmulationID = options.emulation;
        record.ORB_queryPlotterID = options.plotterID;
    } else {
        applyLineSettings(options.line, record);
        record.ORB_CFSTR_bsdIn_VectorixDevice = portPath;
    }
    record.ORB_EmulationID = options.emulation;
    record.ORB_emulationVariant = options.variant;
    return record;
}

/// Seconds that a question takes at most: the pauses around it, and all tries to hear a reply when there is none.
double secondsFor(const LimitsOptions &options, bool isUsb) {
    constexpr double kSerial = 16, kSecondReply = 2; // of a language that gives two
    constexpr double kUsb = 66, kSecondUsbReply = 63;
    constexpr int64_t kLongestRequest = 30;
    const bool givesTwo = emulations::of(options.emulation).reply == emulations::ReplyForm::Pairs;
    if (isUsb) return kUsb + (givesTwo ? kSecondUsbReply : 0);
    return kSerial + (givesTwo ? kSecondReply : 0) + secondsFor(kLongestRequest, options.line);
}

QueryOutcome ask(const LimitsOptions &options, const std::optional<UsbDevice> &usb) {
    // Over USB each read has a time limit of its own. The margin lets a query end by itself if it can.
    constexpr double kUsbMargin = 5;
    const auto seconds = std::chrono::duration<double>(secondsFor(options, usb.has_value()) + (usb ? kUsbMargin : 0));
    QueryWatch watch(std::chrono::duration_cast<std::chrono::milliseconds>(seconds),
                     [&] { return usb && accessTo(usb->node) == NodeAccess::NoNode; });
    HostString portPath(options.port, "--port");
    QueryOutcome outcome{};
    outcome.report.structSize = sizeof outcome.report;
    outcome.source = usb ? usb->id() : options.port;
    outcome.usb = usb;

    auto start = std::chrono::steady_clock::now();
    ORB_ServiceRecord record = recordOf(options, usb, portPath.get());
    outcome.report.errorID = record.ORB_errorID; // all there is when the plotter could not be made ready
    bool isReady = !usb || record.ORB_errorID == kORB_NoError;
    outcome.isUsbGone = usb && accessTo(usb->node) == NodeAccess::NoNode;
    if (isReady && !outcome.isUsbGone && !StopOnSignal::came()) {
        record = ORB_getVectorixCS2(record);
        ORB_hostGetQueryReport(&outcome.report);
    }
    outcome.isGivenUp = watch.end();
    outcome.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    outcome.stopped = StopOnSignal::came();
    outcome.values = {record.ORB_HARDC_1, record.ORB_HARDC_2, record.ORB_HARDC_3, record.ORB_HARDC_4};
    outcome.emulation = record.ORB_EmulationID;
    outcome.usbOutPipe = record.ORB_USB_PIPEOUT;
    outcome.isUsbGone = usb && accessTo(usb->node) == NodeAccess::NoNode;
    releaseStrings(record);
    return outcome;
}

void announce(const LimitsOptions &options, const std::string &source, bool isUsb) {
    if (isatty(STDERR_FILENO) == 0) return;
    printError("asking {} …; this takes {} to {:.0f} seconds\n", shown(source), isUsb ? 5 : 6, secondsFor(options, isUsb));
}

/// Puts the limits into the profile; where the plotter said none that have an area, the verdict says so, and the answer is
/// false.
bool keep(const std::string &profile, const QueryOutcome &outcome, Verdict &verdict) {
    std::optional<Corners> corners = cornersOf(outcome);
    if (!corners || (*corners)[2] <= (*corners)[0] || (*corners)[3] <= (*corners)[1]) {
        verdict.code = ExitCode::Failed;
        verdict.message = fmt::format("{}: it told no two corners to keep in the profile", shown(outcome.source));
        return false;
    }
    for (double &corner : *corners)
        corner /= language::kUnitsPerMillimetre;
    keepInProfile(profile, "area", fmt::format("{}", fmt::join(*corners, ",")));
    return true;
}

ExitCode tellLimits(const LimitsOptions &options, const QueryOutcome &outcome, Verdict verdict) {
    const Telling &telling = options.telling;
    const bool isKnown = verdict.code == ExitCode::Done;
    const bool isKept = isKnown && options.isKept && keep(options.profile, outcome, verdict);
    if (telling.verbose) {
        printError("vectorix: sent \"{}\", heard \"{}\"\n", requestShown(outcome.report), replyShown(outcome.report));
    }
    if (!telling.json && isKnown) { // also with --quiet
        printOut("{}{}", limitLines(outcome), isKept ? fmt::format("kept in      {}\n", options.profile) : "");
    }
    return tell(telling, verdict, queryJson(outcome, verdict), "");
}

ExitCode limits(const LimitsOptions &options) {
    if (options.port.empty() && !options.toUsb) {
        throw Failure(ExitCode::Usage, "limits: say which plotter: --port DEVICE, --usb, or --profile NAME of one with "
                                       "either");
    }
    UsbChoice choice = parseUsbChoice(options.usbChoice);
    std::optional<StopOnSignal> signals(std::in_place); // outlives the port, whose close may have to be cut short
    std::optional<PortLock> lock;
    std::optional<UsbDevice> usb;
    if (options.toUsb) {
        usb = chooseUsbDevice(usbDevices(), choice);
        requireFree(*usb);
        if (options.telling.verbose) printError("{}", notesOf(*usb));
    } else {
        lock.emplace(options.port);
    }
    if (!options.telling.quiet) announce(options, usb ? usb->id() : options.port, usb.has_value());

    ProgressBar noBar(false);
    ConsoleLines console(options.telling.verbose, noBar);
    QueryOutcome outcome = ask(options, usb);
    if (lock && (outcome.stopped || outcome.isGivenUp)) {
        outcome.whyHeld = whyHeld(lock->descriptor(), options.line);
        StopOnSignal::interrupt();
    }
    lock.reset();
    signals.reset();
    return tellLimits(options, outcome, judge(outcome));
}

} // namespace

void addLimitsCommand(const Command &app) {
    auto options = std::make_shared<LimitsOptions>();
    Command command = app.add("limits", "Ask a plotter for its hard-clip limits");
    command.explain(
        {"HP-GL plotters answer with two corners in units of 0.025 mm. For 17008, 17009, 17010 and 17030 the four values\n"
         "are shown as they came. An answer takes about 6 seconds; a silent plotter is given up after 16, over USB\n"
         "after 66 (17009, which is asked twice: after 18 and 129), and so is one that holds the line.\n"
         "Vendor 0b75 has plotters that listen on their first USB pipe, identifiers 20595 to 20597: give --plotter-id for\n"
         "these. All its others listen on the second.",
         {{"vectorix limits --port /dev/ttyUSB0", "Of a plotter on a serial port."},
          {"vectorix limits --usb --emulation 17005 --json", "Of the only plotter on USB, for programs."},
          {"vectorix limits -p house --save", "Keeps them in the profile: preview and print hold drawings against them."}},
         queryFields()});
    addProfileOption(command);
    Option port = addPort(command, options->port);
    Option usb = addUsb(command, options->usbChoice).excludes(port);
    addEmulation(command, options->emulation);
    addVariant(command, options->variant);
    addPlotterID(command, options->plotterID).needs(usb);
    command.flag("--save", options->isKept, "Keep the limits in the profile, as its area").needs(*command.find("--profile"));
    addLineOptions(command, options->line);
    addTelling(command, options->telling,
               {.verbose = "Show what is said and heard, and what the plug-in says",
                .quiet = "Say nothing but the limits and errors"});
    command.whenTyped(
        [options, command, usb] {
            applyProfile(command);
            options->toUsb = usb.isTyped();
            options->profile = command.find("--profile")->value();
            return limits(*options);
        },
        &options->telling.json);
}

} // namespace host
