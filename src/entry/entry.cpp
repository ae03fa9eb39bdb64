// The entry and its table of services: the one file that knows all subsystems. Services without a subsystem are here.
#include "orb/vectorix.h"

#include "hardclip/serial_query.h"
#include "hardclip/usb_query.h"
#include "platform/corefoundation/corefoundation.h"
#include "platform/posix/console.h"
#include "platform/posix/stop.h"
#include "plot/print_service.h"
#include "record/state.h"
#include "record/status_text.h"
#include "serial/discovery.h"
#include "serial/link.h"
#include "serial/open_ports.h"
#include "usb/device.h"
#include "usb/link.h"
#include "usb/plotter_table.h"

CFBooleanRef gORB_verboseBasicMode = 0;
CFBooleanRef gORB_verboseListMode = 0;
CFBooleanRef gORB_verbosePlotMode = 0;
CFBooleanRef gORB_verboseReadMode = 0;

// The services that concern no subsystem: they only write the record. Service 1 is not reached from the entry.

extern "C" int32_t ORB_VectorixService1() {
    answer().ORB_lastService = 1;
    answer().ORB_errorID = kORB_ErrorService1;
    return 0;
}

extern "C" int32_t ORB_VectorixService14() {
    answer().ORB_lastService = 14;
    return 0;
}

namespace {

/// What belongs to one call of the entry, from its record's arrival to its return.
class Call {
public:
    Call() noexcept {
        platform::beginCall();
        platform::beginObjectEpoch();
        beginStatusDeferral();
        serial::beginCall();
    }
    Call(const Call &) = delete;
    Call &operator=(const Call &) = delete;

    /// Before the record is handed back: its status text becomes a string, and ports that it does not hold are closed.
    ~Call() {
        endStatusDeferral();
        serial::endCall(answer().ORB_portFD);
        platform::endObjectEpoch();
        posix::flushConsole();
        platform::endCall();
    }
};

void presetNoError() { answer().ORB_errorID = kORB_NoError; }
void presetZero() { answer().ORB_errorID = 0; }

void presetQuery() {
    answer().ORB_HARDC_1 = 0.0;
    answer().ORB_HARDC_2 = 0.0;
    answer().ORB_HARDC_3 = 0.0;
    answer().ORB_HARDC_4 = 0.0;
    presetNoError();
}

void presetUnknown() {
    answer().ORB_lastService = 0;
    answer().ORB_errorID = 0;
}

void showFailure(const char *service, int32_t result) {
    if (result == 0 && answer().ORB_errorID == kORB_NoError) return;
    posix::printf("[main] %s returns an error %d\n", service, result);
    posix::printf("[main] & ORB_error ID %d\n", answer().ORB_errorID);
}

void showPrintFailure(int32_t result) { showFailure("ORB_VectorixService17", result); }
void showPreparationFailure(int32_t result) { showFailure("ORB_VectorixService8", result); }

void showListFailure(int32_t result) {
    if (result == 0 && answer().ORB_errorID == kORB_NoError) return;
    if (answer().ORB_errorID == kORB_ErrorNoPort) {
        posix::printf("[main foundation] Service3 returns ORB_error ID %d\n", answer().ORB_errorID);
        return;
    }
    posix::printf("[main foundation] Service3 returns an error %d\n", result);
    posix::printf("[main foundation] & ORB_error ID %d\n", answer().ORB_errorID);
}

void showNoPlotter(int32_t result) {
    if (answer().ORB_errorID != kORB_ErrorNoPort) return;
    posix::printf("[main foundation] No valid USB device found, error %d\n", result);
}

/// One row of the table of services. What a row leaves out is not done.
struct Service {
    uint32_t number;
    void (*preset)() = nullptr; ///< sets fields before anything else
    const char *lines[2] = {};  ///< printed before the call
    int32_t (*call)() = nullptr;
    void (*afterwards)(int32_t result) = nullptr;
};

constexpr Service kServices[] = {
    {1, presetNoError},
    {2, nullptr, {}, ORB_VectorixService2, showNoPlotter},
    {3, nullptr, {}, ORB_VectorixService3, showListFailure},
    {4, nullptr, {" [S4] called by ORB Vectorix.  this is a ghost : it does nothing"}},
    {5, presetNoError, {" [S5] called by ORB Vectorix"}, ORB_VectorixService5},
    {6, presetNoError, {" [S6] called by ORB Vectorix, but this service is a ghost : it does nothing"}},
    {7, presetQuery, {}, ORB_VectorixService7},
    {8, nullptr, {" [S8] called by ORB Vectorix"}, ORB_VectorixService8, showPreparationFailure},
    {9, nullptr, {" [S9] called by ORB Vectorix"}, ORB_VectorixService9},
    {10, nullptr, {" [S10] called by ORB Vectorix"}, ORB_VectorixService10},
    {11, nullptr, {" [S11] called by ORB Vectorix"}, ORB_VectorixService11},
    {12},
    {14, presetZero, {" [S14] called by ORB Vectorix"}, ORB_VectorixService14},
    {17, presetNoError, {" [S17] called by ORB Vectorix"}, ORB_VectorixService17, showPrintFailure},
    {18,
     nullptr,
     {" [S18] called by ORB Vectorix",
      "[VECTORIX FOUNDATION] : ORB_VectorixService18 does nothing at this stage of developements"}},
};
constexpr Service kUnknownService = {0, presetUnknown};

const Service &findService(uint32_t number) {
    for (const Service &service : kServices) {
        if (service.number == number) return service;
    }
    return kUnknownService;
}

void run(const Service &service) {
    if (service.preset) service.preset();
    for (const char *line : service.lines) {
        if (line) posix::puts(line);
    }
    if (!service.call) return;
    int32_t result = service.call();
    if (service.afterwards) service.afterwards(result);
}

} // namespace

extern "C" ORB_ServiceRecord ORB_getVectorixCS2(ORB_ServiceRecord record) {
    answer() = record;
    gORB_verboseBasicMode = kCFBooleanTrue;
    gORB_verboseListMode = kCFBooleanTrue;
    gORB_verbosePlotMode = kCFBooleanTrue;
    gORB_verboseReadMode = kCFBooleanFalse;
    {
        Call call;
        run(findService(answer().ORB_serviceNumber));
    }
    gORB_FoundationAnswer = answer();
    return gORB_FoundationAnswer;
}
