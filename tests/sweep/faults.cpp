#include "sweep/faults.h"

#include "orb/vectorix.h"
#include "platform/files/file_manager.h"
#include "platform/iokit/io_return.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace sweep {

using stand_in::Effect, stand_in::Ending;

namespace {

constexpr size_t kMostCalls = 200'000; // a hundred times what the longest run makes: only a loop without end gets there

Faults *current = nullptr;

constexpr Failure fails(long code = 0) { return {{Effect::fails, code}}; }
constexpr Failure after(long code) { return {{Effect::after, code}}; }
constexpr Failure gives(long value, bool lasting = true) { return {{Effect::gives, value}, lasting}; }
constexpr Failure stops(long code) { return {{code == 0 ? Effect::none : Effect::fails, code}, false, true}; }

// What gives something back has given it back, whatever it reports: such calls fail only afterwards.
std::vector<CallKind> makeKinds() {
    std::vector<CallKind> kinds = {
        // A descriptor 0 stays open, and the next one is another.
        {"open", {fails(EACCES), fails(ENOENT), fails(EBUSY), fails(EMFILE), gives(0, false), gives(40000), stops(EINTR)}},
        {"close", {after(EIO), after(EINTR)}},
        {"read", {fails(EIO), fails(EAGAIN), gives(0), gives(1), stops(EINTR)}},
        {"write", {fails(EIO), fails(EAGAIN), fails(ENXIO), gives(0), gives(1), stops(EINTR)}},
        {"fcntl", {fails(EIO)}},
        {"ioctl", {fails(EIO), fails(ENOTTY)}},
        {"tcgetattr", {fails(EIO), fails(ENOTTY)}},
        {"tcsetattr", {fails(EIO), fails(EINVAL), stops(EINTR)}},
        {"tcdrain", {fails(EIO), stops(EINTR)}},
        {"tcflush", {fails(EIO)}},
        {"identify", {}}, // the system always knows what an open descriptor leads to
        {"FSOpenFork",
         {fails(ioErr), fails(tmfoErr), fails(fnfErr), fails(permErr), fails(memFullErr), fails(errFSNotAFile)}},
        {"FSGetForkSize", {fails(ioErr), gives(0), gives(17 << 20)}},
        {"FSReadFork", {fails(ioErr), fails(rfNumErr), after(eofErr)}},
        {"FSCloseFork", {after(ioErr)}},
        {"IOMasterPort", {fails(kIOReturnError), fails(kIOReturnNoResources)}},
        {"mach_port_deallocate", {after(kIOReturnError)}},
        {"IOServiceMatching", {fails()}},
        {"IOServiceGetMatchingServices", {fails(kIOReturnError), fails(kIOReturnNoMemory)}},
        {"IOIteratorNext", {fails()}},
        {"IOObjectRelease", {after(kIOReturnError)}},
        {"IORegistryEntryCreateCFProperty", {fails(), gives(0), gives(60)}}, // a number; a long text
        {"IOCreatePlugIn", {fails(kIOReturnNoResources), after(kIOReturnError), gives(0)}},
        {"IODestroyPlugIn", {after(kIOReturnError)}},
        {"QueryInterface", {fails(kIOReturnUnsupported), after(kIOReturnError), gives(0)}},
        {"GetDeviceVendor", {fails(kIOReturnNoDevice), gives(1)}},
        {"GetDeviceProduct", {fails(kIOReturnNoDevice), gives(1)}},
        {"GetNumberOfConfigurations", {fails(kIOReturnNoDevice), gives(0)}},
        {"GetLocationID", {fails(kIOReturnNoDevice), gives(1)}},
        {"USBDeviceOpen", {fails(kIOReturnExclusiveAccess), fails(kIOReturnNotPermitted), fails(kIOReturnNoDevice)}},
        {"USBDeviceClose", {after(kIOReturnNotOpen)}},
        {"GetConfigurationDescriptorPtr", {fails(kIOReturnNoDevice), gives(0)}},
        {"SetConfiguration", {fails(kIOReturnBusy), fails(kIOReturnNoDevice)}},
        {"USBInterfaceOpen", {fails(kIOReturnNotPermitted), fails(kIOReturnExclusiveAccess), fails(kIOReturnNoDevice)}},
        {"USBInterfaceClose", {after(kIOReturnNoDevice)}},
        {"SetAlternateInterface", {fails(kIOReturnNotFound)}},
        {"GetNumEndpoints", {fails(kIOReturnNoDevice), gives(0)}},
        {"GetPipeProperties", {fails(kIOUSBUnknownPipeErr), fails(kIOReturnNoDevice)}},
        {"GetPipeStatus", {fails(kIOUSBPipeStalled), fails(kIOReturnNoDevice), fails(kIOReturnUnsupported)}},
        {"ClearPipeStallBothEnds", {fails(kIOUSBUnknownPipeErr), fails(kIOReturnNoDevice)}},
        {"WritePipe",
         {fails(kIOReturnNoDevice), fails(kIOReturnNotResponding), fails(kIOUSBPipeStalled), after(kIOReturnIOError),
          stops(kIOReturnAborted)}},
        {"ReadPipe",
         {fails(kIOReturnNoDevice), fails(kIOReturnNotResponding), fails(kIOUSBPipeStalled), gives(0), gives(1), gives(256),
          stops(kIOReturnAborted)}},
        {"Release", {}},
        {"create", {fails()}},
        {"sleep", {}},
        {"print", {}},
        {"flush", {}},
    };
    for (CallKind &kind : kinds)
        kind.failures.push_back(stops(0));
    kinds.push_back({"memory", {fails()}}); // a stop meanwhile is one in the call before
    return kinds;
}

const CallKind &kindOf(const char *call) {
    static const std::vector<CallKind> kinds = makeKinds();
    for (const CallKind &kind : kinds)
        if (strcmp(kind.name, call) == 0) return kind;
    fprintf(stderr, "no failures are known of %s\n", call);
    abort();
}

/// An errno by its name, IOKit codes as they are known, others as numbers.
std::string nameOfCode(long code) {
    if (const char *name = code > 0 ? strerrorname_np(static_cast<int>(code)) : nullptr) return name;
    char text[32];
    snprintf(text, sizeof text, code < INT16_MIN ? "%08x" : "%d", static_cast<unsigned>(code));
    return text;
}

} // namespace

std::string Injection::name() const {
    constexpr const char *kEffects[] = {"none", "fails", "fails-after", "gives"};
    constexpr const char *kReaches[] = {"", ",lasting", ",then-all"};
    const auto [effect, code] = failure.ending;
    std::string text = failure.stops ? "stop" : kEffects[static_cast<size_t>(effect)];
    if (effect == Effect::gives) {
        text += "-" + std::to_string(code);
    } else if (code != 0) {
        text += "-" + nameOfCode(code);
    }
    return text + kReaches[static_cast<size_t>(reach)];
}

Faults::Faults(const Injection &injection) : injection_(injection) {
    kindOf("open"); // the table is made before memory can be refused
    trace_.reserve(1024);
    current = this;
}

Faults::~Faults() { current = nullptr; }

Ending Faults::enter(const char *call) noexcept {
    const Ending ending = next(call);
    ++inBackend_;
    return ending;
}

Ending Faults::next(const char *call) noexcept {
    if (!active_) return {};
    const CallKind &kind = kindOf(call);
    ++inBackend_; // the trace is the test's
    trace_.push_back(&kind);
    --inBackend_;
    const size_t number = trace_.size();
    if (number > kMostCalls) abort();
    if (injection_.call == 0 || number < injection_.call) return {};
    const Failure &failure = injection_.failure;
    if (number == injection_.call) {
        if (failure.stops) {
            stopped_ = true;
            ORB_hostStop();
        }
        return failure.ending;
    }
    if (injection_.reach == Reach::once) return {};
    if (&kind == trace_[injection_.call - 1]) return failure.lasting ? failure.ending : Ending{};
    const bool all = injection_.reach == Reach::allCalls && !kind.failures.empty() && kind.failures[0].lasting;
    return all ? kind.failures[0].ending : Ending{};
}

bool Faults::memoryIsGiven() noexcept {
    if (current == nullptr || !current->active_ || current->inBackend_ != 0) return true;
    return current->next("memory").effect == Effect::none;
}

} // namespace sweep
