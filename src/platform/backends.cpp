#include "platform/backends.h"

#include "platform/corefoundation/corefoundation.h"
#include "platform/iokit/linux/linux_registry.h"
#include "platform/linux_backends.h"

namespace platform {

namespace {

class OpenGate final : public CreationGate {
public:
    bool mayCreate() override { return true; }
};

} // namespace

CreationGate &openGate() noexcept {
    static OpenGate gate;
    return gate;
}

Backends &backends() noexcept {
    static Backends inUse{&linuxTerminal(), &linuxClock(), &processConsole(), &linuxFiles(), &openGate(), &linuxRegistry()};
    return inUse;
}

} // namespace platform
