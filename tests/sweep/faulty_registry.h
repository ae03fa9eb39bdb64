// A registry around another one: each call on it, and on the objects that it gives, may fail.
#pragma once

#include "support/scripted_registry.h"
#include "sweep/faults.h"
#include "sweep/ledger.h"

#include <functional>

namespace sweep {

/// What the objects of a registry share with it.
struct Surroundings {
    Faults &faults;
    Ledger &ledger;

    template <typename Inner, typename Method, typename... Arguments>
    IOReturn pass(const char *call, Inner &inner, Method method, Arguments... arguments) const {
        const Step step(faults, call);
        if (step.fails()) return step.code<IOReturn>();
        const IOReturn result = std::invoke(method, inner, arguments...);
        return step.failsAfter() ? step.code<IOReturn>() : result;
    }
    /// For a call that stores a value: a fault may put another one there.
    template <typename Inner, typename Method, typename Value>
    IOReturn passValue(const char *call, Inner &inner, Method method, Value *value) const {
        const Step step(faults, call);
        if (step.fails()) return step.code<IOReturn>();
        const IOReturn result = std::invoke(method, inner, value);
        if (step.gives()) *value = step.code<Value>();
        return result;
    }
};

class FaultyRegistry final : public platform::IORegistry {
    using Inner = scripted::Registry;

public:
    FaultyRegistry(Faults &faults, Inner &inner, Ledger &ledger) : around_{faults, ledger}, inner_(inner) {}

    IOReturn masterPort(mach_port_t *port) override {
        return around_.pass("IOMasterPort", inner_, &Inner::masterPort, port);
    }
    IOReturn deallocatePort(mach_port_t port) override {
        return around_.pass("mach_port_deallocate", inner_, &Inner::deallocatePort, port);
    }
    bool matching(const char *className, MatchingDictionary *dictionary) override {
        const Step step(around_.faults, "IOServiceMatching");
        return !step.fails() && inner_.matching(className, dictionary);
    }
    IOReturn matchingServices(mach_port_t port, const MatchingDictionary &dictionary, io_object_t *iterator) override {
        return around_.pass("IOServiceGetMatchingServices", inner_, &Inner::matchingServices, port, std::cref(dictionary),
                            iterator);
    }
    io_object_t next(io_object_t iterator) override {
        const Step step(around_.faults, "IOIteratorNext");
        return step.fails() ? 0 : inner_.next(iterator);
    }
    IOReturn release(io_object_t object) override {
        return around_.pass("IOObjectRelease", inner_, &Inner::release, object);
    }
    CFTypeRef createProperty(io_object_t service, const char *key) override;
    IOReturn createPlugIn(io_object_t service, const UUIDBytes &type, IOCFPlugInInterface **plugIn) override;
    IOReturn destroyPlugIn(IOCFPlugInInterface *plugIn) override;

private:
    const Surroundings around_;
    Inner &inner_;
};

} // namespace sweep
