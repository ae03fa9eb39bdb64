#include "host/command_line.h"

#include "host/commands.h"
#include "host/help_format.h"
#include "host/text.h"
#include "host/verdict.h"

#include <CLI/CLI.hpp>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <fmt/format.h>

namespace host {

namespace {

constexpr void (*kCommands[])(CLI::App &, Typed &) = {addPrintCommand, addPreviewCommand, addSimulateCommand,
                                                      addSendCommand,  addJobCommand,     addPlottersCommand,
                                                      addPortsCommand, addLimitsCommand,  addDoctorCommand};

const char *overview() {
    return "Examples:\n"
           "  vectorix print drawing.plt --port /dev/ttyUSB0\n"
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

int complain(const Failure &failure, bool wantsJson) {
    if (wantsJson) fmt::print("{}\n", json(failure));
    fmt::print(stderr, "vectorix: {}\n", failure.what());
    return static_cast<int>(failure.code());
}

/// The command whose help goes with a mistake.
std::string helpFor(const CLI::App &app) {
    std::string words = app.get_name();
    for (const CLI::App *at = &app; !at->get_subcommands().empty(); words += " " + at->get_name())
        at = at->get_subcommands().front();
    return words + " --help";
}

int parse(CLI::App &app, int count, char **words) {
    try {
        app.parse(count, words);
        return 0;
    } catch (const CLI::Success &request) { // help or version
        app.exit(request);
        return 0;
    } catch (const CLI::ParseError &mistake) {
        bool isCommandUnknown = app.get_subcommands().empty() && count > 1 && words[1][0] != '-';
        std::string text = isCommandUnknown ? fmt::format("{}: no such command", words[1]) : lowered(mistake.what());
        fmt::print(stderr, "vectorix: {}\nTry '{}'.\n", shown(text), helpFor(app));
        return static_cast<int>(ExitCode::Usage);
    }
}

} // namespace

int runCommandLine(int count, char **words) {
    signal(SIGPIPE, SIG_IGN); // a reader that leaves must not leave the port open
    CLI::App app("Prints plot files on pen plotters and cutters.", "vectorix");
    app.set_version_flag("--version", "vectorix " VECTORIX_VERSION);
    app.footer(fmt::format("{}\n{}", overview(), exitCodeHelp()));
    app.formatter(helpFormat());
    app.require_subcommand(1);
    Typed typed;
    for (auto add : kCommands)
        add(app, typed);

    int code = parse(app, count, words);
    if (typed.run && code == 0) {
        try {
            code = static_cast<int>(typed.run());
        } catch (const Failure &failure) {
            code = complain(failure, typed.wantsJson);
        } catch (const std::exception &error) {
            code = complain(Failure(ExitCode::Failed, error.what()), typed.wantsJson);
        }
    }
    if (fflush(stdout) != 0 && errno != EPIPE && code == 0) {
        fmt::print(stderr, "vectorix: standard output: {}\n", lowered(strerror(errno)));
        code = static_cast<int>(ExitCode::Failed);
    }
    return code;
}

} // namespace host
