#include "host/print/capture.h"

#include "host/files/write_all.h"
#include "host/plugin/thread_signals.h"
#include "host/terminal/failure.h"

#include <array>
#include <cerrno>
#include <fcntl.h>
#include <filesystem>
#include <sys/stat.h>
#include <unistd.h>

namespace host {

void requireWritable(const std::string &file) {
    struct stat status;
    std::string place = file;
    if (stat(file.c_str(), &status) == 0) {
        if (S_ISDIR(status.st_mode)) throw outputFailure(file, EISDIR);
    } else if (errno == ENOENT) {
        place = std::filesystem::absolute(file).parent_path();
    }
    if (access(place.c_str(), W_OK) != 0) throw outputFailure(file, errno);
}

Capture::Capture(const std::string &file) : file_(file) {
    output_ = open(file.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
    if (output_ < 0) throw outputFailure(file, errno);
    int error = line_.open();
    if (error == 0) error = line_.holdNearEnd();
    if (error != 0) {
        end();
        throw fileFailure("pseudo-terminal", error);
    }
    SignalsBlocked blocked;
    keeper_ = std::thread(&Capture::keep, this);
}

void Capture::keep() {
    std::array<char, 4096> bytes;
    // A file that cannot be written must not stop the line: what comes is read on and dropped. The read ends with an error
    // when the near end is closed and all of it has been read.
    for (ssize_t count; (count = read(line_.farEnd(), bytes.data(), bytes.size())) > 0;) {
        if (writeError_ != 0) continue;
        if (writeAll(output_, {bytes.data(), static_cast<size_t>(count)})) {
            written_ += count;
        } else {
            writeError_ = errno;
        }
    }
}

int64_t Capture::end() {
    line_.releaseNearEnd();
    if (keeper_.joinable()) keeper_.join();
    line_.hangUp();
    if (output_ < 0) return written_;
    // A full disk takes the beginning of the last write, and another program may have cut the file.
    struct stat status;
    if (fstat(output_, &status) == 0 && S_ISREG(status.st_mode) && (writeError_ != 0 || status.st_size < written_))
        written_ = status.st_size;
    if (close(output_) != 0 && writeError_ == 0) writeError_ = errno;
    output_ = -1;
    return written_;
}

void Capture::finish() {
    if (writeError_ != 0) throw outputFailure(file_, writeError_);
}

} // namespace host
