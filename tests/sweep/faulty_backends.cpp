#include "sweep/faulty_backends.h"

#include "support/job.h"

#include <algorithm>

namespace sweep {

int FaultyTerminal::open(const char *path, int flags) {
    const Step step(faults_, "open");
    if (step.fails()) return failed(step);
    if (step.gives()) inner_.script("open", scripted::gives(step.code<long>()));
    return inner_.open(path, flags);
}

ssize_t FaultyTerminal::read(int fd, void *buffer, size_t size) {
    const Step step(faults_, "read");
    ++ledger_.reads;
    if (step.fails()) return failed(step);
    const ssize_t count = inner_.read(fd, buffer, step.gives() ? std::min(size, step.code<size_t>()) : size);
    if (step.gives() && step.code<size_t>() == 0) return 0;
    if (count > 0) ledger_.reply.assign(static_cast<const char *>(buffer), static_cast<size_t>(count));
    return count;
}

ssize_t FaultyTerminal::write(int fd, const void *bytes, size_t size) {
    const Step step(faults_, "write");
    const size_t room = step.gives() ? step.code<size_t>() : size;
    const ssize_t taken = step.fails() ? failed(step) : inner_.write(fd, bytes, std::min(size, room));
    ledger_.wrote(static_cast<int64_t>(size), std::max<ssize_t>(taken, 0), taken >= 0);
    return taken;
}

OSErr FaultyFiles::open(const std::string &path, ForkRefNum *fork) {
    const Step step(faults_, "FSOpenFork");
    if (step.fails()) return step.code<OSErr>();
    const OSErr result = inner_.open(path, fork);
    if (result == noErr && path == jobs::kPlotPath) ledger_.plotFork = *fork;
    return result;
}

OSErr FaultyFiles::size(ForkRefNum fork, int64_t *bytes) {
    const Step step(faults_, "FSGetForkSize");
    if (step.fails()) return step.code<OSErr>();
    const OSErr result = inner_.size(fork, bytes);
    if (step.gives()) *bytes = step.code<int64_t>();
    if (fork == ledger_.plotFork) ledger_.fileBytes = *bytes;
    return result;
}

OSErr FaultyFiles::read(ForkRefNum fork, int64_t offset, ByteCount count, void *buffer, ByteCount *actual) {
    const Step step(faults_, "FSReadFork");
    if (step.fails()) return step.code<OSErr>();
    if (fork == ledger_.plotFork) ledger_.beginPiece();
    const OSErr result = inner_.read(fork, offset, step.failsAfter() ? count / 2 : count, buffer, actual);
    return step.failsAfter() ? step.code<OSErr>() : result;
}

OSErr FaultyFiles::close(ForkRefNum fork) {
    const Step step(faults_, "FSCloseFork");
    if (fork == ledger_.plotFork) ledger_.plotFork = 0;
    const OSErr result = inner_.close(fork);
    return step.failsAfter() ? step.code<OSErr>() : result;
}

void FaultyClock::sleep(unsigned seconds) {
    const Step step(faults_, "sleep");
    if (step.stops()) return; // it cuts the sleep short
    if (faults_.stopped()) ledger_.secondsAfterStop += seconds;
    inner_.sleep(seconds);
}

FaultyPlatform::FaultyPlatform(Faults &faults, scripted::Platform &inner)
    : before_(platform::backends()), terminal_(faults, inner.terminal, ledger), files_(faults, inner.files, ledger),
      clock_(faults, inner.clock, ledger), console_(faults), gate_(faults), registry_(faults, inner.registry, ledger) {
    platform::backends() = {&terminal_, &clock_, &console_, &files_, &gate_, &registry_};
}

} // namespace sweep
