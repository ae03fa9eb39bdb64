// Whether a job can be printed as it is: its keys, the types of their values, and texts that can be sent to a plotter.
#include "host/job/job_reader.h"

#include "emulations/emulations.h"
#include "host/terminal/failure.h"
#include "host/terminal/text.h"

#include <algorithm>
#include <fmt/format.h>
#include <set>

namespace host {

namespace {

constexpr size_t kMostFindings = 100;

class Check {
public:
    explicit Check(const std::vector<JobLine> &job) : job_(job) {}

    std::vector<JobFinding> run() {
        checkEntries();
        checkEmulation();
        checkTerminator();
        checkTools();
        std::stable_sort(findings_.begin(), findings_.end(),
                         [](const JobFinding &a, const JobFinding &b) { return a.isError > b.isError; });
        if (findings_.size() > kMostFindings) {
            const size_t left = findings_.size() - kMostFindings;
            findings_.resize(kMostFindings);
            note(0, "{} more findings are left out", grouped(static_cast<int64_t>(left)));
        }
        return findings_;
    }

private:
    template <class... Values> void error(size_t line, fmt::format_string<Values...> format, Values &&...values) {
        findings_.push_back({true, line, fmt::format(format, std::forward<Values>(values)...)});
    }
    template <class... Values> void note(size_t line, fmt::format_string<Values...> format, Values &&...values) {
        findings_.push_back({false, line, fmt::format(format, std::forward<Values>(values)...)});
    }

    void checkEntries() {
        std::set<std::string> seen;
        for (const JobLine &entry : job_) {
            const JobKey *row = findJobKey(entry.key);
            if (!row) {
                note(entry.line, "unknown key \"{}\"; it is not read", excerpt(entry.key, 60));
                continue;
            }
            if (!seen.insert(entry.key).second) {
                note(entry.line, "\"{}\" stands here again; the last one counts", entry.key);
            }
            bool isText = entry.value && std::holds_alternative<std::string>(*entry.value);
            if (!entry.value || isText != (row->kind == JobKind::Text)) {
                error(entry.line, "\"{}\" is a <{}>; it must be a {}", entry.key, entry.type,
                      row->kind == JobKind::Text ? "<string>" : "number");
            }
        }
    }

    void checkEmulation() {
        const JobLine *entry = fitting(job_, kEmulationKey);
        emulation_ = numberOf(job_, kEmulationKey, 0);
        if (!entry) {
            missing(kEmulationKey);
        } else if (emulation_ < emulations::kFirst || emulation_ > emulations::kLast) {
            error(entry->line, "\"{}\" is {}; emulations go from {} to {}", kEmulationKey, emulation_, emulations::kFirst,
                  emulations::kLast);
        }
    }

    void checkTerminator() {
        const JobLine *entry = fitting(job_, kTerminatorKey);
        if (entry) checkPlotterText(*entry);
        if (!emulations::of(emulation_).cut.end.empty()) return;
        if (!entry) {
            missing(kTerminatorKey);
        } else if (std::get<std::string>(*entry->value).empty()) {
            error(entry->line, "\"{}\" is empty; emulation {} needs one", kTerminatorKey, emulation_);
        }
    }

    void checkTools() {
        const bool mayBeUsed = emulations::of(emulation_).hasTools;
        bool used = mayBeUsed && numberOf(job_, kUseToolsKey, 0) == 1;
        bool noted = false;
        for (const JobKey &row : kJobKeys) {
            const JobLine *entry = isToolKey(row.key) ? fitting(job_, row.key) : nullptr;
            if (!entry) continue;
            if (used) checkPlotterText(*entry);
            if (used || noted) continue;
            noted = true;
            if (!mayBeUsed) {
                note(entry->line, "tool strings are not used: the emulation is {}, not {}", emulation_, emulations::kDmpl);
            } else {
                note(entry->line, "tool strings are not used: \"{}\" is not 1", kUseToolsKey);
            }
        }
    }

    /// Reports a key that the file does not have. One with a value of the wrong type is there: checkEntries() reported it.
    void missing(const char *key) {
        bool stands = std::any_of(job_.begin(), job_.end(), [&](const JobLine &line) { return line.key == key; });
        if (!stands) error(0, "the key \"{}\" is missing", key);
    }

    void checkPlotterText(const JobLine &entry) {
        try {
            requirePlotterText(std::get<std::string>(*entry.value), fmt::format("\"{}\"", entry.key));
        } catch (const Failure &failure) {
            error(entry.line, "{}", failure.what());
        }
    }

    const std::vector<JobLine> &job_;
    int64_t emulation_ = 0;
    std::vector<JobFinding> findings_;
};

} // namespace

std::vector<JobFinding> checkJob(const std::vector<JobLine> &job) { return Check(job).run(); }

} // namespace host
