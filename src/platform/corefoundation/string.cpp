#include "platform/corefoundation/handle_table.h"
#include "platform/posix/console.h"
#include "property_list/utf8.h"

#include <cstring>
#include <iconv.h>
#include <new>
#include <optional>

using platform::stringView;

namespace {

CFStringRef createString(std::string_view text) noexcept {
    try {
        return platform::createObject(std::string(text));
    } catch (const std::bad_alloc &) {
        return 0;
    }
}

/// text in the system library's encoding of that name; none when a character is not in it.
std::optional<std::string> converted(std::string_view text, const char *encoding) {
    const iconv_t conversion = ::iconv_open(encoding, "UTF-8");
    if (reinterpret_cast<intptr_t>(conversion) == -1) return std::nullopt;
    std::string out(text.size(), '\0'); // no character takes more bytes than in UTF-8
    char *from = const_cast<char *>(text.data()), *to = out.data();
    size_t fromLeft = text.size(), toLeft = out.size();
    const size_t inexact = ::iconv(conversion, &from, &fromLeft, &to, &toLeft);
    ::iconv_close(conversion);
    if (inexact != 0) return std::nullopt;
    out.resize(out.size() - toLeft);
    return out;
}

bool copyOut(std::string_view text, char *buffer, uint32_t size) noexcept {
    if (text.size() >= size) return false;
    memcpy(buffer, text.data(), text.size());
    buffer[text.size()] = '\0';
    return true;
}

} // namespace

std::string_view platform::stringView(CFStringRef s) noexcept {
    const std::string *text = find<std::string>(s);
    return text == nullptr ? std::string_view() : std::string_view(*text);
}

CFTypeID CFStringGetTypeID() { return platform::typeID<std::string>(); }

CFStringRef CFStringCreateWithUTF8(std::string_view utf8) {
    return property_list::validUtf8Length(utf8) == utf8.size() ? createString(utf8) : 0;
}

CFStringRef CFStringCreateCopy(CFStringRef s) {
    const std::string *text = platform::find<std::string>(s);
    return text == nullptr ? 0 : createString(*text);
}

uint32_t CFStringGetLength(CFStringRef s) { return static_cast<uint32_t>(stringView(s).size()); }

bool CFStringGetCString(CFStringRef s, char *buffer, uint32_t size, uint32_t encoding) {
    const std::string *text = platform::find<std::string>(s);
    if (text == nullptr || buffer == nullptr) return false;
    switch (encoding) {
    case kCFStringEncodingUTF8: return copyOut(*text, buffer, size);
    case kCFStringEncodingASCII: return property_list::isAscii(*text) && copyOut(*text, buffer, size);
    case kCFStringEncodingMacRoman:
        // Its lower half is ASCII: nothing needs converting then.
        if (property_list::isAscii(*text)) return copyOut(*text, buffer, size);
        try {
            const std::optional<std::string> bytes = converted(*text, "MACINTOSH");
            return bytes && copyOut(*bytes, buffer, size);
        } catch (const std::bad_alloc &) {
            return false;
        }
    default: return false;
    }
}

void CFShowStr(CFStringRef s) {
    platform::Console &console = *platform::backends().console;
    const std::string *text = platform::find<std::string>(s);
    console.print(text == nullptr ? std::string_view("(null)") : std::string_view(*text), true);
    console.print("\n", true);
}
