#include "stand_in/files.h"

#include <algorithm>
#include <cstring>

namespace stand_in {

bool FileStore::isOpen(const std::string &path) const {
    return std::any_of(open_.begin(), open_.end(), [&](const auto &fork) { return fork.second == path; });
}

OSErr FileStore::open(const std::string &path, ForkRefNum *fork) {
    const Step step(fate_, Seam::files, "FSOpenFork");
    if (step.fails()) return step.code<OSErr>();
    if (!files.contains(path)) return fnfErr;
    ForkRefNum ref = 1;
    while (open_.contains(ref))
        ++ref;
    open_[ref] = path;
    ++openForks;
    *fork = ref;
    return noErr;
}

OSErr FileStore::size(ForkRefNum fork, int64_t *bytes) {
    const Step step(fate_, Seam::files, "FSGetForkSize");
    if (sizeResult != noErr) return sizeResult;
    return step.store<OSErr>(bytes, static_cast<int64_t>(files[open_.at(fork)].size()));
}

OSErr FileStore::read(ForkRefNum fork, int64_t offset, ByteCount count, void *buffer, ByteCount *actual) {
    const Step step(fate_, Seam::files, "FSReadFork");
    if (step.fails()) return step.code<OSErr>();
    if (onRead) {
        if (OSErr result = onRead(offset); result != noErr) return result;
    }
    const std::string &bytes = files[open_.at(fork)];
    const size_t from = std::min(static_cast<size_t>(offset), bytes.size());
    *actual = std::min<ByteCount>(step.failsAfter() ? count / 2 : count, bytes.size() - from);
    memcpy(buffer, bytes.data() + from, *actual);
    if (step.failsAfter()) return step.code<OSErr>();
    return *actual == count ? noErr : eofErr;
}

OSErr FileStore::close(ForkRefNum fork) {
    const Step step(fate_, Seam::files, "FSCloseFork");
    if (open_.erase(fork) == 0) fate_.misuse("fork " + std::to_string(fork) + " closed, which is not open");
    --openForks;
    return step.result<OSErr>();
}

} // namespace stand_in
