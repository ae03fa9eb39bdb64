#include "host/job/job_writer.h"

#include "host/files/whole_file.h"
#include "host/files/write_all.h"
#include "host/terminal/failure.h"
#include "host/terminal/text.h"

#include <cerrno>
#include <fmt/format.h>
#include <sys/mman.h>
#include <unistd.h>

namespace host {

namespace {

/// Control characters, and a blank at the start, become character references: parsers may change or drop them otherwise.
std::string escaped(const std::string &text) {
    std::string result;
    for (char c : text) {
        switch (c) {
        case '&': result += "&amp;"; break;
        case '<': result += "&lt;"; break;
        case '>': result += "&gt;"; break;
        default:
            if (static_cast<unsigned char>(c) < 0x20 || c == 0x7F || (c == ' ' && result.empty())) {
                result += fmt::format("&#{};", static_cast<int>(c));
            } else {
                result += c;
            }
        }
    }
    return result;
}

std::string element(const JobEntry &entry) {
    constexpr const char *kElements[] = {"string", "integer", "real"}; // by JobKind
    if (entry.value.find('\0') != std::string::npos || !isUtf8(entry.value)) {
        throw Failure(ExitCode::Usage, fmt::format("\"{}\": {} is not UTF-8 text; type it in plain letters", entry.key->key,
                                                   excerpt(entry.value, 60)));
    }
    return fmt::format("<{0}>{1}</{0}>", kElements[static_cast<size_t>(entry.key->kind)], escaped(entry.value));
}

} // namespace

std::string propertyList(const std::vector<JobEntry> &job) {
    std::string text = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\">\n<dict>\n";
    for (const JobEntry &entry : job)
        text += fmt::format("\t<key>{}</key>\n\t{}\n", entry.key->key, element(entry));
    return text + "</dict>\n</plist>\n";
}

TemporaryJob::TemporaryJob(const std::string &contents) : fd_(memfd_create("vectorix job", MFD_CLOEXEC)) {
    if (fd_.get() < 0 || !writeAll(fd_.get(), contents)) throw fileFailure("job file in memory", errno);
}

std::string TemporaryJob::path() const { return fmt::format("/proc/self/fd/{}", fd_.get()); }

} // namespace host
