#include "platform/posix/console.h"

#include "platform/linux_backends.h"

#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <new>
#include <string>

namespace platform {

namespace {

ConsoleFunction divertedTo = nullptr;
void *divertedContext = nullptr;

class ProcessConsole final : public Console {
public:
    void print(std::string_view text, bool isError) override {
        if (divertedTo != nullptr) {
            divertedTo(text.data(), static_cast<unsigned>(text.size()), isError ? 1 : 0, divertedContext);
        } else {
            std::fwrite(text.data(), 1, text.size(), isError ? stderr : stdout);
        }
    }

    void flush() override {
        std::fflush(stdout);
        std::fflush(stderr);
    }
};

} // namespace

void setConsoleFunction(ConsoleFunction function, void *context) noexcept {
    divertedTo = function;
    divertedContext = context;
}

Console &processConsole() noexcept {
    static ProcessConsole console;
    return console;
}

} // namespace platform

namespace posix {

namespace {

void print(std::string_view text, bool isError) { platform::backends().console->print(text, isError); }

void printFormatted(const char *format, va_list arguments, bool isError) {
    char line[512];
    va_list again;
    va_copy(again, arguments);
    const int length = std::vsnprintf(line, sizeof line, format, arguments);
    if (length >= 0 && static_cast<size_t>(length) < sizeof line) {
        print({line, static_cast<size_t>(length)}, isError);
    } else if (length >= 0) {
        try {
            std::string text(static_cast<size_t>(length), '\0');
            std::vsnprintf(text.data(), text.size() + 1, format, again);
            print(text, isError);
        } catch (const std::bad_alloc &) {
            print({line, sizeof line - 1}, isError); // better its beginning than nothing
        }
    }
    va_end(again);
}

} // namespace

void puts(std::string_view text) {
    try {
        print(std::string(text) + "\n", false); // in one piece: a host's function gets whole lines
    } catch (const std::bad_alloc &) {
        print(text, false);
        print("\n", false);
    }
}

void printf(const char *format, ...) {
    va_list arguments;
    va_start(arguments, format);
    printFormatted(format, arguments, false);
    va_end(arguments);
}

void eprintf(const char *format, ...) {
    va_list arguments;
    va_start(arguments, format);
    printFormatted(format, arguments, true);
    va_end(arguments);
}

void perror(const char *prefix) {
    const bool stands = prefix != nullptr && *prefix != '\0';
    eprintf("%s%s%s\n", stands ? prefix : "", stands ? ": " : "", std::strerror(errno));
}

void flushConsole() { platform::backends().console->flush(); }

} // namespace posix
