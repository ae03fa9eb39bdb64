// The platform in use: one backend per seam class. The process starts with Linux's; tests install scripted ones.
#pragma once

namespace platform {

class Clock;
class Console;
class CreationGate;
class FileStore;
class IORegistry;
class Terminal;

struct Backends {
    Terminal *terminal;
    Clock *clock;
    Console *console;
    FileStore *files;
    CreationGate *objects;
    IORegistry *registry;
};

/// The backends in use. Never holds a null pointer.
Backends &backends() noexcept;

} // namespace platform
