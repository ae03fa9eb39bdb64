// vectorix job: job files written, shown and checked.
#include "host/commands/commands.h"
#include "host/files/whole_file.h"
#include "host/job/job_options.h"
#include "host/job/job_reader.h"
#include "host/job/job_writer.h"
#include "host/terminal/json.h"
#include "host/terminal/output.h"
#include "host/terminal/text.h"

#include <algorithm>
#include <fmt/format.h>
#include <memory>

namespace host {

namespace {

struct FileOptions {
    std::string path;
    bool json = false;
    bool force = false;
    JobOptions job;
};

void printJson(const Json &object) { printOut("{}\n", object.text()); }

ExitCode write(const FileOptions &options) {
    writeWhole(options.path, propertyList(jobOf(options.job)), options.force);
    return ExitCode::Done;
}

std::string plain(const JobValue &value) {
    if (const auto *text = std::get_if<std::string>(&value)) return fmt::format("\"{}\"", shown(*text));
    if (const auto *number = std::get_if<int64_t>(&value)) return fmt::format("{}", *number);
    return fmt::format("{}", std::get<double>(value));
}

/// What the plug-in takes from the file: the keys that it reads, with values of their types.
ExitCode show(const FileOptions &options) {
    std::vector<JobLine> job = readJob(options.path);
    Json object = Json::object();
    size_t width = 0;
    for (const JobKey &row : kJobKeys)
        width = std::max(width, strlen(row.key));
    for (const JobKey &row : kJobKeys) {
        const JobLine *line = fitting(job, row.key);
        if (!line) continue;
        if (options.json) {
            std::visit([&](const auto &value) { object[row.name] = value; }, *line->value);
        } else {
            printOut("{:<{}}  {}\n", row.key, width, plain(*line->value));
        }
    }
    if (options.json) printJson(object);
    return ExitCode::Done;
}

ExitCode check(const FileOptions &options) {
    std::vector<JobFinding> findings = checkJob(readJob(options.path));
    bool fit = std::none_of(findings.begin(), findings.end(), [](const JobFinding &finding) { return finding.isError; });
    std::string path = shown(options.path);
    if (options.json) {
        Json list = Json::array();
        for (const JobFinding &finding : findings)
            list.push_back({{"kind", finding.isError ? "error" : "note"}, {"line", finding.line}, {"text", finding.text}});
        printJson({{"fit", fit}, {"findings", list}});
    } else {
        for (const JobFinding &finding : findings) {
            std::string where = finding.line > 0 ? fmt::format("line {}: ", finding.line) : "";
            printOut("{}: {}: {}{}\n", path, finding.isError ? "error" : "note", where, finding.text);
        }
        printOut("{}: {}\n", path, fit ? "fit to be printed" : "unfit");
    }
    return fit ? ExitCode::Done : ExitCode::Unfit;
}

/// One row for each key that the report may hold.
std::vector<JsonFields> jobFields() {
    std::vector<JsonFields> fields;
    for (const JobKey &row : kJobKeys)
        fields.push_back({row.name, row.key});
    return fields;
}

} // namespace

void addJobCommand(const Command &app) {
    auto options = std::make_shared<FileOptions>();
    Command job = app.add("job", "Write, show and check job files");
    job.requireSubcommand();
    job.explain({"A job file is an XML property list: the plotter's language, its tools, and what ends a command.", {}, {}});
    auto add = [&](const char *name, const char *help, const char *file, ExitCode (*run)(const FileOptions &)) {
        Command command = job.add(name, help);
        command.option(file, options->path, "Job file").required().valueName("");
        command.whenTyped([options, run] { return run(*options); }, &options->json);
        return command;
    };
    Command writing = add("write", "Write a job file", "OUT", write);
    addJobOptions(writing, options->job);
    addJobDetails(writing, options->job);
    writing.explain({escapeHelp(),
                     {{"vectorix job write harbour.plist --project Harbour", "A job of an HP-GL plot."},
                      {"vectorix job write roll.plist --force --emulation 17008 --terminator , --tool 'P1,' --tool 'V2,'",
                       "Replaces it by one for a plotter with tools."}},
                     {}});
    writing.flag("--force", options->force, "Replace a file that exists");
    Command showing = add("show", "Show what a job file says", "JOB", show);
    showing.explain({"",
                     {{"vectorix job show roll.plist", "Keys and values, as the plug-in takes them."},
                      {"vectorix job show roll.plist --json", "The same for programs."}},
                     jobFields()});
    Command checking = add("check", "Tell whether a job file is fit to be printed", "JOB", check);
    checking.explain({"",
                      {{"vectorix job check roll.plist", "Says what is wrong, and where."},
                       {"vectorix job check roll.plist --json", "The same for programs."}},
                      {{"fit", "whether it can be printed"},
                       {"findings", "a list of objects: kind (error or note), line (0: none), text"}}});
    for (Command command : {showing, checking})
        command.flag("--json", options->json, "As one JSON object");
}

} // namespace host
