// vectorix send: a few commands to a plotter, as they are typed.
#include "host/commands.h"
#include "host/console_lines.h"
#include "host/job_options.h"
#include "host/line_settings.h"
#include "host/output.h"
#include "host/plotter_options.h"
#include "host/port_lock.h"
#include "host/profile_option.h"
#include "host/record.h"
#include "host/stop_signals.h"
#include "host/text.h"

#include <CLI/CLI.hpp>
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
    int emulation = 17002;
    LineSettings line;
    bool verbose = false;
    bool quiet = false;
};

/// The service leaves the port open. Waits until the plotter has taken all of it, unless the user has had enough; false when
/// it has not.
bool closePort(int fd) {
    bool isTaken = !StopOnSignal::came() && tcdrain(fd) == 0;
    if (!isTaken) tcflush(fd, TCOFLUSH);
    close(fd);
    return isTaken;
}

ExitCode send(const SendOptions &options) {
    std::string text = unescaped(options.text, "TEXT");
    requirePlotterText(text, "TEXT");
    if (text.empty()) throw Failure(ExitCode::Usage, "TEXT: empty; type what the plotter is to get, such as 'IN;'");
    if (options.port.empty())
        throw Failure(ExitCode::Usage, "send: say which plotter: --port DEVICE, or --profile NAME of one with a port");
    PortLock lock(options.port);

    ProgressBar noBar(false);
    ConsoleLines console(options.verbose, noBar);
    StopOnSignal signals;
    HostString portPath(options.port, "--port");
    ORB_ServiceRecord record = emptyRecord(kORB_ServiceOpenAndWrite);
    applyLineSettings(options.line, record);
    record.ORB_EmulationID = options.emulation;
    record.ORB_CFSTR_bsdIn_VectorixDevice = portPath.get();
    memcpy(record.ORB_writeBuffer, text.data(), text.size()); // the record was zeroed: a NUL follows
    record = ORB_getVectorixCS2(record);
    bool wasOpened = record.ORB_portFD > 0;
    bool isTaken = wasOpened && closePort(record.ORB_portFD);
    std::string status = textOf(record.ORB_CFSTR_message);
    releaseStrings(record);

    if (StopOnSignal::came()) {
        lock.discardOutput();
        throw Failure(ExitCode::Stopped, "stopped: the text may have been sent in part");
    }
    if (record.ORB_errorID != kORB_NoError || !wasOpened) {
        console.show();
        if (options.verbose) printError("plug-in: {}\n", shown(status));
        bool refused = record.ORB_errorID == kORB_ErrorSetAttributes;
        throw Failure(
            refused ? ExitCode::Failed : ExitCode::Lost,
            fmt::format("{}: {}; {}", shown(options.port), errorText(record.ORB_errorID),
                        refused ? "try other line settings, such as --bits 8" : "check the cable, then try again"));
    }
    if (!isTaken || lock.isGone()) {
        throw Failure(ExitCode::Lost, fmt::format("{}: the device was lost, and the text may not have reached it; check the "
                                                  "cable, then try again",
                                                  shown(options.port)));
    }
    if (!options.quiet) {
        printOut("sent {} to {}\n", counted(static_cast<int64_t>(text.size()), "byte"), shown(options.port));
    }
    return ExitCode::Done;
}

} // namespace

void addSendCommand(CLI::App &app, Typed &typed) {
    auto options = std::make_shared<SendOptions>();
    CLI::App *command = app.add_subcommand("send", "Send a short text to a plotter");
    explain(typed, *command,
            {"",
             {{"vectorix send 'IN;SP1;PU0,0;' --port /dev/ttyUSB0", "Takes pen 1 to the origin."},
              {"vectorix send '\\e.R' --port /dev/ttyUSB0 --baud 2400", "An escape sequence, here of device control."}},
             {}});
    command->add_option("TEXT", options->text, "Up to 255 ASCII characters; \\n \\r \\t \\e \\xNN \\\\ are understood")
        ->required()
        ->type_name("");
    addProfileOption(*command);
    addPort(*command, options->port);
    addEmulation(*command, options->emulation);
    addLineOptions(*command, options->line);
    command->add_flag("-v,--verbose", options->verbose, "Show what the plug-in says");
    command->add_flag("-q,--quiet", options->quiet, "Say nothing but errors");
    command->callback([options, command, &typed] {
        typed.run = [options, command] {
            applyProfile(*command);
            return send(*options);
        };
    });
}

} // namespace host
