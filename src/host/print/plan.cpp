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
    std::string job;
    PlotRules rules;
    std::vector<std::string> notes;
    if (options.jobFile.empty()) {
        job = propertyList(jobOf(options.job));
        rules = {options.job.emulation, terminatorOf(options.job)};
    } else {
        readRules(options.jobFile, rules, notes);
    }
    PlotFile plot(options.plot);
    Examination examination = examine(plot, rules);
    if (!options.force) requireFitPlot(examination, plot, rules);
    return {std::move(plot),   options.jobFile, job, rules, std::move(examination), targetOf(options),
            options.keepGoing, std::move(notes)};
}

} // namespace host
