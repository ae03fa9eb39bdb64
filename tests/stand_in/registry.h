// A registry of devices as data: USB plotters and serial ports. It counts what it hands out: whatever was not released shows
// as a number above 0.
#pragma once

#include "platform/corefoundation/corefoundation.h"
#include "platform/iokit/registry.h"
#include "stand_in/fate.h"
#include "stand_in/terminal.h"

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace stand_in {

/// One of vendor 0 has no properties.
struct UsbDevice {
    uint16_t vendor = 0, product = 0;
    uint32_t location = 0;
    std::vector<uint8_t> configurations = {1}; ///< their bConfigurationValue
};

struct Endpoint {
    uint8_t direction = 0, number = 0, transferType = 2;
};

struct Registry;

/// What hands out devices and interfaces; these check how they are used, such as a device released while it is open.
IOCFPlugInInterface *makePlugIn(Registry &registry, const UsbDevice &device);

/// Calls have IOKit's names: IOMasterPort, IOServiceMatching (a failure gives no dictionary), IOServiceGetMatchingServices,
/// IOCreatePlugIn, IODestroyPlugIn, QueryInterface, and the methods of devices and interfaces. A read without replies gives
/// kIOReturnNotResponding.
struct Registry final : platform::IORegistry, Wire {
    std::vector<UsbDevice> devices;
    std::vector<std::map<std::string, std::string>> serialPorts; ///< properties of each
    std::vector<Endpoint> endpoints = {{0, 1, 2}, {1, 2, 2}};    ///< of every interface; pipe references 1, 2 …

    /// Objects, plug-ins and interfaces that nobody has released yet.
    int outstanding = 0;

    IOReturn masterPort(mach_port_t *port) override {
        return handOut("IOMasterPort", [&] { *port = kMasterPort; });
    }
    IOReturn deallocatePort(mach_port_t port) override { return takeBack("mach_port_deallocate", port == kMasterPort); }
    bool matching(const char *className, MatchingDictionary *dictionary) override {
        const Step step(Seam::Registry, "IOServiceMatching");
        if (step.fails()) return false;
        (*dictionary)["class"] = className;
        return true;
    }
    IOReturn matchingServices(mach_port_t, const MatchingDictionary &dictionary, io_object_t *iterator) override {
        return handOut("IOServiceGetMatchingServices", [&] {
            *iterator = nextObject_++;
            std::vector<Service> &found = iterators_[*iterator];
            const bool isSerial = dictionary.at("class") == "IOSerialBSDClient";
            if (isSerial && dictionary.at("IOSerialBSDClientType") != "IORS232SerialStream") fate().misuse("another search");
            for (const auto &port : serialPorts)
                if (isSerial) found.push_back({nullptr, &port});
            for (const UsbDevice &device : devices)
                if (!isSerial) found.push_back({&device});
        });
    }
    io_object_t next(io_object_t iterator) override {
        const Step step(Seam::Registry, "IOIteratorNext");
        auto &left = iterators_.at(iterator);
        if (step.fails() || left.empty()) return 0;
        services_[nextObject_] = left.front();
        left.erase(left.begin());
        ++outstanding;
        return nextObject_++;
    }
    IOReturn release(io_object_t object) override {
        return takeBack("IOObjectRelease", iterators_.erase(object) + services_.erase(object) != 0);
    }
    CFTypeRef createProperty(io_object_t service, const char *key) override {
        const Step step(Seam::Registry, "IORegistryEntryCreateCFProperty");
        if (step.fails()) return 0;
        if (step.gives()) { // a text of that length, or for 0 a number instead of a text
            const auto length = step.code<size_t>();
            return length == 0 ? CFNumberCreateInt64(0) : CFStringCreateWithUTF8(std::string(length, 'x'));
        }
        const Service &found = services_.at(service);
        if (found.device) return found.device->vendor == 0 ? 0 : CFStringCreateWithUTF8("present");
        const auto property = found.port->find(key);
        return property == found.port->end() ? 0 : CFStringCreateWithUTF8(property->second);
    }
    IOReturn createPlugIn(io_object_t service, const UUIDBytes &, IOCFPlugInInterface **plugIn) override {
        return handOut("IOCreatePlugIn", [&] { *plugIn = makePlugIn(*this, *services_.at(service).device); });
    }
    IOReturn destroyPlugIn(IOCFPlugInInterface *plugIn) override {
        delete plugIn;
        return takeBack("IODestroyPlugIn", true);
    }

    /// A call that gives something to be released; one that is scripted to give a value succeeds without giving anything.
    template <typename Make> IOReturn handOut(const char *call, Make make) {
        const Step step(Seam::Registry, call);
        if (step.gives()) return kIOReturnSuccess;
        if (step.fails()) return step.code<IOReturn>();
        make();
        ++outstanding;
        return step.result<IOReturn>();
    }
    IOReturn takeBack(const char *call, bool isOurs) {
        const Step step(Seam::Registry, call);
        if (!isOurs) fate().misuse(std::string(call) + " of what is not handed out");
        --outstanding;
        return step.result<IOReturn>();
    }

private:
    struct Service {
        const UsbDevice *device = nullptr;
        const std::map<std::string, std::string> *port = nullptr;
    };
    std::map<io_object_t, std::vector<Service>> iterators_;
    std::map<io_object_t, Service> services_;
    static constexpr mach_port_t kMasterPort = 77;
    io_object_t nextObject_ = 1;
};

} // namespace stand_in
