#include "platform/files/fsref.h"
#include "platform/linux_backends.h"
#include "platform/posix/stop.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <memory>
#include <new>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>
#include <vector>

namespace platform {

namespace {

constexpr size_t kBlockSize = 65536;
constexpr size_t kMaxForks = 1024;

class Descriptor {
public:
    explicit Descriptor(int fd) noexcept : fd_(fd) {}
    Descriptor(Descriptor &&other) noexcept : fd_(std::exchange(other.fd_, -1)) {}
    Descriptor &operator=(Descriptor &&) = delete;
    ~Descriptor() {
        if (fd_ >= 0) ::close(fd_);
    }
    int get() const noexcept { return fd_; }

private:
    int fd_;
};

/// An open file, and the block of it that was read last.
class Fork {
public:
    explicit Fork(Descriptor fd) : fd_(std::move(fd)), block_(new char[kBlockSize]) {}

    OSErr size(int64_t *bytes) const {
        struct stat status;
        if (::fstat(fd_.get(), &status) != 0) return fileErrorOf(errno);
        *bytes = status.st_size;
        return noErr;
    }

    OSErr read(int64_t offset, ByteCount count, char *buffer, ByteCount *actual) {
        *actual = 0;
        while (*actual < count) {
            const int64_t at = offset + static_cast<int64_t>(*actual);
            const ByteCount wanted = count - *actual;
            ByteCount got = fromBlock(at, wanted, buffer + *actual);
            if (got == 0) {
                const bool straight = wanted >= kBlockSize;
                const ssize_t result = straight ? readAt(at, wanted, buffer + *actual) : fillBlock(at);
                if (result < 0) return fileErrorOf(errno);
                if (result == 0) return eofErr;
                if (straight) got = static_cast<ByteCount>(result);
            }
            *actual += got;
        }
        return noErr;
    }

private:
    ByteCount fromBlock(int64_t at, ByteCount wanted, char *buffer) const {
        if (at < blockStart_ || at >= blockStart_ + static_cast<int64_t>(blockSize_)) return 0;
        const auto skip = static_cast<size_t>(at - blockStart_);
        const ByteCount count = std::min<ByteCount>(wanted, blockSize_ - skip);
        memcpy(buffer, block_.get() + skip, count);
        return count;
    }

    ssize_t fillBlock(int64_t at) {
        blockSize_ = 0;
        const ssize_t result = readAt(at, kBlockSize, block_.get());
        if (result > 0) {
            blockStart_ = at;
            blockSize_ = static_cast<size_t>(result);
        }
        return result;
    }

    ssize_t readAt(int64_t at, ByteCount count, char *buffer) const {
        constexpr ByteCount kMost = 1 << 30; // bytes of one call; the kernel gives at most 2 GiB less a page
        for (;;) {
            const ssize_t result = ::pread(fd_.get(), buffer, std::min(count, kMost), at);
            if (result >= 0 || errno != EINTR || stopRequested()) return result;
        }
    }

    Descriptor fd_;
    std::unique_ptr<char[]> block_;
    int64_t blockStart_ = 0;
    size_t blockSize_ = 0;
};

class LinuxFiles final : public FileStore {
public:
    OSErr open(const std::string &path, ForkRefNum *fork) override {
        // Looked at before it is opened: opening can act on a device (a serial port raises its modem lines).
        struct stat status;
        if (::stat(path.c_str(), &status) != 0) return fileErrorOf(errno);
        if (!S_ISREG(status.st_mode)) return errFSNotAFile;
        Descriptor fd(::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC | O_NOCTTY));
        if (fd.get() < 0) return fileErrorOf(errno);
        if (::fstat(fd.get(), &status) != 0 || !S_ISREG(status.st_mode)) return errFSNotAFile;
        return keep(std::move(fd), fork);
    }

    OSErr size(ForkRefNum fork, int64_t *bytes) override {
        Fork *found = find(fork);
        if (found == nullptr) return rfNumErr;
        return found->size(bytes);
    }

    OSErr read(ForkRefNum fork, int64_t offset, ByteCount count, void *buffer, ByteCount *actual) override {
        Fork *found = find(fork);
        if (found == nullptr) return rfNumErr;
        return found->read(offset, count, static_cast<char *>(buffer), actual);
    }

    OSErr close(ForkRefNum fork) override {
        if (find(fork) == nullptr) return rfNumErr;
        forks_[static_cast<size_t>(fork) - 1].reset();
        return noErr;
    }

private:
    /// Gives fd the lowest free reference number.
    OSErr keep(Descriptor fd, ForkRefNum *fork) {
        try {
            auto made = std::make_unique<Fork>(std::move(fd));
            auto place = std::find(forks_.begin(), forks_.end(), nullptr);
            if (place == forks_.end()) {
                if (forks_.size() == kMaxForks) return tmfoErr;
                place = forks_.emplace(place);
            }
            *place = std::move(made);
            *fork = static_cast<ForkRefNum>(place - forks_.begin() + 1);
            return noErr;
        } catch (const std::bad_alloc &) {
            return memFullErr;
        }
    }

    Fork *find(ForkRefNum fork) const noexcept {
        return fork > 0 && static_cast<size_t>(fork) <= forks_.size() ? forks_[static_cast<size_t>(fork) - 1].get()
                                                                      : nullptr;
    }

    std::vector<std::unique_ptr<Fork>> forks_;
};

} // namespace

FileStore &linuxFiles() noexcept {
    static LinuxFiles files;
    return files;
}

} // namespace platform
