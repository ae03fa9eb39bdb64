// The IOKit names: each asks the registry in use.
#include "platform/iokit/registry.h"

namespace {

platform::IORegistry &registry() { return *platform::backends().registry; }

} // namespace

IOReturn IOMasterPort(mach_port_t *port) { return registry().masterPort(port); }

IOReturn mach_port_deallocate(mach_port_t port) { return registry().deallocatePort(port); }

bool IOServiceMatching(const char *className, MatchingDictionary *dictionary) {
    return registry().matching(className, dictionary);
}

IOReturn IOServiceGetMatchingServices(mach_port_t port, const MatchingDictionary &dictionary, io_object_t *iterator) {
    return registry().matchingServices(port, dictionary, iterator);
}

io_object_t IOIteratorNext(io_object_t iterator) { return registry().next(iterator); }

IOReturn IOObjectRelease(io_object_t object) { return registry().release(object); }

CFTypeRef IORegistryEntryCreateCFProperty(io_object_t service, const char *key) {
    return registry().createProperty(service, key);
}

IOReturn IOCreatePlugInInterfaceForService(io_object_t service, const UUIDBytes &type, IOCFPlugInInterface **plugIn) {
    return registry().createPlugIn(service, type, plugIn);
}

IOReturn IODestroyPlugInInterface(IOCFPlugInInterface *plugIn) { return registry().destroyPlugIn(plugIn); }
