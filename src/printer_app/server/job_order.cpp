#include "printer_app/server/job_order.h"

#include <algorithm>
#include <vector>

namespace printer_app {

namespace {

void collect(pappl_job_t *job, void *data) {
    const ipp_jstate_t state = papplJobGetState(job);
    const bool waits = state == IPP_JSTATE_PENDING || (state == IPP_JSTATE_HELD && !isHeldByClient(job));
    if (waits && papplJobGetFilename(job)) static_cast<std::vector<pappl_job_t *> *>(data)->push_back(job);
}

/// The oldest first. They stay as long as they wait.
std::vector<pappl_job_t *> waitingJobs(pappl_printer_t *printer) {
    std::vector<pappl_job_t *> jobs;
    papplPrinterIterateActiveJobs(printer, collect, &jobs, 1, 0);
    std::ranges::sort(jobs, {}, papplJobGetID);
    return jobs;
}

void release(pappl_job_t *job) {
    if (papplJobGetState(job) == IPP_JSTATE_HELD) papplJobRelease(job, nullptr);
    papplJobSetReasons(job, PAPPL_JREASON_NONE, PAPPL_JREASON_JOB_QUEUED);
}

} // namespace

bool isHeldByClient(pappl_job_t *job) {
    return papplJobGetState(job) == IPP_JSTATE_HELD && (papplJobGetReasons(job) & PAPPL_JREASON_JOB_HOLD_UNTIL_SPECIFIED);
}

void lineUp(pappl_printer_t *printer) {
    std::vector<pappl_job_t *> jobs = waitingJobs(printer);
    for (size_t i = 1; i < jobs.size(); ++i) {
        if (papplJobGetState(jobs[i]) != IPP_JSTATE_PENDING) continue;
        papplJobHold(jobs[i], nullptr, nullptr, 0);
        papplJobSetReasons(jobs[i], PAPPL_JREASON_JOB_QUEUED,
                           PAPPL_JREASON_NONE); // else it says that its document is missing
    }
    if (!jobs.empty()) release(jobs[0]);
}

void letGo(pappl_printer_t *printer) { std::ranges::for_each(waitingJobs(printer), release); }

} // namespace printer_app
