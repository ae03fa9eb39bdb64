#include "printer_app/server/keeper.h"

#include "printer_app/server/job_order.h"
#include "printer_app/server/plotter_watch.h"

#include <algorithm>
#include <chrono>
#include <map>
#include <thread>

namespace printer_app {

namespace {

constexpr auto kKeeperTick = std::chrono::milliseconds(200);
constexpr int kWatchTicks = 5; // of the keeper's: it asks the system for all devices on USB
constexpr auto kExaminerTick = std::chrono::milliseconds(100);
constexpr auto kDoctorTick = std::chrono::seconds(1);
constexpr time_t kDoctorAge = 10; // seconds until it looks again

struct Noting {
    Service *service;
    Queue *queue;
};

void noteOne(pappl_job_t *job, void *data) {
    const auto *noting = static_cast<const Noting *>(data);
    noting->service->note(*noting->queue, job);
}

/// What clients did to jobs: canceled, held, released.
void reconcile(Service &service, Queue &queue, pappl_printer_t *printer) {
    const std::string &name = queue.config.name;
    for (const JobRecord &record : service.journal.jobsOf(name)) {
        if (record.hasEnded()) continue;
        pappl_job_t *job = papplPrinterFindJob(printer, record.id);
        const ipp_jstate_t state = papplJobGetState(job);
        const bool isHeld = isHeldByClient(job);
        if (job && state < IPP_JSTATE_CANCELED) {
            if (isHeld != record.isHeld) service.journal.change(name, record.id, [&](JobRecord &r) { r.isHeld = isHeld; });
            continue;
        }
        service.journal.change(name, record.id, [&](JobRecord &r) {
            if (r.hasEnded()) return;
            r.phase = state == IPP_JSTATE_CANCELED    ? Phase::Stopped
                      : state == IPP_JSTATE_COMPLETED ? Phase::Done
                                                      : Phase::Failed;
            const char *message = job ? papplJobGetMessage(job) : nullptr;
            if (r.phase == Phase::Failed && message) r.message = message;
            if (r.phase == Phase::Stopped && !r.isInterrupted) r.message = "Canceled before anything was plotted.";
            r.ended = time(nullptr);
        });
    }
}

/// Starts what waited when the program ended: the print system does not look by itself.
void wake(Service &service) {
    while (!papplSystemIsRunning(service.system))
        std::this_thread::sleep_for(kKeeperTick);
    for (const auto &queue : service.queues) {
        if (service.journal.numbersOf(queue->config.name).isPaused)
            papplPrinterPause(queue->printer);
        else
            papplPrinterResume(queue->printer);
    }
}

} // namespace

void keepQueue(Service &service, Queue &queue) {
    std::shared_lock alive(queue.isAlive);
    pappl_printer_t *printer = queue.printer;
    if (!printer) return;
    Noting noting{&service, &queue};
    papplPrinterIterateActiveJobs(printer, noteOne, &noting, 1, 0);
    if (!queue.atWork) lineUp(printer);
    reconcile(service, queue, printer);
    service.journal.keepNextJob(queue.config.name, papplPrinterGetNextJobID(printer));
    service.journal.keepPaused(queue.config.name, queue.isPaused);
}

void keep(Service &service) {
    wake(service);
    for (int tick = 0; !service.isEnding; ++tick) {
        for (const auto &queue : service.queues) {
            if (tick % kWatchTicks == 0) watchPlotter(*queue);
            keepQueue(service, *queue);
        }
        service.save(false);
        std::this_thread::sleep_for(kKeeperTick);
    }
}

void examineAll(Service &service) {
    while (!service.isEnding)
        if (!service.examineNext()) std::this_thread::sleep_for(kExaminerTick);
}

void diagnose(Service &service) {
    std::map<const Queue *, time_t> asked;
    for (; !service.isEnding; std::this_thread::sleep_for(kDoctorTick)) {
        for (const auto &queue : service.queues) {
            const auto jobs = service.journal.jobsOf(queue->config.name);
            const bool isTroubled = !queue->isThere || std::ranges::any_of(jobs, [](const JobRecord &job) {
                return job.phase == Phase::Troubled;
            });
            if (!isTroubled) {
                if (asked.erase(queue.get())) queue->keepFindings({});
            } else if (time_t &last = asked[queue.get()]; time(nullptr) - last >= kDoctorAge) {
                queue->keepFindings(askDoctor(service.options.command, queue->config));
                last = time(nullptr);
            }
        }
    }
}

} // namespace printer_app
