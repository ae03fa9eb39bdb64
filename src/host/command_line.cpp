#include "host/command_line.h"

#include "host/commands.h"
#include "host/help_format.h"
#include "host/output.h"
#include "host/text.h"
#include "host/verdict.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>
#include <sstream>

namespace host {

namespace {

constexpr void (*kCommands[])(CLI::App &, Typed &) = {addPrintCommand, addPreviewCommand, addSimulateCommand,
                                                      addSendCommand,  addJobCommand,     addPlottersCommand,
                                                      addPortsCommand, addLimitsCommand,  addDoctorCommand,
                                                      addProfileCommand};

const char *overview() {
    return "Examples:\n"
           "  vectorix print drawing.plt --port /dev/ttyUSB0\n"
           "  vectorix print drawing.plt -p house\n"
           "  vectorix print drawing.plt --job roll.plist --port /dev/ttyUSB0 --handshake hardware\n"
           "  vectorix print drawing.plt --usb\n"
           "  vectorix print drawing.plt --capture drawing.out\n"
           "  vectorix print drawing.plt --virtual drawing.png\n"
           "  vectorix preview drawing.plt -o drawing.svg --sheet a3\n"
           "  vectorix simulate --render drawing.pdf\n"
           "  vectorix ports\n"
           "  vectorix doctor --port /dev/ttyUSB0\n"
           "  vectorix limits --port /dev/ttyUSB0\n"
           "  vectorix send 'IN;SP1;' --port /dev/ttyUSB0\n"
           "  vectorix job write roll.plist --emulation 17008 --terminator , --tool 'P1,'\n"
           "\n"
           "'vectorix COMMAND --help' tells more.\n";
}

ExitCode complain(const Failure &failure, bool wantsJson) {
    if (wantsJson) printOut("{}\n", json(failure));
    printError("vectorix: {}\n", failure.what());
    return failure.code();
}

/// The command whose help goes with a mistake.
std::string helpFor(const CLI::App &app) {
    std::string words = app.get_name();
    for (const CLI::App *at = &app; !at->get_subcommands().empty(); words += " " + at->get_name())
        at = at->get_subcommands().front();
    return words + " --help";
}

ExitCode parse(CLI::App &app, int count, char **words) {
    try {
        app.parse(count, words);
        return ExitCode::Done;
    } catch (const CLI::Success &request) { // help or version
        std::ostringstream text;
        app.exit(request, text, text);
        writeOut(text.str());
        return ExitCode::Done;
    } catch (const CLI::ParseError &mistake) {
        bool isCommandUnknown = app.get_subcommands().empty() && count > 1 && words[1][0] != '-';
        std::string text = isCommandUnknown ? fmt::format("{}: no such command", words[1]) : lowered(mistake.what());
        printError("vectorix: {}\nTry '{}'.\n", shown(text), helpFor(app));
        return ExitCode::Usage;
    }
}

} // namespace

int runCommandLine(int count, char **words) {
    holdStandardStreams();
    CLI::App app("Prints plot files on pen plotters and cutters.", "vectorix");
    app.set_version_flag("--version", "vectorix " VECTORIX_VERSION);
    app.footer(fmt::format("{}\n{}", overview(), exitCodeHelp()));
    app.formatter(helpFormat());
    app.require_subcommand(1);
    Typed typed;
    for (auto add : kCommands)
        add(app, typed);

    ExitCode code = parse(app, count, words);
    if (typed.run && code == ExitCode::Done) {
        try {
            code = typed.run();
        } catch (const Failure &failure) {
            code = complain(failure, typed.wantsJson);
        } catch (const std::exception &error) {
            code = complain(Failure(ExitCode::Failed, error.what()), typed.wantsJson);
        }
    }
    return static_cast<int>(afterOutput(code));
}

} // namespace host
