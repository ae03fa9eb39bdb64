// A platform of data: devices and files in memory, and time that does not pass. All that the plug-in can reach is in here,
// so that a test sees each call and no call leaves the process.
#pragma once

#include "platform/backends.h"
#include "platform/corefoundation/corefoundation.h"
#include "platform/files/file_manager.h"
#include "platform/posix/clock.h"
#include "platform/posix/console.h"
#include "platform/posix/stop.h"
#include "stand_in/fate.h"
#include "stand_in/registry.h"
#include "stand_in/terminal.h"

#include <algorithm>
#include <cstring>
#include <functional>
#include <map>
#include <string>
#include <string_view>

namespace stand_in {

/// Time that adds up and never waits.
struct Clock final : platform::Clock {
    unsigned slept = 0;

    void sleep(unsigned seconds) override {
        if (platform::stopRequested()) fate().misuse("a sleep was begun after the stop");
        const Step step(Seam::Other, "sleep");
        if (platform::stopRequested()) return; // it cuts the sleep short
        slept += seconds;
        step.log(seconds);
    }
};

/// Lines kept: `out` and `err`, and in the log as "out …" and "err …" a line each.
struct Console final : platform::Console {
    std::string out, err;

    void print(std::string_view text, bool isError) override {
        const Step step(Seam::Other, "print");
        (isError ? err : out) += text;
        if (fate().keepsLog) fate().log.push_back((isError ? "err " : "out ") + quoted(text));
    }
    void flush() override {}
};

/// Files by path. Nothing is looked up on disk: a file reference made for a path that does not exist there
/// (platform::internFSRef) leads here all the same.
struct FileStore final : platform::FileStore {
    std::map<std::string, std::string> files;
    std::map<ForkRefNum, std::string> openForks;
    std::function<OSErr(int64_t offset)> onRead; ///< noErr lets the read pass
    OSErr sizeResult = noErr;

    OSErr open(const std::string &path, ForkRefNum *fork) override {
        const Step step(Seam::Files, "FSOpenFork");
        if (step.fails()) return step.code<OSErr>();
        if (!files.contains(path)) return fnfErr;
        *fork = static_cast<ForkRefNum>(openForks.empty() ? 1 : openForks.rbegin()->first + 1);
        openForks[*fork] = path;
        return noErr;
    }
    OSErr size(ForkRefNum fork, int64_t *bytes) override {
        const Step step(Seam::Files, "FSGetForkSize");
        if (sizeResult != noErr) return sizeResult;
        return step.store<OSErr>(bytes, static_cast<int64_t>(files[openForks.at(fork)].size()));
    }
    OSErr read(ForkRefNum fork, int64_t offset, ByteCount count, void *buffer, ByteCount *actual) override {
        const Step step(Seam::Files, "FSReadFork");
        if (step.fails()) return step.code<OSErr>();
        if (const OSErr result = onRead ? onRead(offset) : OSErr{noErr}; result != noErr) return result;
        const std::string &bytes = files[openForks.at(fork)];
        const size_t from = std::min(static_cast<size_t>(offset), bytes.size());
        *actual = std::min<ByteCount>(step.failsAfter() ? count / 2 : count, bytes.size() - from);
        memcpy(buffer, bytes.data() + from, *actual);
        if (step.failsAfter()) return step.code<OSErr>();
        return *actual == count ? noErr : eofErr;
    }
    OSErr close(ForkRefNum fork) override {
        const Step step(Seam::Files, "FSCloseFork");
        if (openForks.erase(fork) == 0) fate().misuse("a fork was closed that is not open");
        return step.result<OSErr>();
    }
};

/// Makes the n-th creation from now fail (1 = the next), or every one from the n-th on.
struct CreationGate final : platform::CreationGate {
    int failAt = 0;
    bool failAllAfter = false;
    int creations = 0;

    bool mayCreate() override {
        const Step step(Seam::Other, "create");
        ++creations;
        return !step.fails() && (failAt == 0 || (failAllAfter ? creations < failAt : creations != failAt));
    }
};

/// Installs one of each for its lifetime, and puts back what was installed before.
class Platform : public Fate {
public:
    Platform() { platform::backends() = {&terminal, &clock, &console, &files, &objects, &registry}; }
    ~Platform() override { platform::backends() = before_; }

    Terminal terminal;
    Clock clock;
    Console console;
    FileStore files;
    CreationGate objects;
    Registry registry;

private:
    const platform::Backends before_ = platform::backends();
};

} // namespace stand_in
