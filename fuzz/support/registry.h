// A registry in memory: serial ports, and USB plotters of one model.
#pragma once

#include "platform/iokit/registry.h"
#include "support/wire.h"

#include <cstdint>
#include <map>

namespace fuzz {

class Registry final : public platform::IORegistry {
public:
    explicit Registry(Wire &wire) : wire(wire) {}

    Wire &wire;
    uint16_t vendor = 0x0B75, product = 7;
    size_t plotters = 1, ports = 1;
    uint8_t endpoints = 2; ///< of an interface: out, in, out, in …
    /// Everything that is handed out and to be given back; the interface that stays open between calls is one.
    int outstanding = 0;

    static uint32_t locationOf(size_t plotter) { return static_cast<uint32_t>(5 + plotter); }
    /// As the weather has it.
    IOReturn outcome();

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
    struct Iterator {
        size_t next, end;
    };
    std::map<io_object_t, Iterator> iterators_;
    io_object_t nextIterator_ = 1000; // smaller numbers are services: 1 and up
};

} // namespace fuzz
