// The fault sweep: every platform call of every scenario is made to fail, in each way that it can.
//
//   sweep [SCENARIO]
#include "sweep/platform.h"
#include "sweep/scenarios.h"

#include "record/state.h"
#include "usb/interface.h"

#include <algorithm>
#include <cstdio>
#include <map>

namespace sweep {

namespace {

constexpr unsigned kMostShown = 5; // violations of a scenario
// Nothing waits then, but what is tried again is: ten start-up texts six times, with the lines of each failure.
constexpr size_t kMostCallsAfterStop = 300;

/// The most that a scenario may take: the waits of each step when all its retries fail.
unsigned mostSeconds(const Scenario &scenario) {
    // Eleven opens of the port; sixty opens of the device and two configurations; twenty opens of the interface, and two
    // seconds once its pipes are clear; 3 and 2 seconds before a serial reply, and eleven and ten polls for it; over USB 2,
    // 3
    // ... 100 seconds, when replies come but never complete, for each of two; two seconds before the port's close.
    if (scenario.service == kORB_ServicePrint && scenario.method == kSerial) return 11 + 2;
    const std::map<uint32_t, unsigned> most = {
        {5, 11}, {7, 11 + 11 + 22 + 26 + 2}, {8, 62}, {11, 22 + 2 * 5049}, {17, 62 + 22}};
    return most.contains(scenario.service) ? most.at(scenario.service) : 0;
}

bool isString(CFStringRef s) { return ORB_hostGetString(s, nullptr, 0) >= 0; }

struct Outcome {
    std::vector<Call> trace; ///< of the call of the entry
    Complaints complaints;   ///< what is wrong; empty when all is well
    std::string delivered;   ///< all that reached the plotter
};

/// One run of a scenario with one fault, and all that has to be true afterwards.
struct Run {
    const Scenario &scenario;
    Platform platform;
    Complaints &all = platform.complaints;
    ORB_ServiceRecord sent = recordOf(scenario), returned{};
    int nextDescriptor = 0;                                ///< before the call
    const IOUSBInterfaceInterface245 *interface = nullptr; ///< that was open before

    Run(const Scenario &given, const Injection &injection) : scenario(given), platform(injection) {
        furnish(platform, scenario);
        if (scenario.before == Before::PortOpen) {
            ORB_ServiceRecord earlier = sent;
            earlier.ORB_serviceNumber = kORB_ServiceOpenAndWrite;
            earlier = ORB_getVectorixCS2(earlier);
            sent.ORB_portFD = earlier.ORB_portFD;
            ORB_hostReleaseString(earlier.ORB_CFSTR_message);
        } else if (scenario.before == Before::InterfaceOpen) {
            answer() = sent;
            ORB_USB_getCustomergORB_interfaceInterface();
            gORB_interfaceInterface->USBInterfaceOpen();
            sent.ORB_interfaceOpen = 1;
            interface = gORB_interfaceInterface.get();
        }
        platform.terminal.written.clear();
        platform.clock.slept = 0;
        platform.log.clear();
        nextDescriptor = platform.terminal.nextDescriptor;
        platform.isActive = true;
        returned = ORB_getVectorixCS2(sent);
        platform.isActive = false;
    }
    /// All that reached the plotter.
    std::string delivered() const { return platform.terminal.written + platform.registry.written; }

    /// Every string field of the returned record holds a string or none, and those of the host are still its own.
    void checkStrings() {
        for (const size_t &offset : kStrings) {
            const CFStringRef now = stringAt(returned, offset), before = stringAt(sent, offset);
            const bool isHosts = &offset < kStrings + kHostsStrings;
            all.require(now == 0 || isString(now), "a string that exists at " + std::to_string(offset));
            const bool isKept = before == 0 || isString(before), isReleased = now == before || !isString(before);
            all.require(isHosts ? isKept : isReleased, "the string that was at " + std::to_string(offset));
        }
    }

    void checkLinks() {
        // Descriptor 0 is no port: it stays open when an open gives it.
        auto open = platform.terminal.openPaths;
        open.erase(0);
        const int held = returned.ORB_portFD;
        all.require(held == -1 || open.contains(held), "ORB_portFD is open");
        // The open sequence forgets a port that is open; it is closed with the next one that is opened on its device.
        if (platform.terminal.nextDescriptor == nextDescriptor && held == -1) open.erase(sent.ORB_portFD);
        open.erase(held);
        all.require(open.empty(), "no other port is open");
        // Start-up bytes that cannot be written leave the port to the host, here and in the record, as service 5 does.
        const bool closes = scenario.service == kORB_ServicePrint || scenario.service == kORB_ServiceSerialHardClip;
        const bool startFailed = scenario.emulation == 17008 && returned.ORB_errorID == kORB_ErrorUnvalidPort;
        all.require(!closes || held == -1 || startFailed, "the port is closed");

        // A print whose plotter is not found ends before it looks at an interface that was open: it is the next one's.
        const bool kept = interface && scenario.service == kORB_ServicePrint && gORB_interfaceInterface.get() == interface;
        all.require(returned.ORB_USBdeviceOpen == 0 && (kept || returned.ORB_interfaceOpen == 0), "nothing is called open");
        all.require(bool(gORB_interfaceInterface) == kept, "the interface is given up");
        const bool wasReleasedOpen = std::count(platform.log.begin(), platform.log.end(), "released open") != 0;
        all.require(interface || !wasReleasedOpen, "the interface is closed");
    }

    void checkJob(const Outcome *clean) {
        const ORB_JobReport report = lastReport(ORB_hostGetJobReport);
        int64_t sentBytes = 0, failedBytes = 0;
        uint64_t piecesSent = 0;
        for (const auto &[offered, taken, ok] : platform.pieces) {
            sentBytes += taken;
            failedBytes += offered - taken;
            piecesSent += ok && taken == offered ? 1 : 0;
        }
        const uint64_t piecesFailed = platform.pieces.size() - piecesSent;
        const bool countsAll = !platform.isStopped && scenario.method != kOther;
        all.require(report.fileBytes == platform.fileBytes, "fileBytes");
        all.require(report.sentBytes == sentBytes, "sentBytes");
        all.require(!countsAll || report.failedBytes == failedBytes, "failedBytes");
        all.require(!countsAll || (report.piecesSent == piecesSent && report.piecesFailed == piecesFailed), "pieces");
        all.require(clean || report.stopReason == scenario.stopReason, "stopReason");
        // A transfer that failed half way is tried again with the whole text: that half comes twice.
        const bool isWhole = report.fileBytes == static_cast<int64_t>(scenario.plot.size()) && !platform.tookPartAndFailed;
        const bool isDone = report.firstErrorID == kORB_NoError && report.stopReason == kORB_StopFinished;
        all.require(!clean || !isWhole || !isDone || delivered() == clean->delivered, "without a failure all arrives");
    }

    void checkQuery() {
        const ORB_QueryReport report = lastReport(ORB_hostGetQueryReport);
        const std::string said = platform.terminal.said + platform.registry.said;
        all.require(said == std::string_view(report.reply, report.replyBytes), "the last reply is reported");
        all.require(report.reads == platform.reads || (platform.isStopped && report.reads > platform.reads), "reads");
    }

    void cleanUp() {
        // Lets go of what the host holds, as a host does.
        gORB_interfaceInterface.reset();
        releaseStrings(sent);
        releaseStrings(returned);
        // The plug-in forgets a port that the host has closed, at the end of the next call.
        platform.terminal.openPaths.clear();
        ORB_ServiceRecord next{};
        next.ORB_serviceNumber = kORB_ServiceNothing;
        ORB_getVectorixCS2(next);
    }
};

/// clean: the outcome without a fault, nullptr for that run itself.
Outcome runScenario(const Scenario &scenario, const Injection &injection, const Outcome *clean) {
    const uint32_t objects = platform::liveObjectCount();
    Run run(scenario, injection);
    Complaints &all = run.all;
    requireSound(all, run.platform, run.sent, run.returned, mostSeconds(scenario));
    run.checkStrings();
    run.checkLinks();
    if (scenario.service == kORB_ServicePrint) run.checkJob(clean);
    if (scenario.service == 7 || scenario.service == 11) run.checkQuery();
    all.require(clean || run.returned.ORB_errorID == scenario.errorID, "ORB_errorID");
    const size_t after = run.platform.isStopped ? run.platform.trace.size() - injection.call : 0;
    all.require(after <= kMostCallsAfterStop, "it ends soon after the stop");
    run.cleanUp();
    all.require(platform::liveObjectCount() == objects, "no object is left");
    return {run.platform.trace, all, run.delivered()};
}

struct Sweep {
    const Scenario &scenario;
    unsigned injections = 0, violations = 0;

    Outcome run(const Injection &injection, const Outcome *clean) {
        Outcome outcome = runScenario(scenario, injection, clean);
        if (outcome.complaints.empty() || ++violations > kMostShown) return outcome;
        const char *call = clean ? clean->trace[injection.call - 1].second.c_str() : "without a fault";
        printf("VIOLATION injection %u, of call %zu: %s\n", injections, injection.call, call);
        for (const std::string &complaint : outcome.complaints)
            printf("    %.200s\n", complaint.c_str());
        return outcome;
    }

    /// Each failure of a call comes once, for all later calls of its kind, and with all later calls failing.
    void inject(size_t call, const Outcome &clean) {
        for (const Failure &failure : failuresOf(clean.trace[call - 1])) {
            for (const Reach reach : {Reach::Once, Reach::SameCalls, Reach::AllCalls}) {
                if (reach != Reach::Once && !failure.lasting) continue;
                ++injections;
                run({call, failure, reach}, &clean);
            }
        }
    }

    void go() {
        printf("%s over %u\n", scenario.name.c_str(), scenario.method);
        runScenario(scenario, {}, nullptr); // makes the constants that live for ever
        const Outcome clean = run({}, nullptr);
        for (size_t call = 1; call <= clean.trace.size(); ++call)
            inject(call, clean);
    }
};

} // namespace

} // namespace sweep

int main(int count, char **arguments) {
    setlinebuf(stdout); // the last line tells where it died
    unsigned scenarios = 0, injections = 0, violations = 0;
    for (const sweep::Scenario &scenario : sweep::scenarios()) {
        if (count > 1 && scenario.name != arguments[1]) continue;
        sweep::Sweep sweep{scenario};
        sweep.go();
        ++scenarios;
        injections += sweep.injections;
        violations += sweep.violations;
    }
    printf("%u scenarios, %u injections, %u violations\n", scenarios, injections, violations);
    return injections != 0 && violations == 0 ? 0 : 1;
}
