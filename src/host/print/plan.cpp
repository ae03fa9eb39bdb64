#include "host/print/plan.h"

#include "host/converters/converters.h"
#include "host/job/job_reader.h"
#include "host/job/job_writer.h"
#include "host/plugin/usb_target.h"
#include "host/terminal/text.h"

#include <algorithm>
#include <fmt/format.h>

namespace host {

namespace {

constexpr size_t kMostSheets = 100; // each has files open

/// What the plug-in will make of a job file, and what it will leave out of it.
void readRules(const std::string &file, PlotRules &rules, std::vector<std::string> &notes) {
    requireInputFile(file, "job file");
    const std::vector<JobLine> job = readJob(file);
    rules.emulation = static_cast<int32_t>(numberOf(job, kEmulationKey, 0));
    if (const JobLine *terminator = fitting(job, kTerminatorKey))
        rules.terminator = std::get<std::string>(*terminator->value);
    for (const JobFinding &finding : checkJob(job)) {
        if (finding.isError)
            notes.push_back(fmt::format("{0}: {1}; 'vectorix job check {0}' says more", shown(file), finding.text));
    }
}

Target targetOf(const PrintOptions &options) {
    auto requireOutput = [&](const char *option, const std::string &file) {
        for (const std::string &plot : options.plots)
            requireOtherFile(option, file, plot);
        requireOtherFile(option, file, options.jobFile);
    };
    Target target;
    target.line = options.line;
    target.drawing = options.drawing;
    if (options.toUsb) {
        target.kind = Target::Kind::Usb;
        target.usb = chooseUsbDevice(usbDevices(), parseUsbChoice(options.usbChoice));
    } else if (!options.port.empty()) {
        target.path = options.port;
    } else if (!options.picture.empty()) {
        requireOutput("--virtual", options.picture);
        target.kind = Target::Kind::Picture;
        target.path = options.picture;
    } else {
        requireOutput("--capture", options.capture);
        target.kind = Target::Kind::File;
        target.path = options.capture;
    }
    return target;
}

/// Of all parts together.
Examination examine(const std::vector<PlotPart> &parts, const PlotRules &rules) {
    Examination all;
    for (const PlotPart &part : parts) {
        const Examination one = examine(part.file, rules);
        all.fileBytes += one.fileBytes;
        all.pieces += one.pieces;
        all.withheldBytes += one.withheldBytes;
        all.innerPaddingBytes += one.innerPaddingBytes;
        all.endPaddingBytes += one.endPaddingBytes;
        if (all.flaw == Flaw::None) all.flaw = one.flaw;
    }
    return all;
}

/// What stands between the plot and its beginning or its pens: cut into jobs of their own. Throws Failure.
void cutIntoParts(const PrintOptions &options, PrintPlan &plan) {
    const bool isWhole = options.start.from.empty() && !options.start.isResumed;
    const ReadAs as{emulations::of(plan.rules.emulation).language, plan.hardClip};
    const int pensHeld = options.changesPens && as.language ? options.ready.conversion.pensHeld : 0;
    if (isWhole && pensHeld == 0) return;
    if (!as.language) {
        throw Failure(ExitCode::Usage, fmt::format("--emulation: {} is a language that cannot be followed; leave out --from "
                                                   "and --resume",
                                                   plan.rules.emulation));
    }
    const language::Place start = startOf(plan.plot, as, options.start);
    plan.begin = static_cast<int64_t>(start.offset);
    const strokes::PenColours &colours = plan.ready.conversion ? plan.ready.conversion->colours : strokes::PenColours();
    plan.parts = partsOf(plan.plot, as, start, pensHeld, colours, plan.rules);
    if (!plan.parts.empty()) plan.examination = examine(plan.parts, plan.rules);
    if (isWhole) return;
    plan.notes.push_back(
        fmt::format("begins at byte {} of {}, {} in; what the plotter still held when it stopped is not known: "
                    "--overlap MM draws so much once more, --from begins elsewhere",
                    grouped(plan.begin), grouped(plan.plot.size()), counted(static_cast<int64_t>(start.strokes), "stroke")));
}

/// What becomes a sheet.
struct Given {
    PlotFile file;
    std::optional<int> page; ///< of a PDF document
};

/// Leaves it to the conversion to refuse a page beyond the last one, and ends when there is a sheet too many.
void addDocument(const PlotFile &file, const std::vector<PageRange> &ranges, std::vector<Given> &all) {
    for (const auto &[first, last] : ranges) {
        const int end = last ? *last : std::max(first, pagesOf(file));
        for (int page = first; page <= end && all.size() <= kMostSheets; ++page)
            all.push_back({file, page});
    }
}

std::vector<Given> givenBy(const PrintOptions &options) {
    if (std::ranges::count(options.plots, "-") > 1)
        throw Failure(ExitCode::Usage,
                      "-: standard input can be read once; name files for the other plots, or give --copies");
    const std::vector<PageRange> ranges = typedPages(options.pages);
    std::vector<Given> all;
    for (const std::string &name : options.plots) {
        if (all.size() > kMostSheets) break;
        const PlotFile file(name);
        if (natureOf(file, {}).kind == FileKind::Pdf)
            addDocument(file, ranges, all);
        else
            all.push_back({file, {}});
    }
    if (all.size() <= kMostSheets) return all;
    throw Failure(ExitCode::Usage, fmt::format("{}: more than {} sheets; print it in parts, with --page",
                                               shown(all.back().file.path()), kMostSheets));
}

/// Throws Failure (usage) for what is only possible with one sheet.
void requireFew(size_t sheets, const PrintOptions &options) {
    const bool begins = !options.start.from.empty() || options.start.isResumed;
    if (sheets == 1 || (!begins && options.picture.empty())) return;
    const char *what = !options.picture.empty()  ? "--virtual: a picture shows one sheet"
                       : options.start.isResumed ? "--resume: one sheet is taken up again"
                                                 : "--from: one sheet is begun within";
    throw Failure(ExitCode::Usage,
                  fmt::format("{}, and these are {}; print one plot alone, of a PDF document with --page", what, sheets));
}

PrintPlan planOf(PlotFile given, const PrintOptions &options) {
    std::string job;
    PlotRules rules;
    std::vector<std::string> notes;
    if (options.jobFile.empty()) {
        JobOptions typed = options.job;
        if (typed.emulation == 0 && usualRules(given).emulation == emulations::kDmpl) typed.emulation = emulations::kDmpl;
        job = propertyList(jobOf(typed));
        rules = {emulationOf(typed), terminatorOf(typed)};
    } else {
        readRules(options.jobFile, rules, notes);
    }
    ReadyOptions wanted = options.ready;
    wanted.isForced = options.force;
    const PlotterTexts texts = bytesOf(options.texts);
    wanted.texts = {texts.before, texts.after};
    auto [plot, ready] = readyPlot(std::move(given), wanted, options.drawing, rules);
    Examination examination = examine(plot, rules);
    if (!options.force) requireFitPlot(examination, plot, rules);
    for (std::string &note : readyNotes(ready))
        notes.push_back(std::move(note));
    PrintPlan plan{.plot = std::move(plot),
                   .ready = std::move(ready),
                   .jobFile = options.jobFile,
                   .job = std::move(job),
                   .rules = std::move(rules),
                   .examination = std::move(examination),
                   .target = targetOf(options),
                   .keepGoing = options.keepGoing,
                   .notes = std::move(notes),
                   .hardClip = sheetOf(options.drawing).hardClip};
    const bool hasArea = !options.drawing.area.empty();
    if (hasArea || takesItsTime(plan.target)) {
        const double secondsPerByte = plan.target.kind == Target::Kind::Port ? secondsFor(1, plan.target.line) : 0;
        plan.estimate = estimateOf(plan.plot, std::nullopt, plan.hardClip, secondsPerByte);
    }
    if (hasArea && !options.force) requireWithinArea(plan.plot.path(), plan.estimate->findings, options.drawing);
    if (!takesItsTime(plan.target)) plan.estimate.reset();
    cutIntoParts(options, plan);
    return plan;
}

} // namespace

bool takesItsTime(const Target &target) { return target.kind == Target::Kind::Port || target.kind == Target::Kind::Usb; }

int64_t PrintPlan::bytes() const {
    int64_t bytes = parts.empty() ? plot.size() : 0;
    for (const PlotPart &part : parts)
        bytes += part.file.size();
    return bytes;
}

std::vector<PrintPlan> plansOf(const PrintOptions &options) {
    const std::vector<Given> given = givenBy(options);
    requireFew(given.size() * static_cast<size_t>(options.copies), options);
    std::vector<PrintPlan> plans;
    PrintOptions own = options;
    strokes::PenColours &taken = own.ready.conversion.taken; // the same pens stand in the plotter for all sheets
    for (const Given &one : given) {
        own.ready.conversion.page = one.page.value_or(1);
        plans.push_back(planOf(one.file, own));
        plans.back().page = one.page;
        if (const auto &made = plans.back().ready.conversion) taken.insert(made->colours.begin(), made->colours.end());
    }
    return plans;
}

} // namespace host
