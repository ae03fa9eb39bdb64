// The platform in use: one backend for each kind of call. The process starts with Linux's; tests put stand-ins in their
// place.
//
// This is the only switch between the two. There is none at compile time, so that what is tested is the library as it ships.
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
