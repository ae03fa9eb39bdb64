#include "platform/corefoundation/handle_table.h"

#include <algorithm>
#include <cstdarg>
#include <cstddef>
#include <cstdio>
#include <new>

namespace {

/// A va_list that functions can take on from one another.
struct Arguments {
    va_list list;
};

/// One conversion of a format.
struct Conversion {
    std::string options, length; // options from the % on: flags, width, precision
    char letter = 0;
};

/// Always true, as answer of the conversions that are known.
template <typename T> bool appendValue(std::string &out, const std::string &format, T value) {
    char text[128];
    const int length = std::snprintf(text, sizeof text, format.c_str(), value);
    const size_t start = out.size(), needed = length < 0 ? 0 : static_cast<size_t>(length);
    if (needed < sizeof text) {
        out.append(text, needed);
    } else {
        out.resize(start + needed + 1);
        std::snprintf(out.data() + start, needed + 1, format.c_str(), value);
        out.pop_back();
    }
    return true;
}

/// Reads digits, or the * that stands for an argument.
std::string readCount(std::string_view format, size_t &at, Arguments &arguments) {
    if (at < format.size() && format[at] == '*') {
        ++at;
        return std::to_string(va_arg(arguments.list, int));
    }
    const size_t start = at;
    while (at < format.size() && format[at] >= '0' && format[at] <= '9')
        ++at;
    return std::string(format.substr(start, at - start));
}

std::string readAnyOf(std::string_view format, size_t &at, std::string_view characters) {
    const size_t start = at;
    while (at < format.size() && characters.find(format[at]) != std::string_view::npos)
        ++at;
    return std::string(format.substr(start, at - start));
}

Conversion readConversion(std::string_view format, size_t &at, Arguments &arguments) {
    Conversion conversion;
    conversion.options = "%";
    conversion.options += readAnyOf(format, at, "-+ #0");
    conversion.options += readCount(format, at, arguments);
    if (at < format.size() && format[at] == '.') {
        const std::string precision = readCount(format, ++at, arguments);
        // A negative one, from an argument, counts as none.
        if (!precision.starts_with('-')) conversion.options.append(1, '.').append(precision);
    }
    conversion.length = readAnyOf(format, at, "hlz");
    if (at < format.size()) conversion.letter = format[at++];
    return conversion;
}

template <typename Narrow, typename Long, typename LongLong, typename Size>
bool appendInteger(std::string &out, const std::string &format, const std::string &length, Arguments &arguments) {
    if (length == "ll") return appendValue(out, format, va_arg(arguments.list, LongLong));
    if (length == "l") return appendValue(out, format, va_arg(arguments.list, Long));
    if (length == "z") return appendValue(out, format, va_arg(arguments.list, Size));
    const bool known = length.empty() || length == "h" || length == "hh";
    return known && appendValue(out, format, va_arg(arguments.list, Narrow));
}

const char *textOf(CFStringRef s) {
    const std::string *text = platform::find<std::string>(s);
    return text == nullptr ? "(null)" : text->c_str();
}

/// False for a conversion that is not known; nothing was taken from arguments then.
bool appendConversion(std::string &out, const Conversion &conversion, Arguments &arguments) {
    const std::string &length = conversion.length;
    const std::string format = conversion.options + length + conversion.letter;
    const bool plain = length.empty();
    switch (conversion.letter) {
    case 'd':
    case 'i': return appendInteger<int, long, long long, ptrdiff_t>(out, format, length, arguments);
    case 'u':
    case 'x':
    case 'X':
    case 'o': return appendInteger<unsigned, unsigned long, unsigned long long, size_t>(out, format, length, arguments);
    case 'e':
    case 'E':
    case 'f':
    case 'g':
    case 'G': return (plain || length == "l") && appendValue(out, format, va_arg(arguments.list, double));
    case 'c': return plain && appendValue(out, format, va_arg(arguments.list, int));
    case 's': return plain && appendValue(out, format, va_arg(arguments.list, const char *));
    case 'p': return plain && appendValue(out, format, va_arg(arguments.list, void *));
    case '@': return plain && appendValue(out, conversion.options + 's', textOf(va_arg(arguments.list, CFStringRef)));
    case '%': return plain && appendValue(out, "%c", '%');
    default: return false;
    }
}

CFStringRef createFormatted(std::string_view format, Arguments &arguments) noexcept {
    try {
        std::string out;
        size_t at = 0;
        while (at < format.size()) {
            const size_t sign = std::min(format.find('%', at), format.size());
            out += format.substr(at, sign - at);
            if (sign == format.size()) break;
            at = sign + 1;
            const Conversion conversion = readConversion(format, at, arguments);
            if (!appendConversion(out, conversion, arguments)) out += format.substr(sign, at - sign);
        }
        return CFStringCreateWithUTF8(out);
    } catch (const std::bad_alloc &) {
        return 0;
    }
}

} // namespace

CFStringRef CFStringCreateWithFormat(const char *format, ...) {
    Arguments arguments;
    va_start(arguments.list, format);
    const CFStringRef made = createFormatted(format, arguments);
    va_end(arguments.list);
    return made;
}

CFStringRef CFStringCreateWithFormatAndArguments(CFStringRef format, va_list arguments) {
    const std::string *text = platform::find<std::string>(format);
    if (text == nullptr) return 0;
    Arguments copy;
    va_copy(copy.list, arguments);
    const CFStringRef made = createFormatted(*text, copy);
    va_end(copy.list);
    return made;
}
