// A search through the registry's services of one class, for serial ports, USB devices and USB interfaces alike.
//
// A search obtains a port, an iterator and a service for each step, and may fail at each of them: here they are released on
// every way out, and the identifiers of its failures are set in one place.
#pragma once

#include "platform/iokit/registry.h"

#include <cstdint>

class ServiceSearch {
public:
    ServiceSearch() = default;
    ServiceSearch(const ServiceSearch &) = delete;
    ServiceSearch &operator=(const ServiceSearch &) = delete;
    ~ServiceSearch();

    /// Finds the services of a class, those with property == value when property is given. False when that failed:
    /// ORB_errorID is 22002, 22003 or 28017 then, and *status what the caller returns. ORB_deviceCount becomes 0, but not
    /// with 22002.
    bool begin(const char *className, int32_t *status, const char *property = nullptr, const char *value = nullptr);

    /// The next service; none when the search is through.
    IOObject next() { return IOObject(IOIteratorNext(iterator_.get())); }

private:
    mach_port_t port_ = 0;
    IOObject iterator_;
};

/// The interface of a service, through its plug-in; none when the plug-in (ORB_errorID becomes plugInFailed) or the
/// interface cannot be made. *status receives the result of the last plug-in call.
IOUnknown *queryService(const IOObject &service, const UUIDBytes &plugInType, const UUIDBytes &interfaceID,
                        int32_t plugInFailed, int32_t *status);

template <typename Interface>
IOReference<Interface> queryServiceAs(const IOObject &service, const UUIDBytes &plugInType, const UUIDBytes &interfaceID,
                                      int32_t plugInFailed, int32_t *status) {
    return IOReference<Interface>(
        static_cast<Interface *>(queryService(service, plugInType, interfaceID, plugInFailed, status)));
}
