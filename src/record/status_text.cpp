#include "record/status_text.h"

#include "platform/corefoundation/corefoundation.h"
#include "record/state.h"

#include <cstdarg>

namespace {

/// A status text that is still only a number.
struct DeferredStatus {
    StatusMaker maker = nullptr;
    int32_t value = 0;
};

DeferredStatus deferred;
bool deferring = false;

} // namespace

void replaceString(CFStringRef &field, CFStringRef next) noexcept {
    if (platform::madeInThisCall(field)) CFRelease(field);
    field = next;
}

void clearStatus() noexcept {
    deferred = {};
    replaceString(answer().ORB_CFSTR_message, 0);
}

void setStatus(const char *text) noexcept {
    clearStatus();
    answer().ORB_CFSTR_message = platform::constantString(text);
}

void setStatusFormat(const char *format, ...) noexcept {
    clearStatus();
    va_list arguments;
    va_start(arguments, format);
    answer().ORB_CFSTR_message = CFStringCreateWithFormatAndArguments(platform::constantString(format), arguments);
    va_end(arguments);
}

void deferStatus(StatusMaker maker, int32_t value) noexcept {
    clearStatus();
    if (deferring) {
        deferred = {maker, value};
    } else {
        answer().ORB_CFSTR_message = maker(value);
    }
}

void beginStatusDeferral() noexcept { deferring = true; }

void endStatusDeferral() noexcept {
    deferring = false;
    if (deferred.maker) deferStatus(deferred.maker, deferred.value);
}
