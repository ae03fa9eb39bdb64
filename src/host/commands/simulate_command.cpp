// vectorix simulate: a plotter in software that any program can print to.
#include "emulations/emulations.h"
#include "host/commands/commands.h"
#include "host/job/job_options.h"
#include "host/options/apply_profile.h"
#include "host/picture/drawing.h"
#include "host/picture/plot_findings.h"
#include "host/plugin/stop_signals.h"
#include "host/terminal/output.h"
#include "host/terminal/telling.h"
#include "host/terminal/text.h"
#include "virtual_plotter/face/line_loop.h"

#include <cerrno>
#include <charconv>
#include <filesystem>
#include <fmt/format.h>
#include <memory>
#include <sys/stat.h>
#include <unistd.h>

namespace host {

using virtual_plotter::Fault;

namespace {

struct SimulateOptions {
    std::string picture;
    DrawingOptions drawing;
    int emulation = emulations::kHpgl;
    std::string pace = "full";
    size_t bufferBytes = 1024;
    std::string fault;
    std::string link;
    Telling telling;
    bool once = false;
    double linger = 1;
};

constexpr struct {
    const char *name;
    Fault fault;
} kFaults[] = {{"hang", Fault::Hang}, {"hangup", Fault::HangUp}, {"rubbish", Fault::Rubbish}, {"xoff", Fault::Xoff}};

template <class Number> bool readWhole(std::string_view text, Number &number) {
    auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    return error == std::errc() && end == text.data() + text.size();
}

/// KIND or KIND:AFTER_BYTES.
bool readFault(std::string_view text, Fault &fault, uint64_t &after) {
    size_t colon = text.find(':');
    after = 0;
    if (colon != std::string_view::npos && !readWhole(text.substr(colon + 1), after)) return false;
    for (const auto &row : kFaults) {
        if (text.substr(0, colon) != row.name) continue;
        fault = row.fault;
        return true;
    }
    return false;
}

std::string checkFault(const std::string &text) {
    Fault fault;
    uint64_t after;
    return readFault(text, fault, after)
               ? std::string()
               : fmt::format("unknown fault: {}; use hang, hangup, rubbish or xoff, each with :BYTES behind it for later",
                             text);
}

/// Bits that a byte is on the line: a start bit, eight of data, a stop bit.
constexpr int kBitsPerByte = 10;

std::string checkPace(const std::string &text) {
    int rate = 0;
    if (text == "full" || (readWhole(text, rate) && rate >= 50 && rate <= 1'000'000)) return {};
    return fmt::format("unknown pace: {}; use full, or a rate in bit/s from 50 to 1000000", text);
}

virtual_plotter::PlotterOptions plotterOptions(const SimulateOptions &options) {
    virtual_plotter::PlotterOptions result;
    virtual_plotter::setEmulation(result, options.emulation);
    if (auto language = languageOf(options.drawing)) result.language = language;
    result.bufferBytes = options.bufferBytes;
    int rate = 0;
    if (readWhole(options.pace, rate))
        result.perByte = std::chrono::nanoseconds(kBitsPerByte * int64_t{1'000'000'000} / rate);
    if (!options.fault.empty()) readFault(options.fault, result.fault, result.faultAfter);
    return result;
}

/// True for a link that a killed run left: to a pseudo-terminal that is gone, or that is ours by now.
bool isLeftover(const std::string &link, const std::string &port) {
    std::error_code error;
    const std::string target = std::filesystem::read_symlink(link, error);
    constexpr std::string_view kFolder = "/dev/pts/";
    if (error || target.rfind(kFolder, 0) != 0) return false;
    return target == port || (!std::filesystem::exists(target, error) && !error);
}

/// A second name for the port, for as long as it lives.
class PortLink {
public:
    /// Throws Failure. A link that a killed run left is replaced; anything else is not.
    PortLink(const std::string &path, const std::string &port) : path_(path), port_(port) {
        if (path.empty()) return;
        if (isLeftover(path, port)) unlink(path.c_str());
        if (symlink(port.c_str(), path.c_str()) == 0) {
            lstat(path.c_str(), &made_);
            return;
        }
        if (errno != EEXIST) throw outputFailure(path, errno);
        throw Failure(
            ExitCode::Usage,
            fmt::format("--link: {} is there already, and is not a link that 'vectorix simulate' left; remove it, or "
                        "choose another name",
                        shown(path)));
    }
    PortLink(const PortLink &) = delete;
    PortLink &operator=(const PortLink &) = delete;
    /// What stands under the name by now may be somebody else's.
    ~PortLink() {
        struct stat now;
        std::error_code ignored;
        if (path_.empty() || lstat(path_.c_str(), &now) != 0) return;
        const bool isOurs = now.st_ino == made_.st_ino && now.st_dev == made_.st_dev;
        if (isOurs && std::filesystem::read_symlink(path_, ignored) == port_) unlink(path_.c_str());
    }

private:
    std::string path_, port_;
    struct stat made_ {};
};

ExitCode tellSimulation(const SimulateOptions &options, const virtual_plotter::VirtualPlotter &plotter,
                        const Drawing &drawing) {
    Verdict verdict{ExitCode::Done, "", findingNotes(plotter.plot(), drawing.sheet())};
    if (!drawing.note().empty()) verdict.notes.push_back(shown(drawing.note()));
    if (plotter.hasHungUp()) verdict.notes.insert(verdict.notes.begin(), "hung up, as it was told to");
    Json report = jsonOf(verdict);
    report["picture"] = options.picture;
    report["heardBytes"] = plotter.heardBytes();
    addFindings(report, plotter.plot().language(), plotter.plot().reader()->findings());
    return tell(options.telling, verdict, report,
                fmt::format("heard {}\n{}{}", counted(static_cast<int64_t>(plotter.heardBytes()), "byte"),
                            findingsText(plotter.plot().language(), plotter.plot().reader()->findings()),
                            options.picture.empty() ? "" : fmt::format("drew {}\n", shown(options.picture))));
}

ExitCode simulate(const SimulateOptions &options) {
    Drawing drawing(options.drawing, options.picture);
    virtual_plotter::VirtualPlotter plotter(plotterOptions(options), drawing.sink(), drawing.sheet().hardClip);
    virtual_plotter::PtyLine line;
    if (int error = line.open()) throw fileFailure("pseudo-terminal", error);
    {
        StopOnSignal signals;
        PortLink link(options.link, line.path());
        printOut("{}\n", options.telling.json ? Json{{"port", line.path()}}.line() : line.path());
        flushOut();
        virtual_plotter::LineRules rules{.isStopped = StopOnSignal::came, .onceWithin = {}};
        if (options.once) rules.onceWithin = std::chrono::milliseconds(static_cast<int64_t>(options.linger * 1000));
        playOn(line, plotter, rules);
    }
    plotter.finish();
    drawing.finish();
    return tellSimulation(options, plotter, drawing);
}

constexpr const char *kAbout =
    "Says its port's path on the first line, then plays until Ctrl-C or SIGTERM ends it, and draws what has come.\n"
    "\n"
    "Faults, at once or after so many bytes: hang takes nothing any more; xoff holds its host with XOFF for good;\n"
    " hangup takes the port away and ends; rubbish answers with random bytes, and says some unasked.\n"
    "\n"
    "The port is a pseudo-terminal: it keeps any rate, XON/XOFF and stop bits, but always 8 bits without parity, and has "
    "no\n"
    "handshake lines. It takes some 20 kB at once into the system's own buffer, whatever the rate. A pace is that of the\n"
    "plotter behind it: a program that ignores XOFF, or sends less than that, is done long before the plotter is.";

} // namespace

void addSimulateCommand(const Command &app) {
    auto options = std::make_shared<SimulateOptions>();
    Command command = app.add("simulate", "Play a plotter on a serial port in software");
    std::vector<JsonFields> fields = findingsFields();
    fields.insert(fields.begin(), {{"port", "alone, on a first line of its own"},
                                   {"exitCode, message, notes", "of the report, on the last line"},
                                   {"heardBytes, picture", "that came, and what was drawn of them"}});
    command.explain(
        {kAbout,
         {{"vectorix simulate --render drawing.pdf --link /tmp/plotter", "Draws what is printed to /tmp/plotter."},
          {"vectorix simulate --once --pace 9600 --buffer 1024", "As slow as a real one, for one program."},
          {"vectorix simulate --fault hangup:2000", "Goes away after 2000 bytes."}},
         fields});
    command.option("--render", options->picture, "Picture to write at the end: .svg, .png or .pdf").valueName("FILE");
    addProfileOption(command);
    addDrawingOptions(command, options->drawing);
    addLanguage(command, options->drawing);
    addEmulation(command, options->emulation);
    command.option("--pace", options->pace, "Rate at which it works its buffer off, in bit/s (full)")
        .check(checkPace)
        .valueName("RATE|full");
    command.option("--buffer", options->bufferBytes, "Size of its buffer (1024)").between(1, 1'000'000).valueName("BYTES");
    command.option("--fault", options->fault, "hang, hangup, rubbish or xoff, at once or after so many bytes")
        .check(checkFault)
        .valueName("KIND[:BYTES]");
    command.option("--link", options->link, "Another name for the port, while it plays").valueName("PATH");
    addTelling(command, options->telling,
               {.verbose = nullptr,
                .quiet = "Say nothing but the port and errors",
                .json = "Port and report as JSON objects, a line each"});
    Option once = command.flag("--once", options->once, "End when the program that printed has closed the port");
    command.option("--linger", options->linger, "Wait so long for another program first (1)")
        .within(0, 3600)
        .valueName("SECONDS")
        .needs(once);
    command.whenTyped(
        [options, command] {
            applyProfile(command);
            return simulate(*options);
        },
        &options->telling.json);
}

} // namespace host
