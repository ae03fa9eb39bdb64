#include "host/files/plot_file.h"

#include "host/terminal/failure.h"
#include "host/terminal/text.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <fmt/format.h>
#include <unistd.h>

namespace host {

namespace {

constexpr size_t kBlock = size_t{64} * 1024;

/// Opens the file; fills status. Throws Failure.
UniqueFd openInput(const std::string &path, const char *what, struct stat &status) {
    // Looked at before it is opened: the open of a pipe waits for a writer, that of a device may do something to it.
    if (stat(path.c_str(), &status) != 0) throw fileFailure(path, errno);
    if (S_ISDIR(status.st_mode)) throw fileFailure(path, EISDIR);
    if (!S_ISREG(status.st_mode)) {
        throw Failure(ExitCode::Unfit, fmt::format("{}: not a file; name a {}", shown(path), what));
    }
    UniqueFd fd(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    if (fd.get() < 0 || fstat(fd.get(), &status) != 0) throw fileFailure(path, errno);
    return fd;
}

Failure emptyFailure(const std::string &path, const char *what) {
    return {ExitCode::Unfit, fmt::format("{}: the {} is empty; make it again", shown(path), what)};
}

bool isSame(const timespec &a, const timespec &b) { return a.tv_sec == b.tv_sec && a.tv_nsec == b.tv_nsec; }

} // namespace

void requireInputFile(const std::string &path, const char *what) {
    struct stat status;
    openInput(path, what, status);
    if (status.st_size == 0) throw emptyFailure(path, what);
}

PlotFile::PlotFile(const std::string &path, std::string name)
    : path_(path), name_(std::move(name)), isUnnamed_(isPlotStream(path)),
      fd_(std::make_shared<UniqueFd>(isUnnamed_ ? keepPlotStream(path).take() : openInput(path, "plot file", opened_))) {
    if (isUnnamed_) fstat(fd_->get(), &opened_);
}

PlotFile::PlotFile(KeptFile kept) : name_(kept.name()), isUnnamed_(true), fd_(std::make_shared<UniqueFd>(kept.take())) {
    fstat(fd_->get(), &opened_);
}

PlotFile PlotFile::holding(std::string name, std::string_view bytes) {
    KeptFile kept(std::move(name));
    kept.add(bytes);
    return PlotFile(std::move(kept));
}

void PlotFile::requireContents() const {
    if (size() == 0) throw emptyFailure(name_, "plot file");
}

std::string PlotFile::heldPath() const { return fmt::format("/proc/self/fd/{}", fd_->get()); }

std::string_view PlotFile::read(int64_t offset, std::string &buffer) const {
    ssize_t count;
    do {
        count = pread(fd_->get(), buffer.data(), buffer.size(), offset);
    } while (count < 0 && errno == EINTR);
    if (count < 0) throw fileFailure(name_, errno);
    return {buffer.data(), static_cast<size_t>(count)};
}

void PlotFile::readBlocks(const std::function<bool(std::string_view block)> &look) const {
    std::string buffer(kBlock, '\0');
    int64_t offset = 0;
    for (std::string_view block; !(block = read(offset, buffer)).empty() && look(block);)
        offset += static_cast<int64_t>(block.size());
}

void addBytes(KeptFile &kept, const PlotFile &plot, int64_t begin, int64_t end) {
    std::string buffer(kBlock, '\0');
    while (begin < end) {
        const std::string_view block =
            plot.read(begin, buffer).substr(0, static_cast<size_t>(std::min<int64_t>(end - begin, kBlock)));
        if (block.empty()) return;
        kept.add(block);
        begin += static_cast<int64_t>(block.size());
    }
}

PlotChange PlotFile::change() const {
    struct stat now, named;
    if (isUnnamed_ || fstat(fd_->get(), &now) != 0) return {};
    if (now.st_size != opened_.st_size) {
        return {true, fmt::format("its size changed while it was printed, from {} to {} bytes; print it again once it is "
                                  "finished",
                                  grouped(opened_.st_size), grouped(now.st_size))};
    }
    if (!isSame(now.st_mtim, opened_.st_mtim)) {
        return {true, "it was written to while it was printed, so that the drawing may be part old and part new; print it "
                      "again"};
    }
    if (stat(path_.c_str(), &named) != 0 || named.st_ino != opened_.st_ino || named.st_dev != opened_.st_dev)
        return {false, "the plot file was replaced or removed meanwhile; what was printed is the plot as it was before"};
    // Who writes to the file can set its mtime back afterwards, but not its ctime. A new ctime has an innocent cause when
    // mode, owner or number of links are new as well; otherwise it is taken for such a write.
    bool isOtherwiseSame = now.st_mode == opened_.st_mode && now.st_uid == opened_.st_uid && now.st_gid == opened_.st_gid &&
                           now.st_nlink == opened_.st_nlink;
    if (!isSame(now.st_ctim, opened_.st_ctim) && isOtherwiseSame) {
        return {true, "its dates were set while it was printed, as after writing to it, so that the drawing may be part old "
                      "and part new; print it again"};
    }
    return {};
}

} // namespace host
