// The calls for hosts that are not services.
#include "orb/vectorix.h"

#include "hardclip/query_report.h"
#include "platform/corefoundation/corefoundation.h"
#include "platform/files/file_manager.h"
#include "platform/iokit/io_return.h"
#include "platform/posix/console.h"
#include "platform/posix/stop.h"
#include "plot/job_report.h"
#include "record/state.h"

#include <algorithm>
#include <climits>
#include <cstring>
#include <string_view>

namespace {

// What a report has for a status is the platform's own code.
constexpr struct {
    int32_t forHosts;
    IOReturn code;
} kUsbStatuses[] = {{kORB_USBError, kIOReturnError},
                    {kORB_USBNoDevice, kIOReturnNoDevice},
                    {kORB_USBExclusiveAccess, kIOReturnExclusiveAccess},
                    {kORB_USBIOError, kIOReturnIOError},
                    {kORB_USBNotOpen, kIOReturnNotOpen},
                    {kORB_USBNotWritable, kIOReturnNotWritable},
                    {kORB_USBNotAttached, kIOReturnNotAttached},
                    {kORB_USBNotPermitted, kIOReturnNotPermitted},
                    {kORB_USBAborted, kIOReturnAborted},
                    {kORB_USBNotResponding, kIOReturnNotResponding},
                    {kORB_USBPipeStalled, kIOUSBPipeStalled},
                    {kORB_USBUnknownPipe, kIOUSBUnknownPipeErr}};
static_assert(std::ranges::all_of(kUsbStatuses, [](const auto &row) { return row.forHosts == row.code; }));

/// The longest beginning of a UTF-8 text that fits into size bytes and ends with a whole character.
std::string_view wholeCharacters(std::string_view text, size_t size) {
    if (text.size() <= size) return text;
    while (size > 0 && (static_cast<unsigned char>(text[size]) & 0xC0) == 0x80)
        --size;
    return text.substr(0, size);
}

/// Copies as much of a report as the host has room for.
template <typename Report> void copyReport(const Report &from, Report *to) {
    if (!to) return;
    uint32_t size = to->structSize;
    memcpy(to, &from, std::min<size_t>(size, sizeof from));
    if (size >= sizeof size) to->structSize = size;
}

} // namespace

extern "C" CFStringRef ORB_hostCreateString(const char *utf8) { return utf8 ? CFStringCreateWithUTF8(utf8) : 0; }

extern "C" int32_t ORB_hostGetString(CFStringRef s, char *utf8, uint32_t size) {
    if (CFGetTypeID(s) != CFStringGetTypeID()) return -1;
    std::string_view text = platform::stringView(s);
    if (utf8 && size > 0) {
        std::string_view part = wholeCharacters(text, size - 1);
        memcpy(utf8, part.data(), part.size());
        utf8[part.size()] = '\0';
    }
    return static_cast<int32_t>(std::min<size_t>(text.size(), INT_MAX));
}

extern "C" void ORB_hostReleaseString(CFStringRef s) {
    if (CFGetTypeID(s) == CFStringGetTypeID()) CFRelease(s);
}

extern "C" int32_t ORB_hostMakeFileRef(const char *path, ORB_FSRef *ref) {
    if (!ref) return paramErr;
    return platform::makeFSRef(path, ref);
}

extern "C" void ORB_hostSetConsole(ORB_ConsoleFunction function, void *context) {
    platform::setConsoleFunction(function, context);
}

extern "C" void ORB_hostSetProgress(ORB_ProgressFunction function, void *context) {
    plot::setProgressFunction(function, context);
}

extern "C" void ORB_hostStop() { platform::requestStop(); }

extern "C" void ORB_hostGetJobReport(ORB_JobReport *report) { copyReport(gORB_FoundationStruct.report, report); }

extern "C" void ORB_hostGetQueryReport(ORB_QueryReport *report) { copyReport(hardclip::queryReport(), report); }
