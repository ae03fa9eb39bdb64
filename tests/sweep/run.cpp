#include "sweep/run.h"

#include "record/state.h"
#include "support/job.h"
#include "sweep/bench.h"
#include "sweep/faulty_platform.h"
#include "usb/interface.h"

#include <gtest/gtest-spi.h>

#include <algorithm>
#include <cstring>
#include <exception>
#include <optional>
#include <set>

namespace sweep {

namespace {

// Nothing waits then, but what is tried again is: ten start-up texts six times, with the lines of each failure.
constexpr size_t kMostCallsAfterStop = 300;

bool isIdentifier(int32_t value) {
#define SAME(name, number, fault, text) || value == (number)
    return false ORB_ERROR_IDENTIFIERS(SAME);
#undef SAME
}

/// Services that leave the host's identifier as it was, or may.
bool echoesIdentifier(uint32_t service) { return service == 4 || service == 10 || service == 12 || service == 18; }

bool isString(CFStringRef s) { return ORB_hostGetString(s, nullptr, 0) >= 0; }

class Run {
public:
    Run(const Scenario &scenario, const Injection &injection, const Outcome *clean)
        : scenario_(scenario), callNumber_(injection.call), clean_(clean), faults_(injection) {}

    Outcome go();

private:
    template <typename... Parts> void require(bool holds, const Parts &...parts) {
        if (holds) return;
        std::ostringstream text;
        (text << ... << parts);
        outcome_.complaints.push_back(text.str());
    }

    /// Complains when the bytes of a range, from base on, are not as the host sent them.
    void requireSame(const Range &range, size_t base = 0) {
        const size_t from = base + range.offset;
        const bool same = memcmp(reinterpret_cast<const char *>(&sent_) + from,
                                 reinterpret_cast<const char *>(&returned_) + from, range.size) == 0;
        require(same, range.size, " bytes at ", from, " of the record were changed");
    }
    void prepare();
    void call();
    void checkRecord();
    void checkStrings();
    void checkLinks();
    void checkJob();
    void checkQuery();
    void checkCleanRun();
    void cleanUp();

    const Scenario &scenario_;
    const unsigned callNumber_; ///< 0: without a fault
    const Outcome *clean_;
    Faults faults_;
    std::optional<FaultyPlatform> platform_;
    ORB_ServiceRecord sent_{}, returned_{};
    int nextDescriptor_ = 0;                                ///< before the call
    const IOUSBInterfaceInterface245 *interface_ = nullptr; ///< that was open before
    Outcome outcome_;
};

void Run::prepare() {
    furnish(*platform_, scenario_);
    sent_ = makeRecord(*platform_, scenario_);
    if (scenario_.before == Before::portOpen) {
        ORB_ServiceRecord earlier = sent_;
        earlier.ORB_serviceNumber = kORB_ServiceOpenAndWrite;
        earlier = ORB_getVectorixCS2(earlier);
        sent_.ORB_portFD = earlier.ORB_portFD;
        ORB_hostReleaseString(earlier.ORB_CFSTR_message);
    } else if (scenario_.before == Before::interfaceOpen) {
        answer() = sent_;
        ORB_USB_getCustomergORB_interfaceInterface();
        gORB_interfaceInterface->USBInterfaceOpen();
        sent_.ORB_interfaceOpen = 1;
        interface_ = gORB_interfaceInterface.get();
    }
    platform_->terminal.written.clear();
    platform_->clock.slept = 0;
    platform_->log.clear();
    nextDescriptor_ = platform_->terminal.nextDescriptor;
}

void Run::call() {
    faults_.begin();
    try {
        returned_ = ORB_getVectorixCS2(sent_);
    } catch (const std::exception &thrown) {
        require(false, "the entry threw ", thrown.what());
        returned_ = answer();
    }
    faults_.end();
    platform_->ledger.settle();
    outcome_.trace = faults_.trace();
    outcome_.delivered = platform_->terminal.written + platform_->registry.written;
}

void Run::checkRecord() {
    const int32_t id = returned_.ORB_errorID;
    require(isIdentifier(id) || (id == kHostsErrorID && echoesIdentifier(scenario_.service)), "ORB_errorID is ", id);
    for (const Range &range : kReserved)
        requireSame(range);
    for (const Range &range : kOnlyTheHosts)
        requireSame(range);
    for (size_t entry = 0; entry < 6; ++entry)
        for (const Range &range : kReservedInEntry)
            requireSame(range, offsetof(ORB_ServiceRecord, ORB_USBplotterTable) + entry * sizeof(ORB_USBplotterEntry));
    require(returned_.ORB_USBdeviceOpen == 0, "ORB_USBdeviceOpen is ", returned_.ORB_USBdeviceOpen);
    require(platform_->clock.slept <= scenario_.seconds, "it took ", platform_->clock.slept, " seconds, not at most ",
            scenario_.seconds);
    outcome_.seconds = platform_->clock.slept;
    require(platform_->ledger.sleepsAfterStop == 0, "it slept ", platform_->ledger.sleepsAfterStop, " times after the stop");
    const size_t after = faults_.stopped() ? outcome_.trace.size() - callNumber_ : 0;
    require(after <= kMostCallsAfterStop, "there were ", after, " calls after the stop");
}

/// Every string field of the returned record holds a string or none, and those of the host are still its own.
void Run::checkStrings() {
    for (size_t offset : kStrings) {
        const CFStringRef now = stringAt(returned_, offset), before = stringAt(sent_, offset);
        require(now == 0 || isString(now), "the string at ", offset, " does not exist");
        require(before == 0 || isString(before), "the host's string at ", offset, " is gone");
    }
    for (size_t offset : portStrings()) {
        const CFStringRef now = stringAt(returned_, offset), before = stringAt(sent_, offset);
        require(now == 0 || isString(now), "the string at ", offset, " does not exist");
        require(now == before || !isString(before), "the string before at ", offset, " was not released");
    }
}

void Run::checkLinks() {
    // Descriptor 0 is no port: it stays open when an open gives it.
    std::set<int> open;
    for (const auto &[fd, path] : platform_->terminal.openPaths)
        if (fd != 0) open.insert(fd);
    const int held = returned_.ORB_portFD;
    require(held == -1 || open.contains(held), "ORB_portFD ", held, " is not open");
    // The open sequence forgets a port that is open; it is closed with the next one that is opened on its device.
    if (platform_->terminal.nextDescriptor == nextDescriptor_ && held == -1) open.erase(sent_.ORB_portFD);
    for (int fd : open)
        require(fd == held, "descriptor ", fd, " was left open");
    // Start-up bytes that cannot be written leave the port to the host, here and in the record, as service 5 always does.
    const bool closes = scenario_.service == kORB_ServicePrint || scenario_.service == kORB_ServiceSerialHardClip;
    const bool startFailed = scenario_.emulation == 17008 && returned_.ORB_errorID == kORB_ErrorUnvalidPort;
    require(!closes || open.empty() || startFailed, "the port was not closed");

    // A print whose plotter is not found ends before it looks at an interface that was open already: it is the next one's.
    const bool wasOpen = scenario_.before == Before::interfaceOpen;
    const bool kept = wasOpen && scenario_.service == kORB_ServicePrint && gORB_interfaceInterface.get() == interface_;
    require(kept || returned_.ORB_interfaceOpen == 0, "ORB_interfaceOpen is ", returned_.ORB_interfaceOpen);
    require(bool(gORB_interfaceInterface) == kept, "the interface was not given up");
    const auto &log = platform_->log;
    require(wasOpen || std::find(log.begin(), log.end(), "released open") == log.end(), "the interface was not closed");
    gORB_interfaceInterface.reset();
    require(platform_->registry.outstanding == 0, platform_->registry.outstanding, " registry objects were not released");
    require(platform_->files.openForks == 0, platform_->files.openForks, " forks were left open");
}

void Run::checkJob() {
    const ORB_JobReport report = jobs::lastReport();
    const Ledger &ledger = platform_->ledger;
    require(report.fileBytes == report.sentBytes + report.failedBytes + report.withheldBytes && report.withheldBytes >= 0,
            "file ", report.fileBytes, " is not sent ", report.sentBytes, " + failed ", report.failedBytes, " + withheld ",
            report.withheldBytes);
    require(report.fileBytes == ledger.fileBytes, "fileBytes is ", report.fileBytes, ", not ", ledger.fileBytes);
    require(report.sentBytes == ledger.sentBytes, "sentBytes is ", report.sentBytes, ", but the link took and kept ",
            ledger.sentBytes);
    require(report.sentBytes <= static_cast<int64_t>(outcome_.delivered.size()), "sentBytes is ", report.sentBytes,
            ", but the plotter got ", outcome_.delivered.size());
    if (!faults_.stopped() && scenario_.method <= kORB_OSX_METHOD_SERIAL) {
        require(report.failedBytes == ledger.failedBytes, "failedBytes is ", report.failedBytes, ", not ",
                ledger.failedBytes);
        require(report.piecesSent == ledger.piecesSent && report.piecesFailed == ledger.piecesFailed,
                "pieces: ", report.piecesSent, " sent and ", report.piecesFailed, " failed, not ", ledger.piecesSent,
                " and ", ledger.piecesFailed);
    }
    require(isIdentifier(report.firstErrorID), "firstErrorID is ", report.firstErrorID);
    require(report.stopReason <= kORB_StopUnconvertible, "stopReason is ", report.stopReason);
    require(report.firstErrorOffset >= -1 && report.firstErrorOffset <= report.fileBytes, "firstErrorOffset is ",
            report.firstErrorOffset);
    const bool nothingFailed = report.firstErrorID == kORB_NoError;
    require(!nothingFailed || (report.failedBytes == 0 && report.piecesFailed == 0), "a piece failed, and no failure");
    require(!nothingFailed || report.stopReason == kORB_StopFinished || report.stopReason == kORB_StopNoMarkInTail,
            "stopped for ", report.stopReason, " without a failure");
    // A transfer that failed half way is tried again with the whole text: that half comes twice.
    const bool wholeFile = report.fileBytes == static_cast<int64_t>(scenario_.plot.size()) && !ledger.tookPartAndFailed;
    if (clean_ != nullptr && nothingFailed && wholeFile && report.stopReason == kORB_StopFinished) {
        require(outcome_.delivered == clean_->delivered, "a job without a failure, but the plotter got ",
                scripted::quoted(outcome_.delivered));
    }
}

void Run::checkQuery() {
    ORB_QueryReport report{};
    report.structSize = sizeof report;
    ORB_hostGetQueryReport(&report);
    const Ledger &ledger = platform_->ledger;
    require(isIdentifier(report.errorID), "the query's errorID is ", report.errorID);
    require(report.requestBytes < sizeof report.request && strlen(report.request) == report.requestBytes, "requestBytes is ",
            report.requestBytes, " for ", report.request);
    require(report.replyBytes < sizeof report.reply && report.reply[report.replyBytes] == '\0', "replyBytes is ",
            report.replyBytes);
    require(report.replyBytes >= sizeof report.reply || ledger.reply == std::string_view(report.reply, report.replyBytes),
            "the reply is not ", scripted::quoted(ledger.reply));
    require(report.reads == ledger.reads || (faults_.stopped() && report.reads > ledger.reads), "reads is ", report.reads,
            ", not ", ledger.reads);
}

/// A scenario that does not do its work proves nothing.
void Run::checkCleanRun() {
    require(returned_.ORB_errorID == scenario_.errorID, "ORB_errorID is ", returned_.ORB_errorID, ", not ",
            scenario_.errorID);
    if (scenario_.service == kORB_ServicePrint) {
        const ORB_JobReport report = jobs::lastReport();
        require(report.stopReason == scenario_.stopReason, "stopReason is ", report.stopReason, ", not ",
                scenario_.stopReason);
        require(report.stopReason != kORB_StopFinished || report.firstErrorID == kORB_NoError, "firstErrorID is ",
                report.firstErrorID);
    }
    const bool answered = !scenario_.replies.empty();
    require(!answered || returned_.ORB_HARDC_2 != 0 || returned_.ORB_HARDC_3 != 0, "the reply gave no values");
}

void Run::cleanUp() {
    // Lets go of what the host holds, as a host does.
    std::set<CFStringRef> held;
    for (const ORB_ServiceRecord *record : {&sent_, &returned_}) {
        for (size_t offset : kStrings)
            held.insert(stringAt(*record, offset));
        for (size_t offset : portStrings())
            held.insert(stringAt(*record, offset));
    }
    for (CFStringRef s : held)
        ORB_hostReleaseString(s);
    // The plug-in forgets a port that the host has closed, at the end of the next call.
    platform_->terminal.openPaths.clear();
    ORB_ServiceRecord next{};
    next.ORB_serviceNumber = kORB_ServiceNothing;
    ORB_getVectorixCS2(next);
}

Outcome Run::go() {
    testing::TestPartResultArray misuse; // what the backends say of calls that make no sense
    {
        const testing::ScopedFakeTestPartResultReporter reporter(
            testing::ScopedFakeTestPartResultReporter::INTERCEPT_ALL_THREADS, &misuse);
        const uint32_t objects = platform::liveObjectCount();
        platform_.emplace(faults_);
        prepare();
        call();
        checkRecord();
        checkStrings();
        checkLinks();
        if (scenario_.service == kORB_ServicePrint) checkJob();
        if (scenario_.service == kORB_ServiceSerialHardClip || scenario_.service == kORB_ServiceUSBHardClip) checkQuery();
        if (callNumber_ == 0) checkCleanRun();
        cleanUp();
        const uint32_t left = platform::liveObjectCount();
        require(left == objects, static_cast<int64_t>(left) - objects, " objects were left");
        platform_.reset();
    }
    for (int i = 0; i < misuse.size(); ++i)
        require(false, "the backends: ", misuse.GetTestPartResult(i).message());
    return std::move(outcome_);
}

} // namespace

Outcome runScenario(const Scenario &scenario, const Injection &injection, const Outcome *clean) {
    return Run(scenario, injection, clean).go();
}

} // namespace sweep
