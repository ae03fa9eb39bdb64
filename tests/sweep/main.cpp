// The fault sweep: every platform call of every scenario is made to fail, in each way that it can.
//
//   sweep                              all of it
//   sweep SCENARIO [CALL [FAILURE]]    a part, as the report of a violation names it
#include "sweep/run.h"

#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <new>
#include <utility>

namespace sweep {

namespace {

struct Selection {
    std::string scenario, failure; // empty: all
    unsigned call = 0;             // 0: all
};

/// Shared with the child: what it counted, and where it was when it died.
struct Progress {
    unsigned calls, injections, violations, seconds; ///< seconds: of the longest run
    char at[200];
};

constexpr unsigned kMostShown = 5; // violations of a scenario

void show(Progress &progress, const std::vector<std::string> &complaints) {
    if (complaints.empty()) return;
    if (++progress.violations > kMostShown) return;
    printf("VIOLATION %s\n", progress.at);
    for (const std::string &complaint : complaints)
        printf("    %.200s\n", complaint.c_str());
    fflush(stdout);
}

void sweepScenario(const Scenario &scenario, const Selection &selection, Progress &progress) {
    const auto run = [&](const Injection &injection, const Outcome *clean) {
        const char *call = injection.call == 0 ? "-" : clean->trace[injection.call - 1]->name;
        snprintf(progress.at, sizeof progress.at, "%s %u %s (%s)", scenario.name.c_str(), injection.call,
                 injection.name().c_str(), call);
        Outcome outcome = runScenario(scenario, injection, clean);
        if (injection.call > outcome.trace.size() ||
            (injection.call != 0 && outcome.trace[injection.call - 1] != clean->trace[injection.call - 1])) {
            outcome.complaints.push_back("the calls before are not the same as without a fault");
        }
        show(progress, outcome.complaints);
        progress.seconds = std::max(progress.seconds, outcome.seconds);
        return outcome;
    };
    snprintf(progress.at, sizeof progress.at, "%s, its first run", scenario.name.c_str());
    runScenario(scenario, {}, nullptr); // makes the constants that live for ever
    const Outcome clean = run({}, nullptr);
    progress.calls = static_cast<unsigned>(clean.trace.size());
    for (unsigned call = 1; call <= progress.calls; ++call) {
        if (selection.call != 0 && call != selection.call) continue;
        bool first = true;
        for (const Failure &failure : clean.trace[call - 1]->failures) {
            for (const Reach reach : {Reach::once, Reach::sameCalls, Reach::allCalls}) {
                if (reach != Reach::once && !failure.lasting) continue;
                if (reach == Reach::allCalls && !std::exchange(first, false)) continue;
                const Injection injection{call, failure, reach};
                if (!selection.failure.empty() && injection.name() != selection.failure) continue;
                run(injection, &clean);
                ++progress.injections;
            }
        }
    }
}

/// Each scenario has a process of its own: it starts from nothing, and one that dies does not take the others along.
void sweepInChild(const Scenario &scenario, const Selection &selection, Progress &progress) {
    progress = {};
    fflush(stdout);
    const pid_t child = fork();
    if (child == 0) {
        sweepScenario(scenario, selection, progress);
        fflush(stdout);
        exit(0);
    }
    int status = 0;
    if (child < 0 || waitpid(child, &status, 0) != child || status != 0) {
        ++progress.violations;
        printf("VIOLATION %s\n    the process ended with status 0x%x\n", progress.at, static_cast<unsigned>(status));
    }
}

int sweepAll(const Selection &selection) {
    void *shared = mmap(nullptr, sizeof(Progress), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    if (shared == MAP_FAILED) {
        perror("mmap");
        return 2;
    }
    Progress &progress = *new (shared) Progress{};
    unsigned scenarioCount = 0, injections = 0, violations = 0;
    for (const Scenario &scenario : scenarios()) {
        if (!selection.scenario.empty() && selection.scenario != scenario.name) continue;
        sweepInChild(scenario, selection, progress);
        printf("%-24s %4u calls %5u injections %3u violations, at most %5u of %5u s\n", scenario.name.c_str(),
               progress.calls, progress.injections, progress.violations, progress.seconds, scenario.seconds);
        ++scenarioCount;
        injections += progress.injections;
        violations += progress.violations;
    }
    printf("%u scenarios, %u injections, %u violations\n", scenarioCount, injections, violations);
    return injections != 0 && violations == 0 ? 0 : 1;
}

} // namespace

} // namespace sweep

int main(int count, char **arguments) {
    sweep::Selection selection;
    if (count > 1) selection.scenario = arguments[1];
    if (count > 2) selection.call = static_cast<unsigned>(strtoul(arguments[2], nullptr, 10));
    if (count > 3) selection.failure = arguments[3];
    return sweep::sweepAll(selection);
}
