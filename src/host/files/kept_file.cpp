#include "host/files/kept_file.h"

#include "host/files/write_all.h"
#include "host/terminal/failure.h"
#include "host/terminal/text.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <fmt/format.h>
#include <unistd.h>

namespace host {

namespace {

std::string temporaryFolder() {
    const char *folder = getenv("TMPDIR");
    return folder && *folder ? folder : "/tmp";
}

int unnamedFile(const std::string &folder) {
    int fd = open(folder.c_str(), O_TMPFILE | O_RDWR | O_CLOEXEC, 0600);
    if (fd >= 0 || (errno != EOPNOTSUPP && errno != EISDIR)) return fd;
    // Not every file system can make a file that never had a name.
    std::string path = folder + "/vectorix-XXXXXX";
    fd = mkostemp(path.data(), O_CLOEXEC);
    if (fd >= 0) unlink(path.c_str());
    return fd;
}

Failure cannotKeep(const std::string &name, const std::string &folder, int errorNumber) {
    return {ExitCode::Failed, fmt::format("{}: cannot be kept in {}: {}; make room there, or set TMPDIR to another folder",
                                          shown(name), shown(folder), lowered(strerror(errorNumber)))};
}

} // namespace

KeptFile::KeptFile(std::string name) : name_(std::move(name)), folder_(temporaryFolder()), fd_(unnamedFile(folder_)) {
    if (fd_.get() < 0) throw cannotKeep(name_, folder_, errno);
}

void KeptFile::add(std::string_view bytes) {
    if (!writeAll(fd_.get(), bytes)) throw cannotKeep(name_, folder_, errno);
}

} // namespace host
