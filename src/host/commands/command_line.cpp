#include "host/commands/command_line.h"

#include "host/commands/commands.h"
#include "host/terminal/json.h"
#include "host/terminal/output.h"
#include "host/terminal/text.h"

namespace host {

namespace {

constexpr void (*kCommands[])(const Command &) = {
    addPrintCommand,    addPreviewCommand, addConvertCommand, addSimulateCommand, addSendCommand,   addJobCommand,
    addPlottersCommand, addPortsCommand,   addLimitsCommand,  addDoctorCommand,   addProfileCommand};

Manual overview() {
    return {"'vectorix COMMAND --help' tells more of a command.",
            {{"vectorix doctor", "What stands in the way to a plotter."},
             {"vectorix ports", "Which serial ports there are."},
             {"vectorix plotters", "Which plotters there are on USB."},
             {"vectorix print drawing.plt --port /dev/ttyUSB0", "Prints on a serial port."},
             {"vectorix print drawing.plt --usb", "Prints to the only plotter on USB."},
             {"vectorix preview drawing.plt -o drawing.svg", "Draws what would be printed."},
             {"vectorix convert drawing.plt -o small.plt --sheet a4 --fit",
              "Makes another plot of it: placed, ordered, cut well."},
             {"vectorix simulate --render drawing.pdf", "Plays a plotter for other programs."}},
            {}};
}

ExitCode complain(const Failure &failure, bool wantsJson) {
    if (wantsJson) {
        const Json report = {{"exitCode", static_cast<int>(failure.code())}, {"message", failure.what()}};
        printOut("{}\n", report.line());
    }
    printFailure(failure.what());
    return failure.code();
}

void addColour(const Command &command) {
    command.option("--color", chooseColour, "Colour for people: auto means on terminals (auto)")
        .oneOf({"auto", "always", "never"})
        .valueName("auto|always|never");
    for (const Command &below : command.below())
        addColour(below);
}

} // namespace

std::unique_ptr<CommandLine> declaredCommandLine() {
    auto line =
        std::make_unique<CommandLine>("vectorix", "Prints plot files on pen plotters and cutters.", VECTORIX_VERSION);
    Command root = line->root();
    root.requireSubcommand();
    root.explain(overview());
    for (auto add : kCommands)
        add(root);
    addColour(root);
    return line;
}

int runCommandLine(int count, char **words) {
    holdStandardStreams();
    std::unique_ptr<CommandLine> line = declaredCommandLine();
    ExitCode code = line->parse(count, words);
    if (line->run() && code == ExitCode::Done) {
        try {
            code = line->run()();
        } catch (const Failure &failure) {
            code = complain(failure, line->wantsJson());
        } catch (const std::exception &error) {
            code = complain(Failure(ExitCode::Failed, error.what()), line->wantsJson());
        }
    }
    return static_cast<int>(afterOutput(code));
}

} // namespace host
