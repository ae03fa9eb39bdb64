#include "host/command_line.h"

#include "host/commands.h"
#include "host/help_format.h"
#include "host/near_miss.h"
#include "host/output.h"
#include "host/text.h"
#include "host/verdict.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>
#include <sstream>

namespace host {

namespace {

constexpr void (*kCommands[])(CLI::App &, Typed &) = {
    addPrintCommand,    addPreviewCommand, addSimulateCommand, addSendCommand,   addJobCommand,
    addPlottersCommand, addPortsCommand,   addLimitsCommand,   addDoctorCommand, addProfileCommand};

Manual overview() {
    return {"'vectorix COMMAND --help' tells more of a command.",
            {{"vectorix doctor", "What stands in the way to a plotter."},
             {"vectorix ports", "Which serial ports there are."},
             {"vectorix plotters", "Which plotters there are on USB."},
             {"vectorix print drawing.plt --port /dev/ttyUSB0", "Prints on a serial port."},
             {"vectorix print drawing.plt --usb", "Prints to the only plotter on USB."},
             {"vectorix preview drawing.plt -o drawing.svg", "Draws what would be printed."},
             {"vectorix simulate --render drawing.pdf", "Plays a plotter for other programs."}},
            {}};
}

ExitCode complain(const Failure &failure, bool wantsJson) {
    if (wantsJson) printOut("{}\n", json(failure));
    printFailure(failure.what());
    return failure.code();
}

void addColour(CLI::App &app) {
    app.add_option_function<std::string>("--color", chooseColour, "Colour for people: auto means on terminals (auto)")
        ->check(CLI::IsMember({"auto", "always", "never"}).description(""))
        ->type_name("auto|always|never");
    for (CLI::App *command : app.get_subcommands({}))
        addColour(*command);
}

/// The command that was typed, as far as it is known.
const CLI::App &typedCommand(const CLI::App &app) {
    const CLI::App *at = &app;
    while (!at->get_subcommands().empty())
        at = at->get_subcommands().front();
    return *at;
}

std::vector<std::string> optionsOf(const CLI::App &command) {
    std::vector<std::string> names;
    for (const CLI::Option *option : command.get_options()) {
        for (const std::string &name : option->get_lnames())
            names.push_back("--" + name);
    }
    return names;
}

std::vector<std::string> commandsOf(const CLI::App &command) {
    std::vector<std::string> names;
    for (const CLI::App *known : command.get_subcommands({}))
        names.push_back(known->get_name());
    return names;
}

/// What is wrong with what was typed: a word that nobody knows explains other mistakes, and goes first.
std::string mistakeText(const CLI::App &app, const CLI::ParseError &mistake) {
    const CLI::App &command = typedCommand(app);
    std::vector<std::string> commands = commandsOf(command);
    for (const std::string &word : app.remaining(true)) {
        bool isOption = word[0] == '-' && word.size() > 1;
        if (!isOption && commands.empty()) continue;
        std::string name = isOption ? word.substr(0, word.find('=')) : word;
        std::string meant = nearMiss(name, isOption ? optionsOf(command) : commands);
        return fmt::format("{}: no such {}{}", shown(name), isOption ? "option" : "command",
                           meant.empty() ? "" : fmt::format("; did you mean '{}'?", meant));
    }
    return shown(lowered(mistake.what()));
}

ExitCode parse(CLI::App &app, int count, char **words) {
    try {
        app.parse(count, words);
        return ExitCode::Done;
    } catch (const CLI::Success &request) { // help or version
        std::ostringstream text;
        app.exit(request, text, text);
        printLines(text.str());
        return ExitCode::Done;
    } catch (const CLI::ParseError &mistake) {
        printFailure(mistakeText(app, mistake));
        printError("Try '{} --help'.\n", fullName(typedCommand(app)));
        return ExitCode::Usage;
    }
}

} // namespace

std::string fullName(const CLI::App &command) {
    return command.get_parent() ? fullName(*command.get_parent()) + " " + command.get_name() : command.get_name();
}

void declareCommandLine(CLI::App &app, Typed &typed) {
    app.name("vectorix");
    app.description("Prints plot files on pen plotters and cutters.");
    app.set_version_flag("--version", "vectorix " VECTORIX_VERSION);
    app.formatter(helpFormat());
    app.require_subcommand(1);
    explain(typed, app, overview());
    for (auto add : kCommands)
        add(app, typed);
    addColour(app);
}

int runCommandLine(int count, char **words) {
    holdStandardStreams();
    CLI::App app;
    Typed typed;
    declareCommandLine(app, typed);
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
