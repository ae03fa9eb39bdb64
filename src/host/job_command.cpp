// vectorix job: job files written, shown and checked.
#include "host/commands.h"
#include "host/job_options.h"
#include "host/job_reader.h"
#include "host/job_writer.h"
#include "host/output.h"
#include "host/text.h"
#include "host/whole_file.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <fmt/format.h>
#include <memory>
#include <nlohmann/json.hpp>

namespace host {

namespace {

using Json = nlohmann::ordered_json;

struct FileOptions {
    std::string path;
    bool json = false;
    bool force = false;
    JobOptions job;
};

void printJson(const Json &object) { printOut("{}\n", object.dump(2, ' ', false, Json::error_handler_t::replace)); }

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
    std::vector<Finding> findings = checkJob(readJob(options.path));
    bool fit = std::none_of(findings.begin(), findings.end(), [](const Finding &finding) { return finding.isError; });
    std::string path = shown(options.path);
    if (options.json) {
        Json list = Json::array();
        for (const Finding &finding : findings)
            list.push_back({{"kind", finding.isError ? "error" : "note"}, {"line", finding.line}, {"text", finding.text}});
        printJson({{"fit", fit}, {"findings", list}});
    } else {
        for (const Finding &finding : findings) {
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

void addJobCommand(CLI::App &app, Typed &typed) {
    auto options = std::make_shared<FileOptions>();
    CLI::App *job = app.add_subcommand("job", "Write, show and check job files");
    job->require_subcommand(1);
    explain(typed, *job,
            {"A job file is an XML property list: the plotter's language, its tools, and what ends a command.", {}, {}});
    auto add = [&](const char *name, const char *help, const char *file, ExitCode (*run)(const FileOptions &)) {
        CLI::App *command = job->add_subcommand(name, help);
        command->add_option(file, options->path, "Job file")->required()->type_name("");
        command->callback([options, run, &typed] {
            typed.wantsJson = options->json;
            typed.run = [options, run] { return run(*options); };
        });
        return command;
    };
    CLI::App *writing = add("write", "Write a job file", "OUT", write);
    addJobOptions(*writing, options->job);
    addJobDetails(*writing, options->job);
    explain(typed, *writing,
            {escapeHelp(),
             {{"vectorix job write harbour.plist --project Harbour", "A job of an HP-GL plot."},
              {"vectorix job write roll.plist --force --emulation 17008 --terminator , --tool 'P1,' --tool 'V2,'",
               "Replaces it by one for a plotter with tools."}},
             {}});
    writing->add_flag("--force", options->force, "Replace a file that exists");
    CLI::App *showing = add("show", "Show what a job file says", "JOB", show);
    explain(typed, *showing,
            {"",
             {{"vectorix job show roll.plist", "Keys and values, as the plug-in takes them."},
              {"vectorix job show roll.plist --json", "The same for programs."}},
             jobFields()});
    CLI::App *checking = add("check", "Tell whether a job file is fit to be printed", "JOB", check);
    explain(typed, *checking,
            {"",
             {{"vectorix job check roll.plist", "Says what is wrong, and where."},
              {"vectorix job check roll.plist --json", "The same for programs."}},
             {{"fit", "whether it can be printed"},
              {"findings", "a list of objects: kind (error or note), line (0: none), text"}}});
    for (CLI::App *command : {showing, checking})
        command->add_flag("--json", options->json, "As one JSON object");
}

} // namespace host
