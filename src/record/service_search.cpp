#include "record/service_search.h"

#include "record/state.h"

#include <new>

namespace {

/// False when the registry gives none, or there is no memory for the property.
bool makeDictionary(const char *className, const char *property, const char *value, MatchingDictionary *dictionary) {
    if (!IOServiceMatching(className, dictionary)) return false;
    try {
        if (property) (*dictionary)[property] = value;
        return true;
    } catch (const std::bad_alloc &) {
        return false;
    }
}

} // namespace

ServiceSearch::~ServiceSearch() {
    iterator_.reset();
    if (port_ != 0) mach_port_deallocate(port_);
}

bool ServiceSearch::begin(const char *className, int32_t *status, const char *property, const char *value) {
    ORB_ServiceRecord &record = answer();
    if (*status = IOMasterPort(&port_); *status != kIOReturnSuccess) {
        port_ = 0;
        record.ORB_errorID = kORB_ErrorMasterPort;
        return false;
    }
    record.ORB_deviceCount = 0;
    MatchingDictionary dictionary;
    if (!makeDictionary(className, property, value, &dictionary)) {
        record.ORB_errorID = kORB_ErrorMatching;
        return false;
    }
    io_object_t iterator = 0;
    if (*status = IOServiceGetMatchingServices(port_, dictionary, &iterator); *status != kIOReturnSuccess) {
        record.ORB_errorID = kORB_ErrorGetServices;
        return false;
    }
    iterator_ = IOObject(iterator);
    return true;
}

IOUnknown *queryService(const IOObject &service, const UUIDBytes &plugInType, const UUIDBytes &interfaceID,
                        int32_t plugInFailed, int32_t *status) {
    IOCFPlugInInterface *plugIn = nullptr;
    *status = IOCreatePlugInInterfaceForService(service.get(), plugInType, &plugIn);
    if (*status != kIOReturnSuccess || !plugIn) {
        if (plugIn) *status = IODestroyPlugInInterface(plugIn);
        answer().ORB_errorID = plugInFailed;
        return nullptr;
    }
    IOUnknown *interface = nullptr;
    int32_t failure = plugIn->QueryInterface(interfaceID, &interface);
    *status = IODestroyPlugInInterface(plugIn);
    if (failure != 0 && interface) {
        interface->Release();
        return nullptr;
    }
    return interface;
}
