#include "printer_app/server/restore.h"

#include "host/files/unique_fd.h"
#include "host/files/whole_file.h"
#include "printer_app/server/driver.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <set>
#include <unistd.h>

namespace fs = std::filesystem;

namespace printer_app {

namespace {

std::string inQuotes(std::string_view text) {
    std::string result = "\"";
    for (char c : tidied(text)) {
        if (c == '"' || c == '\\') result += '\\';
        result += c;
    }
    return result + "\"";
}

bool isInSpool(const Service &service, const std::string &file) {
    return !file.empty() && fs::path(file).parent_path() == service.spool && fs::is_regular_file(fs::symlink_status(file));
}

ipp_jstate_t stateOf(const JobRecord &job) {
    switch (job.phase) {
    case Phase::Done: return IPP_JSTATE_COMPLETED;
    case Phase::Stopped: return IPP_JSTATE_CANCELED;
    case Phase::Failed: return IPP_JSTATE_ABORTED;
    default: return IPP_JSTATE_HELD; // the oldest is let go once it serves (job_order.h)
    }
}

/// The print system takes a job for one that waits only if this file lies beside its document. Its name is made as
/// papplJobOpenFile() makes it.
void writeAttributes(const Service &service, const QueueNumbers &numbers, const JobRecord &job) {
    std::string name;
    const std::string title = tidied(job.name);
    const size_t slash = title.rfind('/');
    std::string_view rest = title;
    if (slash != std::string::npos && slash + 1 < title.size()) rest.remove_prefix(slash + 1);
    const auto isPlain = [](char c) { return isalnum(static_cast<unsigned char>(c)) || c == '-'; };
    for (size_t i = 0; i < rest.size() && name.size() < 63; ++i) {
        if (isPlain(rest[i]))
            name += static_cast<char>(tolower(static_cast<unsigned char>(rest[i])));
        else if (name += '_'; true)
            while (i + 1 < rest.size() && !isPlain(rest[i + 1]))
                ++i;
    }
    const fs::path path = service.spool / fmt::format("p{:05}j{:09}-{}.ipp", numbers.id, job.id, name);
    const host::UniqueFd fd(open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_NOFOLLOW | O_CLOEXEC, 0600));
    ipp_t *attributes = ippNew();
    ippAddInteger(attributes, IPP_TAG_JOB, IPP_TAG_INTEGER, "copies", job.options.copies);
    if (!job.options.media.empty())
        ippAddString(attributes, IPP_TAG_JOB, IPP_TAG_KEYWORD, "media", nullptr, job.options.media.c_str());
    ippWriteFile(fd.get(), attributes);
    ippDelete(attributes);
}

std::string jobLine(const Service &service, const QueueNumbers &numbers, const JobRecord &job) {
    const ipp_jstate_t state = stateOf(job);
    const bool waits = state < IPP_JSTATE_STOPPED;
    if (waits) writeAttributes(service, numbers, job);
    std::string line =
        fmt::format("Job id=\"{}\" name={} username={} format={} state=\"{}\" created=\"{}\"", job.id, inQuotes(job.name),
                    inQuotes(job.user), inQuotes(job.format), static_cast<int>(state), job.created);
    if (isInSpool(service, job.file)) line += " filename=" + inQuotes(job.file);
    if (!waits) line += fmt::format(" completed=\"{}\"", job.ended);
    if (state == IPP_JSTATE_HELD)
        line += fmt::format(" state_reasons=\"{}\"", static_cast<int>(job.isHeld ? PAPPL_JREASON_JOB_HOLD_UNTIL_SPECIFIED
                                                                                 : PAPPL_JREASON_JOB_QUEUED));
    return line + "\n";
}

/// A job whose turn was cut off is asked about; one whose document never came has failed.
void settle(Service &service, const JobRecord &job) {
    if (job.hasEnded()) return;
    service.journal.change(job.queue, job.id, [&](JobRecord &r) {
        if (!isInSpool(service, r.file)) {
            r.phase = Phase::Failed;
            r.message = "The document had not come when the print service ended.";
            r.ended = time(nullptr);
            return;
        }
        r.isExamined = r.isExamined && !r.pages.empty(); // else why it is unfit is to be found again
        r.phase = r.isExamined ? Phase::Queued : Phase::Preparing;
        r.message = r.isInterrupted ? interruptedText(r.place, "the print service ended") : "";
    });
}

void removeStrays(const Service &service) {
    std::set<fs::path> kept;
    for (const auto &name : service.journal.queueNames())
        for (const JobRecord &job : service.journal.jobsOf(name))
            kept.insert(job.file);
    for (const auto &entry : fs::directory_iterator(service.spool))
        if (entry.is_regular_file() && !kept.contains(entry.path())) fs::remove(entry.path());
}

} // namespace

void restore(Service &service) {
    removeStrays(service);
    std::string text;
    for (const auto &queue : service.queues) {
        const std::string &name = queue->config.name;
        const QueueNumbers numbers = service.journal.numbersOf(name);
        text += fmt::format("<Printer id=\"{}\" name={} did={} uri={} driver={}>\nNextJobId {}\nMaxCompletedJobs 100\n",
                            numbers.id, inQuotes(name), inQuotes(kDeviceId), inQuotes(deviceUriOf(*queue)),
                            inQuotes(kDriverName), numbers.nextJob);
        for (const JobRecord &job : service.journal.jobsOf(name))
            settle(service, job);
        for (const JobRecord &job : service.journal.jobsOf(name))
            text += jobLine(service, numbers, job);
        text += "</Printer>\n";
    }
    const fs::path file = service.folder / "print-system";
    host::writeWhole(file, text, true);
    const bool isRead = papplSystemLoadState(service.system, file.c_str());
    fs::remove(file);
    if (!isRead) throw host::Failure(host::ExitCode::Failed, fmt::format("{}: cannot be read back", file.string()));
    for (const auto &queue : service.queues) {
        queue->printer =
            papplSystemFindPrinter(service.system, nullptr, service.journal.numbersOf(queue->config.name).id, nullptr);
        if (!queue->printer)
            throw host::Failure(host::ExitCode::Failed,
                                fmt::format("{}: the print system makes no queue of it", queue->config.name));
    }
}

} // namespace printer_app
