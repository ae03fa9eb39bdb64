// What the registry's plug-ins hand out: devices and interfaces that check how they are used, such as a device released
// while it is open.
#pragma once

#include "stand_in/registry.h"

namespace stand_in {

class PlugIn final : public IOCFPlugInInterface {
public:
    PlugIn(Registry &registry, const UsbDevice &device) : registry_(registry), device_(device) {}
    int32_t QueryInterface(const UUIDBytes &id, IOUnknown **interface) override;

private:
    Registry &registry_;
    const UsbDevice &device_;
};

} // namespace stand_in
