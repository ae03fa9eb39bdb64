// vectorix send: a few commands to a plotter, as they are typed.
#include "emulations/emulations.h"
#include "host/commands/commands.h"
#include "host/job/job_options.h"
#include "host/job/job_writer.h"
#include "host/obstacles/port_lock.h"
#include "host/obstacles/usb_obstacles.h"
#include "host/options/apply_profile.h"
#include "host/options/line_settings.h"
#include "host/options/plotter_options.h"
#include "host/plugin/console_lines.h"
#include "host/plugin/record.h"
#include "host/plugin/stop_signals.h"
#include "host/plugin/usb_target.h"
#include "host/print/carry_out.h"
#include "host/terminal/output.h"
#include "host/terminal/text.h"

#include <chrono>
#include <cstring>
#include <fmt/format.h>
#include <memory>
#include <termios.h>
#include <unistd.h>

namespace host {

namespace {

struct SendOptions {
    std::string text;
    std::string port;
    bool toUsb = false;
    std::string usbChoice;
    int emulation = emulations::kHpgl;
    int32_t plotterID = 0;
    LineSettings line;
    Telling telling;
};

/// What the plug-in sends before the text on its own account.
std::string startTextOf(const SendOptions &options) {
    const emulations::Emulation &emulation = emulations::of(options.emulation);
    if (!options.toUsb) return emulation.serialStart;
    std::string text;
    for (int time = 0; time < emulation.usbStart.times; ++time)
        text += emulation.usbStart.text;
    return text;
}

/// Closes the port, which the service leaves open. Waits before until the plotter has taken all of the text, unless the user
/// stops that. Returns false when it may not have taken all.
bool closePort(int fd) {
    bool isTaken = !StopOnSignal::came() && tcdrain(fd) == 0;
    close(fd);
    return isTaken;
}

/// Throws Failure unless all of the text was taken.
void sendToPort(const SendOptions &options, const std::string &text) {
    StopOnSignal signals; // outlives the port, whose close may have to be cut short
    PortLock lock(options.port);
    HostString portPath(options.port, "--port");
    ORB_ServiceRecord record = emptyRecord(kORB_ServiceOpenAndWrite);
    applyLineSettings(options.line, record);
    record.ORB_EmulationID = options.emulation;
    record.ORB_CFSTR_bsdIn_VectorixDevice = portPath.get();
    memcpy(record.ORB_writeBuffer, text.data(), text.size()); // the record was zeroed: a NUL follows
    if (!StopOnSignal::came()) record = ORB_getVectorixCS2(record);
    bool wasOpened = record.ORB_portFD > 0;
    bool isTaken = wasOpened && closePort(record.ORB_portFD);
    std::string status = textOf(record.ORB_CFSTR_message);
    releaseStrings(record);

    if (StopOnSignal::came()) {
        throw Failure(ExitCode::Stopped, "stopped: the text may have been sent in part");
    }
    if (record.ORB_errorID != kORB_NoError || !wasOpened) {
        if (options.telling.verbose) printError("plug-in: {}\n", shown(status));
        bool refused = record.ORB_errorID == kORB_ErrorSetAttributes;
        throw Failure(refused ? ExitCode::Failed : ExitCode::Lost,
                      fmt::format("{}: {}; {}", shown(options.port), errorText(record.ORB_errorID),
                                  refused ? settingsRemedy(options.port) : "check the cable, then try again"));
    }
    if (!isTaken || lock.isGone()) {
        throw Failure(ExitCode::Lost, fmt::format("{}: the device was lost, and the text may not have reached it; check the "
                                                  "cable, then try again",
                                                  shown(options.port)));
    }
}

/// A job whose plot ends with the text's last character. Throws Failure where only another one can end it.
JobOptions jobFor(const SendOptions &options, const std::string &text) {
    if (const std::string_view end = emulations::of(options.emulation).cut.end; !text.ends_with(end)) {
        throw Failure(ExitCode::Usage,
                      fmt::format("TEXT: over USB, emulation {} is sent only what ends with {}; end the text with it",
                                  options.emulation, end));
    }
    JobOptions job;
    job.emulation = options.emulation;
    job.terminator = fmt::format("\\x{:02X}", text.back());
    for (size_t i = 0; i < std::size(kJobKeys); ++i) {
        if (kJobKeys[i].option && kJobKeys[i].option == std::string_view("--plotter-id")) job.details[i] = options.plotterID;
    }
    return job;
}

/// Throws Failure unless all of the text was taken.
void sendToUsb(const SendOptions &options, const UsbDevice &device, const std::string &text) {
    const JobOptions job = jobFor(options, text);
    const TemporaryJob plot(text);
    const PrintPlan plan{.plot = PlotFile(plot.path(), "TEXT"),
                         .jobFile = {},
                         .job = propertyList(jobOf(job)),
                         .rules = {emulationOf(job), terminatorOf(job)},
                         .target = {.kind = Target::Kind::Usb, .path = {}, .line = {}, .usb = device, .drawing = {}}};
    StopOnSignal signals;
    Destination destination(plan.target);
    if (options.telling.verbose) printError("{}", notesOf(device));
    ProgressBar noBar(false);
    PrintReport report = PrintRun(plan, destination).carryOut(noBar);
    destination.settle(report);
    const Verdict verdict = judge(plan, report);
    if (verdict.code != ExitCode::Done) throw Failure(verdict.code, verdict.message);
}

ExitCode tellSent(const SendOptions &options, const std::string &destination, size_t bytes, double seconds) {
    const std::string start = startTextOf(options);
    const Verdict done;
    Json report = jsonOf(done);
    report["destination"] = destination;
    report["emulation"] = options.emulation;
    report["seconds"] = seconds;
    report["sentBytes"] = bytes;
    report["startText"] = start;
    return tell(
        options.telling, done, report,
        fmt::format("sent {} to {}{}\n", counted(static_cast<int64_t>(bytes), "byte"), shown(destination),
                    start.empty() ? "" : fmt::format(", behind the start of emulation {}: {}", options.emulation, start)));
}

ExitCode send(const SendOptions &options) {
    std::string text = unescaped(options.text, "TEXT");
    requirePlotterText(text, "TEXT");
    if (text.empty()) throw Failure(ExitCode::Usage, "TEXT: empty; type what the plotter is to get, such as 'IN;'");
    if (options.port.empty() && !options.toUsb) {
        throw Failure(ExitCode::Usage, "send: say which plotter: --port DEVICE, --usb, or --profile NAME of one with "
                                       "either");
    }
    const UsbChoice choice = parseUsbChoice(options.usbChoice);
    ProgressBar noBar(false);
    ConsoleLines console(options.telling.verbose, noBar);
    const auto start = std::chrono::steady_clock::now();
    std::string destination = options.port;
    if (options.toUsb) {
        const UsbDevice device = chooseUsbDevice(usbDevices(), choice);
        destination = device.id();
        sendToUsb(options, device, text);
    } else {
        sendToPort(options, text);
    }
    return tellSent(options, destination, text.size(),
                    std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count());
}

std::vector<JsonFields> sendFields() {
    return {
        {"exitCode, message, notes", "what became of the text; only the first two when it was not sent"},
        {"destination, emulation, seconds", "where it went, and how"},
        {"sentBytes", "of the text"},
        {"startText", "what the emulation was sent before it; empty for nothing"},
    };
}

} // namespace

void addSendCommand(const Command &app) {
    auto options = std::make_shared<SendOptions>();
    Command command = app.add("send", "Send a short text to a plotter");
    command.explain(
        {"Over USB the text goes as a small job, behind the start of its emulation: 17002 (hpgl) is sent IN; first, which\n"
         "resets the plotter, 17008 (dmpl) its start line, twice, and all others nothing: 17001 is HP-GL, too. A port is\n"
         "sent ;: first for 17008.",
         {{"vectorix send 'IN;SP1;PU0,0;' --port /dev/ttyUSB0", "Takes pen 1 to the origin."},
          {"vectorix send 'PU;SP0;' --usb --emulation 17001", "Puts the pen away, on the only USB plotter."},
          {"vectorix send '\\e.R' --port /dev/ttyUSB0 --baud 2400", "An escape sequence, here of device control."}},
         sendFields()});
    command.option("TEXT", options->text, "Up to 255 ASCII characters; \\n \\r \\t \\e \\xNN \\\\ are understood")
        .required()
        .valueName("");
    addProfileOption(command);
    Option port = addPort(command, options->port);
    Option usb = addUsb(command, options->usbChoice).excludes(port);
    addEmulation(command, options->emulation);
    addPlotterID(command, options->plotterID).needs(usb);
    addLineOptions(command, options->line);
    addTelling(command, options->telling);
    command.whenTyped(
        [options, command, usb] {
            applyProfile(command);
            options->toUsb = usb.isTyped();
            return send(*options);
        },
        &options->telling.json);
}

} // namespace host
