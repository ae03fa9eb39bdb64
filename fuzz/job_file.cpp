// Job files: any bytes, read by the plug-in and by the command's check. What the check calls fit, the plug-in must read.
#include "host/job/job_reader.h"
#include "host/terminal/failure.h"
#include "support/platform.h"

#include <sys/mman.h>
#include <unistd.h>

namespace {

/// Whether the check finds no error. The file has no place on any disk.
bool isFitForTheCommand(const std::string &job) {
    static const int file = memfd_create("job", MFD_CLOEXEC);
    fuzz::require(ftruncate(file, 0) == 0, "the file can be emptied");
    fuzz::require(pwrite(file, job.data(), job.size(), 0) == static_cast<ssize_t>(job.size()), "and filled");
    try {
        const auto findings = host::checkJob(host::readJob("/proc/self/fd/" + std::to_string(file)));
        return std::none_of(findings.begin(), findings.end(), [](const auto &finding) { return finding.isError; });
    } catch (const host::Failure &) {
        return false;
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    const fuzz::Scenario scenario{.job = {reinterpret_cast<const char *>(data), size}, .terminator = ""};
    fuzz::Platform platform(scenario);
    const ORB_ServiceRecord record = platform.call(recordOf(scenario));
    const bool fit = fuzz::lastReport(ORB_hostGetJobReport).firstErrorID != kORB_ErrorJobFile;
    fuzz::require(fit || (record.ORB_PlotterEmulationID == 0 && record.ORB_XTile == 1.0), "a failure reads nothing");
    fuzz::require(fit || !isFitForTheCommand(scenario.job), "what the check calls fit is fit");
    return 0;
}
