#include "printer_app/options/command_line.h"

namespace printer_app {

namespace {

constexpr const char *kAbout =
    "Makes a print queue of each profile of the command 'vectorix', for this computer or for a house: print dialogs, CUPS "
    "and "
    "telephones see it without a driver. A queue takes PDF, SVG and plot files (HP-GL, DM/PL). A job waits until somebody "
    "says on "
    "the page, http://localhost:8631/, that paper is in; there it is watched, paused, stopped and plotted again.\n\n"
    "Queues are made at the start: start it again after a change to a profile. 'confirm = false' in a profile lets jobs "
    "plot "
    "without asking, as for rolls.\n\n"
    "Without --share, nobody but this computer reaches any of it. With --share-page the page asks from elsewhere for the "
    "password "
    "that --set-password keeps, and over TLS only.";

} // namespace

std::unique_ptr<host::CommandLine> declaredCommandLine(Options &options, std::function<host::ExitCode()> run) {
    auto line =
        std::make_unique<host::CommandLine>("vectorix-printer-app", "Makes print queues of plotters.", VECTORIX_VERSION);
    host::Command root = line->root();
    root.option("--port", options.port, "TCP port of queues and page (8631)").valueName("N").between(1, 65535);
    root.flag("--share", options.isShared, "Let the network print, and announce the queues there");
    root.flag("--share-page", options.pageIsShared, "Let the network see the page, with the password and over TLS")
        .needs(*root.find("--share"));
    root.flag("--set-password", options.setsPassword, "Read the page's password from standard input, keep it, and end");
    root.option("--state", options.state,
                "Folder of jobs and queues ($STATE_DIRECTORY, or vectorix/printer-app below $XDG_STATE_HOME)")
        .valueName("FOLDER");
    root.option("--max-upload", options.largestUpload, "Largest document that is taken, in MB (100)")
        .valueName("MB")
        .between(1, 100'000);
    root.option("--vectorix", options.command, "The command that plots (vectorix)").valueName("PATH");
    root.flag("-v,--verbose", options.isVerbose, "Say on standard error what is done");
    root.explain({kAbout,
                  {{"vectorix-printer-app", "For this computer."},
                   {"vectorix-printer-app --share", "For the network."},
                   {"vectorix-printer-app --set-password", "Asks for the page's password."}},
                  {}});
    root.whenTyped(std::move(run));
    return line;
}

} // namespace printer_app
