// Job files: any bytes, read by the plug-in and by the command's check. What the check calls fit, the plug-in must read.
#include "plot/job_file.h"

#include "host/job/job_reader.h"
#include "host/terminal/failure.h"
#include "platform/corefoundation/corefoundation.h"
#include "record/state.h"
#include "support/input.h"
#include "support/platform.h"

#include <algorithm>
#include <string>
#include <sys/mman.h>
#include <unistd.h>

namespace {

/// A file without a place on any disk, and its path.
class MemoryFile {
public:
    std::string holding(std::string_view bytes) {
        fuzz::require(ftruncate(fd_, 0) == 0, "the file can be emptied");
        fuzz::require(pwrite(fd_, bytes.data(), bytes.size(), 0) == static_cast<ssize_t>(bytes.size()), "and filled");
        return "/proc/self/fd/" + std::to_string(fd_);
    }

private:
    int fd_ = memfd_create("job", MFD_CLOEXEC);
};

/// Whether the check finds no error.
bool isFitForTheCommand(const std::string &path) {
    try {
        const std::vector<host::JobFinding> findings = host::checkJob(host::readJob(path));
        return std::none_of(findings.begin(), findings.end(), [](const auto &finding) { return finding.isError; });
    } catch (const host::Failure &) {
        return false;
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    fuzz::Platform platform;
    const std::string &job = platform.files.files[fuzz::kJobPath] = {reinterpret_cast<const char *>(data), size};
    const uint32_t before = platform::liveObjectCount();

    answer() = platform.record();
    platform::beginObjectEpoch();
    const int32_t result = ORB_readJobFile();
    platform::endObjectEpoch();

    const ORB_ServiceRecord &record = answer();
    const bool fit = record.ORB_errorID == kORB_NoError;
    fuzz::require(result == 0, "the file is there");
    fuzz::require(fit || record.ORB_errorID == kORB_ErrorJobFile, "fit, or 37001");
    fuzz::require(fit || (record.ORB_PlotterEmulationID == 0 && record.ORB_XTile == 1.0), "a failure reads nothing");
    const int64_t chunk = record.ORB_PlotChunkSize;
    fuzz::require(chunk == 16 || chunk == 64 || chunk == 255, "the chunk size is one of three");
    fuzz::releaseStrings(record);
    fuzz::require(platform::liveObjectCount() == before, "nothing is left of the list");

    static MemoryFile file;
    fuzz::require(fit || !isFitForTheCommand(file.holding(job)), "what the check calls fit is fit");
    return 0;
}
