#include "host/terminal/output.h"

#include "host/terminal/text.h"

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <sys/ioctl.h>
#include <unistd.h>

namespace host {

namespace {

int outputError = 0; // errno of the first write to standard output that failed

void note(bool failed) noexcept {
    if (failed && outputError == 0) outputError = errno;
}

std::string_view colourWhen = "auto";

bool hasColour(int stream) {
    if (colourWhen != "auto") return colourWhen == "always";
    const char *refused = getenv("NO_COLOR");
    const char *terminal = getenv("TERM");
    bool isRefused = refused && *refused;
    return !isRefused && terminal && strcmp(terminal, "dumb") != 0 && isatty(stream);
}

constexpr int kRed = 31, kGreen = 32, kYellow = 33;

/// Characters in a line of the stream's terminal; 0 when it is no terminal.
size_t columnsOf(int stream) {
    winsize size{};
    return isatty(stream) && ioctl(stream, TIOCGWINSZ, &size) == 0 ? size.ws_col : 0;
}

std::string inColour(int stream, int colour, std::string_view text) {
    return hasColour(stream) ? fmt::format("\x1B[{}m{}\x1B[m", colour, text) : std::string(text);
}

} // namespace

void chooseColour(std::string_view when) {
    constexpr std::string_view kChoices[] = {"always", "never"};
    colourWhen = "auto";
    for (std::string_view choice : kChoices) {
        if (when == choice) colourWhen = choice;
    }
}

std::string coloured(std::string_view word) {
    if (word == "ok" || word == "free") return inColour(STDOUT_FILENO, kGreen, word);
    bool isHindrance = word.substr(0, 3) == "no " || word == "in the way";
    return isHindrance ? inColour(STDOUT_FILENO, kRed, word) : std::string(word);
}

void printNote(std::string_view text) noexcept {
    constexpr std::string_view kStart = "vectorix: note:";
    std::string lines = wrapped(fmt::format("{} {}", kStart, text), columnsOf(STDERR_FILENO));
    printError("vectorix: {}{}\n", inColour(STDERR_FILENO, kYellow, "note:"), lines.substr(kStart.size()));
}

void printFailure(std::string_view text) noexcept {
    constexpr std::string_view kStart = "vectorix:";
    std::string lines = wrapped(fmt::format("{} {}", kStart, text), columnsOf(STDERR_FILENO));
    printError("{}{}\n", inColour(STDERR_FILENO, kRed, kStart), lines.substr(kStart.size()));
}

size_t outputColumns() { return columnsOf(STDOUT_FILENO); }

void printLines(std::string_view text) noexcept { writeOut(wrapped(text, outputColumns())); }

void holdStandardStreams() {
    signal(SIGPIPE, SIG_IGN); // a reader that leaves must not leave the port open
    for (int fd = STDIN_FILENO; fd <= STDERR_FILENO; ++fd) {
        // open() gives the lowest free descriptor, which is this one.
        if (fcntl(fd, F_GETFD) == -1) [[maybe_unused]]
            int opened = open("/dev/null", O_RDWR);
    }
}

void writeOut(std::string_view text) noexcept { note(fwrite(text.data(), 1, text.size(), stdout) != text.size()); }

void writeError(std::string_view text) noexcept {
    // A failure could be told nowhere.
    [[maybe_unused]] size_t written = fwrite(text.data(), 1, text.size(), stderr);
}

void flushOut() noexcept { note(fflush(stdout) != 0); }

ExitCode afterOutput(ExitCode code) {
    flushOut();
    if (outputError == 0 || outputError == EPIPE || code != ExitCode::Done) return code;
    printFailure(fmt::format("standard output: {}; all else was done, only what was to be said there is lost",
                             lowered(strerror(outputError))));
    return ExitCode::Failed;
}

} // namespace host
