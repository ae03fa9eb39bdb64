#include "printer_app/server/service.h"

#include "host/files/user_folder.h"
#include "host/terminal/output.h"
#include "printer_app/children/child.h"
#include "printer_app/plotting/command_words.h"
#include "printer_app/server/driver.h"
#include "printer_app/server/line.h"
#include "printer_app/server/login.h"
#include "printer_app/server/plotter_watch.h"
#include "printer_app/server/restore.h"
#include "printer_app/server/web.h"

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <fmt/format.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

namespace fs = std::filesystem;

namespace printer_app {

using host::ExitCode;
using host::Failure;

namespace {

constexpr auto kKeeperTick = std::chrono::milliseconds(200);
constexpr auto kExaminerTick = std::chrono::milliseconds(100);
constexpr int kExaminers = 2;
constexpr auto kToStop = std::chrono::seconds(25); // for prints to put their pens away at the end
constexpr time_t kDoctorAge = 10;                  // seconds until it looks again
constexpr auto kProfileLimit = std::chrono::seconds(20);

/// Jobs are private: a folder that others may read is made one that they may not.
fs::path privateFolder(const fs::path &path) {
    std::error_code error;
    fs::create_directories(path, error);
    if (!fs::is_directory(path)) throw host::outputFailure(path, error.value());
    if (chmod(path.c_str(), 0700)) throw host::outputFailure(path, errno);
    return fs::canonical(path);
}

fs::path stateFolder(const Options &options) {
    if (!options.state.empty()) return options.state;
    if (const char *folder = getenv("STATE_DIRECTORY"); folder && *folder) return folder;
    const fs::path folder = host::userFolder("XDG_STATE_HOME", ".local/state");
    if (folder.empty()) throw Failure(ExitCode::Usage, "no folder to keep jobs in: give --state, or set HOME");
    return folder / "printer-app";
}

std::vector<QueueConfig> profiles(const std::string &command) {
    const Ended ended = runToEnd({command, "profile", "list", "--json"}, kProfileLimit);
    try {
        std::vector<QueueConfig> queues = queuesFrom(ended.output);
        if (!ended.diagnostics.empty()) host::printError("{}", ended.diagnostics);
        return queues;
    } catch (const std::exception &) {
        throw Failure(ExitCode::Failed, fmt::format("{} cannot list the profiles: {}; --vectorix says which command it is",
                                                    command, ended.diagnostics.empty() ? "no answer" : ended.diagnostics));
    }
}

/// Reported by the print system with locks of its own held: nothing is done here but noted.
void onEvent(pappl_system_t *, pappl_printer_t *printer, pappl_job_t *, pappl_event_t event, void *data) {
    Queue *queue = printer ? static_cast<Service *>(data)->find(printer) : nullptr;
    if (!queue) return;
    if (event & PAPPL_EVENT_PRINTER_STOPPED) queue->wasPaused = queue->isPaused = true;
    // No more than a client's Resume-Printer makes a queue with a job at work idle.
    else if ((event & PAPPL_EVENT_PRINTER_STATE_CHANGED) && papplPrinterGetState(printer) == IPP_PSTATE_IDLE) {
        queue->isPaused = false;
        if (queue->atWork) queue->wasResumed = true;
    }
}

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

void keepQueue(Service &service, Queue &queue) {
    watchPlotter(queue);
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

void saveJournal(Service &service, bool all) {
    try {
        service.journal.save(all, [&](const JobRecord &job) {
            std::error_code ignored;
            fs::remove(service.pictureOf(job), ignored);
        });
    } catch (const Failure &failure) {
        host::printFailure(failure.what()); // a full disk: the next time there may be room
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

void keep(Service &service) {
    wake(service);
    while (!service.isEnding) {
        for (const auto &queue : service.queues)
            keepQueue(service, *queue);
        saveJournal(service, false);
        std::this_thread::sleep_for(kKeeperTick);
    }
}

void examineAll(Service &service) {
    while (!service.isEnding)
        if (!service.examineNext()) std::this_thread::sleep_for(kExaminerTick);
}

/// Has the doctor look at the plotters that are in trouble.
void diagnose(Service &service) {
    std::map<const Queue *, time_t> asked;
    for (; !service.isEnding; std::this_thread::sleep_for(kExaminerTick * 10)) {
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

/// Ends the program: prints stop and put their pens away, the journal is written. The print system's own end would take a
/// minute, begin the next jobs meanwhile and take those at work for done; so it is not waited for.
[[noreturn]] void end(Service &service) {
    service.isEnding = true;
    const auto latest = std::chrono::steady_clock::now() + kToStop;
    const auto isAtWork = [](const auto &queue) { return queue->atWork != 0; };
    while (std::ranges::any_of(service.queues, isAtWork) && std::chrono::steady_clock::now() < latest)
        std::this_thread::sleep_for(kExaminerTick);
    for (const auto &queue : service.queues)
        keepQueue(service, *queue); // jobs that came meanwhile
    saveJournal(service, true);
    _exit(static_cast<int>(ExitCode::Done));
}

void addListeners(Service &service) {
    const bool isShared = service.options.isShared;
    const bool hasFour = papplSystemAddListeners(service.system, isShared ? "0.0.0.0" : "127.0.0.1");
    const bool hasSix = papplSystemAddListeners(service.system, isShared ? "[::]" : "[::1]");
    if (!hasFour && !hasSix)
        throw Failure(ExitCode::Busy,
                      fmt::format("port {} cannot be listened at: another program may have it; --port names another",
                                  service.options.port));
}

/// The print system takes documents of any size, also such as grow while they are unpacked; so no file of this program may
/// grow beyond this. Writing fails there, as on a full disk. The journal needs its room in any case.
void limitFiles(int32_t megabytes) {
    constexpr rlim_t kLeast = 64;
    rlimit limit{};
    getrlimit(RLIMIT_FSIZE, &limit);
    limit.rlim_cur = std::min(limit.rlim_max, std::max(static_cast<rlim_t>(megabytes), kLeast) * 1'000'000);
    setrlimit(RLIMIT_FSIZE, &limit);
    signal(SIGXFSZ, SIG_IGN);
}

} // namespace

Service::Service(const Options &chosen, fs::path base)
    : options(chosen), folder(std::move(base)), spool(privateFolder(folder / "spool")),
      pictures(privateFolder(folder / "pictures")), journal(folder) {}

Queue *Service::find(const pappl_printer_t *printer) const {
    const auto found = std::ranges::find_if(queues, [&](const auto &queue) { return queue->printer == printer; });
    return found == queues.end() ? nullptr : found->get();
}

Queue *Service::find(std::string_view name) const {
    const auto found = std::ranges::find_if(queues, [&](const auto &queue) { return queue->config.name == name; });
    return found == queues.end() ? nullptr : found->get();
}

fs::path Service::pictureOf(const JobRecord &job) const { return pictures / fmt::format("{}-{}.png", job.queue, job.id); }

/// Short, for the name of a socket has no room for more than some hundred characters.
std::string Service::socketOf(const Queue &queue) const {
    for (size_t i = 0; i < queues.size(); ++i)
        if (queues[i].get() == &queue) return folder / fmt::format("control-{}", i);
    return folder / "control";
}

void Service::keepOptions(const std::string &file, const JobOptions &given) {
    std::lock_guard lock(noteMutex_);
    options_[file] = given;
}

void Service::note(Queue &queue, pappl_job_t *job) {
    std::lock_guard lock(noteMutex_); // keeper and job come here at the same time
    const int id = papplJobGetID(job);
    const char *file = papplJobGetFilename(job);
    const auto known = journal.find(queue.config.name, id);
    if (known && (!known->file.empty() || !file)) return;
    JobRecord record;
    record.queue = queue.config.name;
    record.id = id;
    record.name = tidied(papplJobGetName(job));
    record.user = tidied(papplJobGetUsername(job));
    record.created = papplJobGetTimeCreated(job);
    if (file) {
        bringToDisk(file);
        bringToDisk(spool);
        record.file = file;
        record.format = papplJobGetFormat(job);
        const auto given = options_.extract(file);
        record.options = given ? given.mapped() : optionsOf(job);
        record.place = record.options.from;
        record.sheetsDone = record.options.fromSheet;
        if ((record.isInterrupted = record.place > 0))
            record.message = "Put in the sheet as it lay, and go on from here; or put in new paper, and plot again.";
        const char *until = ippGetString(papplJobGetAttribute(job, "job-hold-until"), 0, nullptr);
        record.asksFirst = papplJobGetAttribute(job, "job-hold-until-time") || (until && strcmp(until, "no-hold") != 0);
    }
    if (!known)
        journal.add(std::move(record));
    else
        journal.change(queue.config.name, id, [&](JobRecord &r) { r = record; });
}

std::optional<JobRecord> Service::claim() {
    std::lock_guard lock(claimMutex_);
    std::optional<JobRecord> next;
    for (const auto &queue : queues) {
        for (const JobRecord &job : journal.jobsOf(queue->config.name)) {
            if (job.isExamined || job.hasEnded() || job.file.empty() || claimed_.contains({job.queue, job.id})) continue;
            if (!next || job.created < next->created) next = job;
            break; // a queue's jobs are looked at in their order
        }
    }
    if (next) claimed_.insert({next->queue, next->id});
    return next;
}

bool Service::examineNext() {
    const auto job = claim();
    if (!job) return false;
    Examination found;
    try {
        found = examine(options.command, find(job->queue)->config, *job, pictureOf(*job));
    } catch (const std::exception &error) {
        found.refusal = fmt::format("{}: {}", options.command, error.what());
    }
    journal.change(job->queue, job->id, [&](JobRecord &r) {
        r.isExamined = true;
        r.words = found.words;
        r.pages = found.pages;
        r.figures = found.figures;
        r.hasPicture = found.hasPicture;
        if (r.hasEnded()) return;
        if (!r.isInterrupted || !found.refusal.empty()) r.message = found.refusal.empty() ? found.note : found.refusal;
        if (r.phase == Phase::Preparing) r.phase = Phase::Queued;
    });
    std::lock_guard lock(claimMutex_);
    claimed_.erase({job->queue, job->id});
    return true;
}

ExitCode serve(const Options &options) {
    umask(077);
    const fs::path folder = privateFolder(stateFolder(options));
    if (options.setsPassword) return keepPassword(folder);
    if (options.pageIsShared) requirePassword(folder);

    // Of the threads to come, none is to be interrupted by what this one waits for.
    sigset_t signals;
    sigemptyset(&signals);
    for (int number : {SIGTERM, SIGINT, SIGHUP})
        sigaddset(&signals, number);
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    signal(SIGPIPE, SIG_IGN);
    limitFiles(options.largestUpload);

    Service service(options, folder);
    for (QueueConfig &config : profiles(options.command)) {
        service.queues.push_back(std::make_unique<Queue>());
        service.queues.back()->config = std::move(config);
    }
    // To this computer's own clients it gives one address each, but says of two whether they are safe when there is TLS.
    const pappl_soptions_t tls = options.isShared ? PAPPL_SOPTIONS_NONE : PAPPL_SOPTIONS_NO_TLS;
    service.system = papplSystemCreate(PAPPL_SOPTIONS_MULTI_QUEUE | tls, "Vectorix plotters", options.port,
                                       "_print,_universal", service.spool.c_str(), "-",
                                       options.isVerbose ? PAPPL_LOGLEVEL_DEBUG : PAPPL_LOGLEVEL_ERROR, nullptr, false);
    if (!service.system) throw Failure(ExitCode::Failed, "the print system cannot be made");
    papplSystemSetFooterHTML(service.system, ""); // it reads it without looking whether there is one
    if (!options.isShared) papplSystemSetDNSSDName(service.system, nullptr);
    addListeners(service);
    addDriver(service);
    papplSystemSetEventCallback(service.system, onEvent, &service);
    restore(service);
    addPage(service);
    service.isServing = true;
    service.journal.save(false, [](const JobRecord &) {});

    std::vector<std::thread> threads;
    threads.emplace_back([&] {
        papplSystemRun(service.system);
        kill(getpid(), SIGTERM); // a client of this computer had it end
    });
    threads.emplace_back([&] { keep(service); });
    threads.emplace_back([&] { diagnose(service); });
    for (int i = 0; i < kExaminers; ++i)
        threads.emplace_back([&] { examineAll(service); });
    host::printOut("http://localhost:{}/ has {} queues\n", options.port, service.queues.size());
    host::flushOut();
    int number = 0;
    sigwait(&signals, &number);
    end(service);
}

} // namespace printer_app
