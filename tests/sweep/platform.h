// A platform of which one call fails, in one way. Every call of the plug-in passes by here, and every request for memory;
// and an account is kept of what the links took, which the reports have to tell, too.
#pragma once

#include "stand_in/scenario.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace sweep {

using namespace stand_in;

struct Failure {
    Ending ending = {};
    bool lasting = true; ///< may be the outcome of every later call, too
    bool stops = false;  ///< the host stops the call of the entry meanwhile; when it fails, because it is interrupted
};

constexpr size_t kMostCalls = 200'000; // a hundred times what the longest run makes: only a loop without end gets there

constexpr Failure fails(long code = 0) { return {{Effect::Fails, code}}; }
constexpr Failure after(long code) { return {{Effect::After, code}}; }
constexpr Failure gives(long value, bool lasting = true) { return {{Effect::Gives, value}, lasting}; }
constexpr Failure stops(long code) { return {{code == 0 ? Effect::None : Effect::Fails, code}, false, true}; }

inline const struct {
    std::vector<const char *> calls;
    std::vector<Failure> failures;
} kFailures[] = {
    // A descriptor 0 stays open, and the next one is another.
    {{"open"}, {fails(EACCES), fails(ENOENT), fails(EBUSY), fails(EMFILE), gives(0, false), gives(40000), stops(EINTR)}},
    {{"read"}, {fails(EIO), fails(EAGAIN), gives(0), gives(1), stops(EINTR)}},
    {{"write"}, {fails(EIO), fails(EAGAIN), fails(ENXIO), gives(0), gives(1), stops(EINTR)}},
    {{"tcsetattr"}, {fails(EIO), fails(EINVAL), stops(EINTR)}},
    {{"tcdrain"}, {fails(EIO), stops(EINTR)}},
    {{"FSOpenFork"}, {fails(ioErr), fails(tmfoErr), fails(fnfErr), fails(permErr), fails(memFullErr), fails(errFSNotAFile)}},
    {{"FSGetForkSize"}, {fails(ioErr), gives(0), gives(17 << 20)}},
    {{"FSReadFork"}, {fails(ioErr), fails(rfNumErr), after(eofErr)}},
    // What gives something back has given it back, whatever it reports: such calls fail only afterwards.
    {{"close"}, {after(EIO), after(EINTR)}},
    {{"FSCloseFork"}, {after(ioErr)}},
    {{"mach_port_deallocate", "IOObjectRelease", "IODestroyPlugIn", "USBDeviceClose", "USBInterfaceClose"},
     {after(kIOReturnError)}},
    {{"IOServiceMatching", "IOIteratorNext", "create", "memory"}, {fails()}},
    {{"IORegistryEntryCreateCFProperty"}, {fails(), gives(0), gives(60)}}, // a number; a long text
    {{"IOCreatePlugIn", "QueryInterface"}, {fails(kIOReturnNoResources), after(kIOReturnError), gives(0)}},
    {{"GetDeviceVendor", "GetDeviceProduct", "GetLocationID"}, {fails(kIOReturnNoDevice), gives(1)}},
    {{"GetNumberOfConfigurations", "GetConfigurationDescriptorPtr", "GetNumEndpoints"},
     {fails(kIOReturnNoDevice), gives(0)}},
    {{"USBDeviceOpen", "USBInterfaceOpen"},
     {fails(kIOReturnExclusiveAccess), fails(kIOReturnNotPermitted), fails(kIOReturnNoDevice)}},
    {{"GetPipeStatus"}, {fails(kIOUSBPipeStalled), fails(kIOReturnNoDevice), fails(kIOReturnUnsupported)}},
    {{"WritePipe"},
     {fails(kIOReturnNoDevice), fails(kIOReturnNotResponding), fails(kIOUSBPipeStalled), after(kIOReturnIOError),
      stops(kIOReturnAborted)}},
    {{"ReadPipe"},
     {fails(kIOReturnNoDevice), fails(kIOReturnNotResponding), fails(kIOUSBPipeStalled), gives(0), gives(1), gives(256),
      stops(kIOReturnAborted)}},
};

using Call = std::pair<Seam, std::string>; // where it goes, and its name

/// What a call can do instead of its work; the first one is what it does when everything fails.
inline std::vector<Failure> failuresOf(const Call &call) {
    const auto &[seam, name] = call;
    std::vector<Failure> all;
    for (const auto &[calls, failures] : kFailures)
        if (std::find(calls.begin(), calls.end(), name) != calls.end()) all = failures;
    if (all.empty() && seam == Seam::Terminal) all = {fails(EIO), fails(ENOTTY)};
    if (all.empty() && seam == Seam::Registry) all = {fails(kIOReturnNoDevice), fails(kIOReturnError)};
    if (name != "memory") all.push_back(stops(0)); // in a request for memory it is one in the call before
    return all;
}

enum class Reach : uint8_t { Once, SameCalls, AllCalls };

/// The failure of call number `call` (from 1), and whether later calls fail, too. Call 0: none.
struct Injection {
    size_t call = 0;
    Failure failure = {};
    Reach reach = Reach::Once;
};

/// What was offered to a link at once, and again when it was retried.
struct Piece {
    int64_t offered, taken = 0;
    bool ok = false;
};

struct Platform final : stand_in::Platform {
    explicit Platform(const Injection &injected) : injection(injected) {}

    const Injection injection;
    bool isActive = false; ///< calls count, and fail, only meanwhile
    bool isStopped = false;
    std::vector<Call> trace;
    Complaints complaints;

    int64_t fileBytes = 0; ///< what the size of the plot file was said to be
    std::vector<Piece> pieces;
    bool tookPartAndFailed = false; ///< some transfer did
    uint32_t reads = 0;             ///< of a query

    Ending before(Seam seam, const char *name) override {
        if (!isActive) return {};
        const std::string_view call = name;
        const Ending ending = endingOf({seam, name});
        if (call == "read" || call == "ReadPipe") ++reads;
        if (ending.effect == Effect::Fails) {
            const bool gone = ending.code == EIO || ending.code == ENXIO;
            // What was drained before is lost when the port is found gone: a hang-up ends a drain, too.
            if ((gone && (call == "write" || call == "TIOCNXCL")) || (call == "tcdrain" && !isStopped)) lose(INT64_MAX);
        } else if (call == "FSReadFork") {
            isRetry_ = false;
        } else if (call == "FSGetForkSize" && isPlotOpen()) {
            fileBytes = ending.effect == Effect::Gives ? ending.code : static_cast<int64_t>(files.files[kPlotPath].size());
        }
        return ending;
    }

    void wrote(size_t offered, size_t taken, bool ok) override {
        tookPartAndFailed |= taken != 0 && !ok;
        if (!isPlotOpen()) return; // meanwhile, nothing but its pieces is sent
        if (!std::exchange(isRetry_, true)) pieces.push_back({static_cast<int64_t>(offered)});
        pieces.back().taken = std::max(pieces.back().taken, static_cast<int64_t>(taken));
        pieces.back().ok = ok;
    }
    void discarded(size_t bytes) override { lose(static_cast<int64_t>(bytes)); }
    void misuse(const std::string &what) override { complaints.push_back(what); }

private:
    Ending endingOf(const Call &call) {
        trace.push_back(call);
        if (trace.size() > kMostCalls) abort();
        if (injection.call == 0 || trace.size() < injection.call) return {};
        const Failure &failure = injection.failure;
        if (trace.size() == injection.call) {
            isStopped = failure.stops;
            if (isStopped) ORB_hostStop();
            return failure.ending;
        }
        if (injection.reach == Reach::Once) return {};
        if (injection.reach == Reach::SameCalls) return call == trace[injection.call - 1] ? failure.ending : Ending{};
        const Failure first = failuresOf(call).front();
        return first.lasting ? first.ending : Ending{};
    }
    /// The last piece is not known to have left the port, with as many bytes as that may be.
    void lose(int64_t bytes) {
        if (pieces.empty()) return;
        Piece &last = pieces.back();
        const int64_t lost = std::min(bytes, last.taken);
        last.ok = last.ok && lost == 0;
        last.taken -= lost;
    }

    bool isPlotOpen() const { return !files.openForks.empty() && files.openForks.begin()->second == kPlotPath; }

    bool isRetry_ = false;
};

} // namespace sweep
