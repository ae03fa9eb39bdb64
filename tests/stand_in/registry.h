// A registry of devices as data: USB plotters and serial ports. It counts what it hands out: whatever was not released shows
// as a number above 0.
#pragma once

#include "platform/iokit/registry.h"
#include "stand_in/fate.h"
#include "stand_in/wire.h"

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace stand_in {

struct UsbDevice {
    uint16_t vendor = 0, product = 0;
    uint32_t location = 0;
    std::vector<uint8_t> configurations = {1}; ///< their bConfigurationValue
    int interfaces = 1;
    bool hasProperties = true;
};

struct Endpoint {
    uint8_t direction = 0, number = 0, transferType = 2;
};

/// Calls have IOKit's names: IOMasterPort, IOServiceMatching (a failure gives no dictionary), IOServiceGetMatchingServices,
/// IOCreatePlugIn, IODestroyPlugIn, QueryInterface, and the methods of devices and interfaces. A read without replies gives
/// kIOReturnNotResponding.
class Registry final : public platform::IORegistry, public Wire {
public:
    explicit Registry(Fate &platformsFate) : fate(platformsFate) {}

    std::vector<UsbDevice> devices;
    std::vector<std::map<std::string, std::string>> serialPorts; ///< properties of each
    std::vector<Endpoint> endpoints = {{0, 1, 2}, {1, 2, 2}};    ///< of every interface; pipe references 1, 2 …

    /// Objects, plug-ins and interfaces that nobody has released yet.
    int outstanding = 0;
    Fate &fate;

    IOReturn masterPort(mach_port_t *port) override;
    IOReturn deallocatePort(mach_port_t port) override;
    bool matching(const char *className, MatchingDictionary *dictionary) override;
    IOReturn matchingServices(mach_port_t port, const MatchingDictionary &dictionary, io_object_t *iterator) override;
    io_object_t next(io_object_t iterator) override;
    IOReturn release(io_object_t object) override;
    CFTypeRef createProperty(io_object_t service, const char *key) override;
    IOReturn createPlugIn(io_object_t service, const UUIDBytes &type, IOCFPlugInInterface **plugIn) override;
    IOReturn destroyPlugIn(IOCFPlugInInterface *plugIn) override;

private:
    struct Service {
        const UsbDevice *device = nullptr;
        const std::map<std::string, std::string> *port = nullptr;
    };
    std::map<io_object_t, std::vector<Service>> iterators_;
    std::map<io_object_t, Service> services_;
    io_object_t nextObject_ = 1;
};

} // namespace stand_in
