#include "host/job/job_options.h"

#include "host/terminal/failure.h"
#include "host/terminal/text.h"

#include <cmath>
#include <fmt/format.h>

namespace host {

namespace {

constexpr const char *kGroup = "Job";
constexpr const char *kEmulationValue = "hpgl|dmpl|N";

/// Replaces an emulation's name by its number; leaves any other text as it is.
void numberOfName(std::string &text) {
    if (const auto *emulation = emulations::named(text)) text = fmt::format("{}", emulation->number);
}

std::string checkWholeNumber(const std::string &text) {
    std::optional<double> value = typedNumber(text);
    bool whole = value && std::nearbyint(*value) == *value && std::abs(*value) <= 2147483647.0;
    return whole ? std::string() : fmt::format("{} is not a whole number", text);
}

} // namespace

Option addEmulation(const Command &app, int &emulation) {
    auto check = [](const std::string &text) {
        std::optional<double> value = typedNumber(text);
        bool known =
            value && std::nearbyint(*value) == *value && *value >= emulations::kFirst && *value <= emulations::kLast;
        return known ? std::string()
                     : fmt::format("unknown emulation: {}; use hpgl, dmpl, or {} to {}", text, emulations::kFirst,
                                   emulations::kLast);
    };
    return app.option("--emulation", emulation, "Plotter emulation: hpgl (17002), dmpl (17008), or 17001 to 17037 (hpgl)")
        .check(check)
        .rewrite(numberOfName)
        .valueName(kEmulationValue);
}

std::vector<Option> addJobOptions(const Command &app, JobOptions &options) {
    std::vector<Option> added = {
        addEmulation(app, options.emulation),
        app.option("--terminator", options.terminator, "What ends a command in the plot file (; or in DM/PL ,)"),
        app.option("--tool", options.tools, "Tool string for emulation 17008, up to eight times").repeatable(kToolCount),
        app.option("--project", options.project, "Project name"), app.option("--plotter", options.plotter, "Plotter name")};
    for (const Option &option : added)
        option.group(kGroup).valueName("TEXT");
    added.front().valueName(kEmulationValue);
    return added;
}

std::string plotterText(const std::string &typed, const std::string &option) {
    std::string text = unescaped(typed, option);
    requirePlotterText(text, option);
    return text;
}

const char *escapeHelp() { return "Texts for the plotter, such as terminators, may hold \\n \\r \\t \\e \\xNN and \\\\."; }

void addJobDetails(const Command &app, JobOptions &options) {
    for (size_t i = 0; i < std::size(kJobKeys); ++i) {
        if (!kJobKeys[i].option) continue;
        Option option = app.option(kJobKeys[i].option, options.details[i], kJobKeys[i].help).group(kGroup);
        if (kJobKeys[i].kind == JobKind::Integer) {
            option.check(checkWholeNumber);
        }
        option.valueName("N");
    }
}

int emulationOf(const JobOptions &options) { return options.emulation == 0 ? emulations::kHpgl : options.emulation; }

std::string terminatorOf(const JobOptions &options) {
    if (options.terminator) return plotterText(*options.terminator, "--terminator");
    return std::string(
        language::terminatorOf(emulations::of(emulationOf(options)).language.value_or(language::Language::Hpgl)));
}

std::vector<JobEntry> jobOf(const JobOptions &options) {
    const int number = emulationOf(options);
    const emulations::Emulation &emulation = emulations::of(number);
    if (!options.tools.empty() && !emulation.hasTools) {
        throw Failure(ExitCode::Usage,
                      fmt::format("--tool: emulation {} is sent no tool strings; add --emulation {}, or leave --tool out",
                                  number, emulations::kDmpl));
    }
    if (options.tools.size() > kToolCount) {
        throw Failure(ExitCode::Usage,
                      fmt::format("--tool: {} tool strings; a job has at most {}", options.tools.size(), kToolCount));
    }
    std::string terminator = terminatorOf(options);
    if (terminator.empty() && emulation.cut.end.empty()) {
        throw Failure(ExitCode::Usage, fmt::format("--terminator: empty, but emulation {} needs one", number));
    }

    std::vector<JobEntry> job;
    for (size_t i = 0, tool = 0; i < std::size(kJobKeys); ++i) {
        const JobKey &row = kJobKeys[i];
        std::string_view key = row.key;
        if (key == kProjectKey && options.project) job.push_back({&row, *options.project});
        if (key == kPlotterKey && options.plotter) job.push_back({&row, *options.plotter});
        if (key == kTerminatorKey) job.push_back({&row, terminator});
        if (key == kUseToolsKey) job.push_back({&row, options.tools.empty() ? "0" : "1"});
        if (key == kEmulationKey) job.push_back({&row, fmt::format("{}", number)});
        if (isToolKey(key) && tool < options.tools.size())
            job.push_back({&row, plotterText(options.tools[tool++], "--tool")});
        if (options.details[i]) job.push_back({&row, fmt::format("{}", *options.details[i])});
    }
    return job;
}

} // namespace host
