#include "plot/plot_sender.h"

#include "platform/corefoundation/corefoundation.h"
#include "platform/posix/console.h"

#include <cstdarg>

extern "C" void ORB_show(CFStringRef format, ...) {
    va_list arguments;
    va_start(arguments, format);
    CFRef text(CFStringCreateWithFormatAndArguments(format, arguments));
    va_end(arguments);
    if (!text) return;
    std::string_view bytes = platform::stringView(text.get());
    posix::printf("%.*s\n\n", static_cast<int>(bytes.size()), bytes.data());
}
