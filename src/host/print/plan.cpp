#include "host/print/plan.h"

#include "host/job/job_reader.h"
#include "host/job/job_writer.h"
#include "host/plugin/usb_target.h"
#include "host/terminal/text.h"

#include <fmt/format.h>

namespace host {

namespace {

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
        requireOtherFile(option, file, options.plot);
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

} // namespace

PrintPlan planOf(const PrintOptions &options) {
    PlotFile given(options.plot);
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
    auto [plot, ready] = readyPlot(std::move(given), wanted, options.drawing, rules);
    Examination examination = examine(plot, rules);
    if (!options.force) requireFitPlot(examination, plot, rules);
    for (std::string &note : readyNotes(ready))
        notes.push_back(std::move(note));
    return {.plot = std::move(plot),
            .ready = std::move(ready),
            .jobFile = options.jobFile,
            .job = std::move(job),
            .rules = std::move(rules),
            .examination = std::move(examination),
            .target = targetOf(options),
            .keepGoing = options.keepGoing,
            .notes = std::move(notes)};
}

} // namespace host
