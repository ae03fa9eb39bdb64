#include "serial/discovery.h"

#include "platform/corefoundation/corefoundation.h"
#include "platform/posix/console.h"
#include "record/service_search.h"
#include "record/state.h"

#include <algorithm>

namespace {

constexpr int32_t kSlots = 6;
constexpr int32_t kMostPorts = 7;  // one more than there are slots
constexpr uint32_t kPathRoom = 40; // with the NUL

/// True when the path fits its room; sets ORB_errorID when it does not.
bool fits(CFStringRef path) {
    char converted[kPathRoom];
    if (CFStringGetCString(path, converted, sizeof converted, kCFStringEncodingMacRoman)) return true;
    answer().ORB_errorID = kORB_ErrorPathNameTooLong;
    return false;
}

void store(CFStringRef &slot, const CFRef &name) {
    CFRelease(slot);
    slot = CFStringCreateCopy(name.get());
}

/// Lists one port; false when the scan ends here.
bool list(const IOObject &service) {
    ORB_ServiceRecord &record = answer();
    CFRef name(IORegistryEntryCreateCFProperty(service.get(), "IOTTYDevice"));
    if (!name) {
        posix::puts("return as ORB_IOproperty1 == (CFStringRef) NULL");
        return false;
    }
    CFRef callout(IORegistryEntryCreateCFProperty(service.get(), "IOCalloutDevice"));
    if (!callout || !fits(callout.get())) return false;
    CFRef dialin(IORegistryEntryCreateCFProperty(service.get(), "IODialinDevice"));
    if (!dialin || !fits(dialin.get())) return false;

    ++record.ORB_deviceCount;
    record.ORB_errorID = kORB_NoError;
    const int32_t slot = std::min(record.ORB_deviceCount, kSlots) - 1;
    store(record.ORB_CFSTR_TTYDevice[slot], name);
    store(record.ORB_CFSTR_CalloutDevice[slot], callout);
    store(record.ORB_CFSTR_DialinDevice[slot], dialin);
    return true;
}

} // namespace

extern "C" int32_t ORB_VectorixService3() {
    answer().ORB_lastService = 3;
    return ORB_SerialgetServices();
}

extern "C" int32_t ORB_SerialgetServices() {
    answer().ORB_errorID = kORB_ErrorNoPort;
    answer().ORB_deviceCount = 0;
    int32_t status = kIOReturnSuccess;
    ServiceSearch search;
    if (!search.begin("IOSerialBSDClient", &status, "IOSerialBSDClientType", "IORS232SerialStream")) return status;
    while (answer().ORB_deviceCount < kMostPorts) {
        IOObject service = search.next();
        if (!service || !list(service)) break;
    }
    return 0;
}
