// The system's registry of devices: the class that answers for it, and the IOKit names under which the plug-in asks.
//
// Everything handed out is counted by the registry and has to be released; the owners at the end of this file do that.
#pragma once

#include "platform/backends.h"
#include "platform/corefoundation/corefoundation.h"
#include "platform/iokit/io_return.h"
#include "platform/iokit/usb_interfaces.h"

#include <cstdint>
#include <map>
#include <string>
#include <utility>

using io_object_t = uint32_t;                                  // 0 = none
using mach_port_t = uint32_t;                                  // 0 = none
using MatchingDictionary = std::map<std::string, std::string>; // a search with an empty one fails

namespace platform {

/// Services and their properties. Objects are counted by the registry: each one handed out is released once. No call opens a
/// device; none blocks.
class IORegistry {
public:
    virtual ~IORegistry() = default;
    virtual IOReturn masterPort(mach_port_t *port) = 0;
    virtual IOReturn deallocatePort(mach_port_t port) = 0;
    /// A dictionary that matches services of a class: IOSerialBSDClient, IOUSBDevice, IOUSBInterface. False when there is
    /// none.
    virtual bool matching(const char *className, MatchingDictionary *dictionary) = 0;
    virtual IOReturn matchingServices(mach_port_t port, const MatchingDictionary &dictionary, io_object_t *iterator) = 0;
    /// 0 when the iterator is through.
    virtual io_object_t next(io_object_t iterator) = 0;
    virtual IOReturn release(io_object_t object) = 0;
    /// A new CoreFoundation object; 0 when the service has no such property.
    virtual CFTypeRef createProperty(io_object_t service, const char *key) = 0;
    virtual IOReturn createPlugIn(io_object_t service, const UUIDBytes &type, IOCFPlugInInterface **plugIn) = 0;
    virtual IOReturn destroyPlugIn(IOCFPlugInInterface *plugIn) = 0;
};

} // namespace platform

IOReturn IOMasterPort(mach_port_t *port);
IOReturn mach_port_deallocate(mach_port_t port);
bool IOServiceMatching(const char *className, MatchingDictionary *dictionary);
IOReturn IOServiceGetMatchingServices(mach_port_t port, const MatchingDictionary &dictionary, io_object_t *iterator);
io_object_t IOIteratorNext(io_object_t iterator);
IOReturn IOObjectRelease(io_object_t object);
CFTypeRef IORegistryEntryCreateCFProperty(io_object_t service, const char *key);
IOReturn IOCreatePlugInInterfaceForService(io_object_t service, const UUIDBytes &type, IOCFPlugInInterface **plugIn);
IOReturn IODestroyPlugInInterface(IOCFPlugInInterface *plugIn);

/// The move-only owner of a service or an iterator.
class IOObject {
public:
    IOObject() = default;
    explicit IOObject(io_object_t object) noexcept : object_(object) {}
    IOObject(IOObject &&other) noexcept : object_(std::exchange(other.object_, 0)) {}
    IOObject &operator=(IOObject &&other) noexcept {
        if (this != &other) {
            reset();
            object_ = std::exchange(other.object_, 0);
        }
        return *this;
    }
    ~IOObject() { reset(); }
    io_object_t get() const noexcept { return object_; }
    explicit operator bool() const noexcept { return object_ != 0; }
    void reset() noexcept {
        if (object_ != 0) IOObjectRelease(std::exchange(object_, 0));
    }
    io_object_t *out() noexcept {
        reset();
        return &object_;
    }

private:
    io_object_t object_ = 0;
};

/// The move-only owner of a device or interface object.
template <typename Interface> class IOReference {
public:
    IOReference() = default;
    explicit IOReference(Interface *interface) noexcept : interface_(interface) {}
    IOReference(IOReference &&other) noexcept : interface_(std::exchange(other.interface_, nullptr)) {}
    IOReference &operator=(IOReference &&other) noexcept {
        if (this != &other) {
            reset();
            interface_ = std::exchange(other.interface_, nullptr);
        }
        return *this;
    }
    ~IOReference() { reset(); }
    Interface *get() const noexcept { return interface_; }
    Interface *operator->() const noexcept { return interface_; }
    explicit operator bool() const noexcept { return interface_ != nullptr; }
    void reset() noexcept {
        if (interface_) std::exchange(interface_, nullptr)->Release();
    }

private:
    Interface *interface_ = nullptr;
};
