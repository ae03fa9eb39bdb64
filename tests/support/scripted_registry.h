// A registry of devices as data: USB plotters and serial ports. Every call that a device could see is logged, any call can
// be made to fail, and whatever is not released fails the test.
#pragma once

#include "platform/iokit/registry.h"
#include "support/script.h"

#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace scripted {

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

/// The calls that take an Outcome, by IOKit's names: IOMasterPort, IOServiceMatching (a failure gives no dictionary),
/// IOServiceGetMatchingServices, IOCreatePlugIn, IODestroyPlugIn, QueryInterface, and the methods of devices and interfaces.
class Registry : public platform::IORegistry, public Script {
public:
    explicit Registry(Log &sharedLog) : log(sharedLog) {}
    ~Registry() override;

    std::vector<UsbDevice> devices;
    std::vector<std::map<std::string, std::string>> serialPorts; ///< properties of each
    std::vector<Endpoint> endpoints = {{0, 1, 2}, {1, 2, 2}};    ///< of every interface; pipe references 1, 2 …
    std::string written;                                         ///< all bytes that any interface took
    std::deque<std::string> replies;                             ///< what reads give; empty: kIOReturnNotResponding
    std::function<void(std::string_view)> onWrite;               ///< called in each write, with its text
    Log &log;

    /// Objects, plug-ins and interfaces that nobody has released yet.
    int outstanding = 0;

    IOReturn masterPort(mach_port_t *port) override;
    IOReturn deallocatePort(mach_port_t port) override;
    bool matching(const char *className, MatchingDictionary *dictionary) override;
    IOReturn matchingServices(mach_port_t port, const MatchingDictionary &dictionary, io_object_t *iterator) override;
    io_object_t next(io_object_t iterator) override;
    IOReturn release(io_object_t object) override;
    CFTypeRef createProperty(io_object_t service, const char *key) override;
    IOReturn createPlugIn(io_object_t service, const UUIDBytes &type, IOCFPlugInInterface **plugIn) override;
    IOReturn destroyPlugIn(IOCFPlugInInterface *plugIn) override;

    /// The scripted outcome of a call, or success.
    IOReturn outcomeOf(const std::string &call);

private:
    struct Service {
        const UsbDevice *device = nullptr;
        const std::map<std::string, std::string> *port = nullptr;
    };
    std::map<io_object_t, std::deque<Service>> iterators_;
    std::map<io_object_t, Service> services_;
    io_object_t nextObject_ = 1;
};

} // namespace scripted
