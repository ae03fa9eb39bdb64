#include "host/output.h"

#include "host/text.h"

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <unistd.h>

namespace host {

namespace {

int outputError = 0; // errno of the first write to standard output that failed

void note(bool failed) noexcept {
    if (failed && outputError == 0) outputError = errno;
}

} // namespace

void holdStandardStreams() {
    signal(SIGPIPE, SIG_IGN); // a reader that leaves must not leave the port open
    for (int fd = STDIN_FILENO; fd <= STDERR_FILENO; ++fd) {
        // The lowest free number is the one that is missing.
        if (fcntl(fd, F_GETFD) == -1) [[maybe_unused]]
            int opened = open("/dev/null", O_RDWR);
    }
}

void writeOut(std::string_view text) noexcept { note(fwrite(text.data(), 1, text.size(), stdout) != text.size()); }

void writeError(std::string_view text) noexcept {
    // Nowhere is left to tell of a failure.
    [[maybe_unused]] size_t written = fwrite(text.data(), 1, text.size(), stderr);
}

void flushOut() noexcept { note(fflush(stdout) != 0); }

ExitCode afterOutput(ExitCode code) {
    flushOut();
    if (outputError == 0 || outputError == EPIPE || code != ExitCode::Done) return code;
    printError("vectorix: standard output: {}; all else was done, only what was to be said there is lost\n",
               lowered(strerror(outputError)));
    return ExitCode::Failed;
}

} // namespace host
