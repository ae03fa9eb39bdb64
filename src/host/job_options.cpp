#include "host/job_options.h"

#include "host/failure.h"
#include "host/text.h"

#include <CLI/CLI.hpp>
#include <cmath>
#include <fmt/format.h>

namespace host {

namespace {

constexpr const char *kGroup = "Job";
constexpr const char *kEmulationValue = "hpgl|dmpl|N";

/// In place of an emulation's name its number; anything else stays.
std::string numberOfName(std::string &text) {
    for (const auto &row : kNamedEmulations) {
        if (text == row.name) text = fmt::format("{}", row.emulation);
    }
    return {};
}

CLI::Validator wholeNumber() {
    return CLI::Validator(
        [](const std::string &text) {
            double value = 0;
            bool whole =
                CLI::detail::lexical_cast(text, value) && std::nearbyint(value) == value && std::abs(value) <= 2147483647.0;
            return whole ? std::string() : fmt::format("{} is not a whole number", text);
        },
        "");
}

std::string plotterText(const std::string &typed, const std::string &option) {
    std::string text = unescaped(typed, option);
    requirePlotterText(text, option);
    return text;
}

} // namespace

CLI::Option *addEmulation(CLI::App &app, int &emulation) {
    auto check = [](const std::string &text) {
        int value = 0;
        bool known = CLI::detail::lexical_cast(text, value) && value >= kFirstEmulation && value <= kLastEmulation;
        return known ? std::string()
                     : fmt::format("{} is no emulation; they are hpgl, dmpl, and {} to {}", text, kFirstEmulation,
                                   kLastEmulation);
    };
    return app
        .add_option("--emulation", emulation, "Plotter emulation: hpgl (17002), dmpl (17008), or 17001 to 17037 (hpgl)")
        ->check(CLI::Validator(check, ""))
        ->transform(CLI::Validator(numberOfName, ""))
        ->type_name(kEmulationValue);
}

std::vector<CLI::Option *> addJobOptions(CLI::App &app, JobOptions &options) {
    std::vector<CLI::Option *> added = {
        addEmulation(app, options.emulation),
        app.add_option("--terminator", options.terminator, "What ends a command in the plot file (;)"),
        app.add_option("--tool", options.tools, "Tool string for emulation 17008, up to eight times")
            ->expected(1, kToolCount)
            ->allow_extra_args(false),
        app.add_option("--project", options.project, "Project name"),
        app.add_option("--plotter", options.plotter, "Plotter name")};
    for (CLI::Option *option : added)
        option->group(kGroup)->type_name(option == added.front() ? kEmulationValue : "TEXT");
    return added;
}

const char *escapeHelp() { return "Terminators and tool strings may hold \\n \\r \\t \\e \\xNN and \\\\."; }

void addJobDetails(CLI::App &app, JobOptions &options) {
    for (size_t i = 0; i < std::size(kJobKeys); ++i) {
        if (!kJobKeys[i].option) continue;
        auto *option = app.add_option(kJobKeys[i].option, options.details[i], kJobKeys[i].help)->group(kGroup);
        if (kJobKeys[i].kind == JobKind::Integer) {
            option->check(wholeNumber());
        }
        option->type_name("N");
    }
}

std::string terminatorOf(const JobOptions &options) { return plotterText(options.terminator, "--terminator"); }

std::vector<JobEntry> jobOf(const JobOptions &options) {
    if (!options.tools.empty() && options.emulation != kToolEmulation) {
        throw Failure(ExitCode::Usage,
                      fmt::format("--tool: emulation {} is sent no tool strings; add --emulation {}, or leave --tool out",
                                  options.emulation, kToolEmulation));
    }
    if (options.tools.size() > kToolCount) {
        throw Failure(ExitCode::Usage,
                      fmt::format("--tool: {} tool strings; a job has at most {}", options.tools.size(), kToolCount));
    }
    std::string terminator = terminatorOf(options);
    if (terminator.empty() && !endsWithAt(options.emulation)) {
        throw Failure(ExitCode::Usage, fmt::format("--terminator: empty, but emulation {} needs one", options.emulation));
    }

    std::vector<JobEntry> job;
    for (size_t i = 0, tool = 0; i < std::size(kJobKeys); ++i) {
        const JobKey &row = kJobKeys[i];
        std::string_view key = row.key;
        if (key == kProjectKey && options.project) job.push_back({&row, *options.project});
        if (key == kPlotterKey && options.plotter) job.push_back({&row, *options.plotter});
        if (key == kTerminatorKey) job.push_back({&row, terminator});
        if (key == kUseToolsKey) job.push_back({&row, options.tools.empty() ? "0" : "1"});
        if (key == kEmulationKey) job.push_back({&row, fmt::format("{}", options.emulation)});
        if (isToolKey(key) && tool < options.tools.size())
            job.push_back({&row, plotterText(options.tools[tool++], "--tool")});
        if (options.details[i]) job.push_back({&row, fmt::format("{}", *options.details[i])});
    }
    return job;
}

} // namespace host
