// A data fork open for reading: closed when its owner goes, read with the retries that both readers of forks make (the job
// file's and the plot file's).
#pragma once

#include "platform/files/file_manager.h"

class OpenFork {
public:
    static constexpr int kReadAttempts = 11;

    OpenFork() = default;
    OpenFork(const OpenFork &) = delete;
    OpenFork &operator=(const OpenFork &) = delete;
    ~OpenFork() {
        if (fork_ != 0) FSCloseFork(fork_);
    }

    /// Gets the fork's name, opens it and reads its size. On failure failedCall() names the call.
    OSErr open(const ORB_FSRef &file) {
        HFSUniStr255 name;
        failedCall_ = "FSGetDataForkName";
        if (OSErr result = FSGetDataForkName(&name); result != noErr) return result;
        return open(file, name);
    }

    /// As above, with the name already known.
    OSErr open(const ORB_FSRef &file, const HFSUniStr255 &name) {
        failedCall_ = "FSOpenFork";
        if (OSErr result = FSOpenFork(&file, name.length, name.unicode, fsRdPerm, &fork_); result != noErr) {
            fork_ = 0;
            return result;
        }
        failedCall_ = "FSGetForkSize";
        return FSGetForkSize(fork_, &size_);
    }

    const char *failedCall() const noexcept { return failedCall_; }
    /// Bytes, as found when the fork was opened.
    int64_t size() const noexcept { return size_; }
    bool isOpen() const noexcept { return fork_ != 0; }

    /// Reads count bytes at offset, back to back up to eleven times; failed is called after each attempt that failed.
    template <typename Failed> OSErr read(int64_t offset, ByteCount count, void *buffer, Failed failed) {
        OSErr result = noErr;
        for (int attempt = 0; attempt < kReadAttempts; ++attempt) {
            ByteCount actual = 0;
            result = FSReadFork(fork_, fsFromStart, offset, count, buffer, &actual);
            if (result == noErr) break;
            failed(result);
        }
        return result;
    }

private:
    ForkRefNum fork_ = 0;
    int64_t size_ = 0;
    const char *failedCall_ = "";
};
