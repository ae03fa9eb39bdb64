// From the options to the end: what has to be there before the first client, and in which order it goes.
#include "host/files/unique_fd.h"
#include "host/files/user_folder.h"
#include "host/terminal/output.h"
#include "printer_app/children/child.h"
#include "printer_app/server/driver.h"
#include "printer_app/server/keeper.h"
#include "printer_app/server/login.h"
#include "printer_app/server/restore.h"
#include "printer_app/server/turn.h"
#include "printer_app/server/web.h"

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <fmt/format.h>
#include <sys/file.h>
#include <sys/resource.h>
#include <thread>
#include <unistd.h>

namespace fs = std::filesystem;

namespace printer_app {

using host::ExitCode;
using host::Failure;

namespace {

constexpr auto kTick = std::chrono::milliseconds(100);
constexpr int kExaminers = 2;
constexpr auto kToStop = std::chrono::seconds(25); // for prints to put their pens away at the end
constexpr auto kProfileLimit = std::chrono::seconds(20);

fs::path stateFolder(const Options &options) {
    if (!options.state.empty()) return options.state;
    if (const char *folder = getenv("STATE_DIRECTORY"); folder && *folder) return folder;
    const fs::path folder = host::userFolder("XDG_STATE_HOME", ".local/state");
    if (folder.empty()) throw Failure(ExitCode::Usage, "no folder to keep jobs in: give --state, or set HOME");
    return folder / "printer-app";
}

/// Two services with one journal would lose each other's jobs. Kept until the end of the process.
host::UniqueFd locked(const fs::path &folder) {
    host::UniqueFd fd(open((folder / "lock").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600));
    if (fd.get() < 0) throw host::outputFailure(folder / "lock", errno);
    if (flock(fd.get(), LOCK_EX | LOCK_NB))
        throw Failure(
            ExitCode::Busy,
            fmt::format("{}: another vectorix-printer-app keeps its jobs there; end it, or give --state", folder.string()));
    return fd;
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
    // Idle it becomes by a client's Resume-Printer, or when a job ends, while the next one may be at work already.
    else if ((event & PAPPL_EVENT_PRINTER_STATE_CHANGED) && papplPrinterGetState(printer) == IPP_PSTATE_IDLE) {
        queue->isPaused = false;
        if (queue->atWork && !isOfJob()) queue->wasResumed = true;
    }
}

/// Ends the program: prints stop and put their pens away, the journal is written. The print system's own end would take a
/// minute, begin the next jobs meanwhile and take those at work for done; so it is not waited for.
[[noreturn]] void end(Service &service) {
    service.isEnding = true;
    const auto latest = std::chrono::steady_clock::now() + kToStop;
    const auto isAtWork = [](const auto &queue) { return queue->atWork != 0; };
    while (std::ranges::any_of(service.queues, isAtWork) && std::chrono::steady_clock::now() < latest)
        std::this_thread::sleep_for(kTick);
    for (const auto &queue : service.queues)
        keepQueue(service, *queue); // jobs that came meanwhile
    service.save(true);
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

ExitCode serve(const Options &options) {
    umask(077);
    const fs::path folder = privateFolder(stateFolder(options));
    if (options.setsPassword) return keepPassword(folder);
    if (options.pageIsShared) requirePassword(folder);
    [[maybe_unused]] const host::UniqueFd lock = locked(folder); // until the program ends, which it does below

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
