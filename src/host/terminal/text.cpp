#include "host/terminal/text.h"

#include "host/terminal/failure.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <cmath>
#include <fmt/format.h>

namespace host {
namespace {

constexpr struct {
    char letter;
    char byte;
} kEscapes[] = {{'n', '\n'}, {'r', '\r'}, {'t', '\t'}, {'e', '\x1B'}, {'\\', '\\'}};

/// Length of the UTF-8 character at the start of text; 0 when there is none.
size_t characterLength(std::string_view text) {
    auto byte = [&](size_t i) { return static_cast<unsigned char>(text[i]); };
    if (byte(0) < 0x80) return 1;
    size_t length = byte(0) >= 0xF5 ? 0 : byte(0) >= 0xF0 ? 4 : byte(0) >= 0xE0 ? 3 : byte(0) >= 0xC2 ? 2 : 0;
    if (length == 0 || text.size() < length) return 0;
    for (size_t i = 1; i < length; ++i) {
        if ((byte(i) & 0xC0) != 0x80) return 0;
    }
    // Overlong forms, surrogates, and what lies past Unicode.
    if (byte(0) == 0xE0 && byte(1) < 0xA0) return 0;
    if (byte(0) == 0xED && byte(1) >= 0xA0) return 0;
    if (byte(0) == 0xF0 && byte(1) < 0x90) return 0;
    if (byte(0) == 0xF4 && byte(1) >= 0x90) return 0;
    return length;
}

/// True for DEL and the control characters below 0x20 and from U+0080 to U+009F.
bool isControl(std::string_view character) {
    auto first = static_cast<unsigned char>(character[0]);
    return first < 0x20 || first == 0x7F || (first == 0xC2 && static_cast<unsigned char>(character[1]) < 0xA0);
}

/// wrapped() for one line that is too long.
std::string wrappedLine(std::string_view line, size_t width, size_t hang) {
    constexpr size_t kNarrow = 4; // the indent when there is no room for a second column
    size_t start = std::min(line.find_first_not_of(' '), line.size());
    line.remove_prefix(start);
    if (start > width / 2) start = kNarrow;
    size_t indent = start + hang;
    std::string result(start, ' ');
    if (size_t gap = line.find("  "); gap != std::string_view::npos) { // a list's first column
        const size_t second = std::min(line.find_first_not_of(' ', gap), line.size());
        const bool fits = start + second <= width / 2;
        result += line.substr(0, fits ? second : gap);
        indent = fits ? start + second : start + kNarrow;
        line.remove_prefix(second);
        if (!fits) result += "\n" + std::string(indent, ' ');
    }
    size_t column = widthOf(std::string_view(result).substr(result.rfind('\n') + 1));
    for (bool isFirst = true; !line.empty(); isFirst = false) {
        const std::string_view word = line.substr(0, line.find(' '));
        if (!isFirst && column + 1 + widthOf(word) > width) {
            result += "\n" + std::string(indent, ' ');
            column = indent;
        } else if (!isFirst) {
            result += ' ';
            ++column;
        }
        result += word;
        column += widthOf(word);
        line.remove_prefix(std::min(word.size() + 1, line.size()));
    }
    return result;
}

} // namespace

std::string shown(std::string_view text) {
    std::string result;
    while (!text.empty()) {
        size_t length = characterLength(text);
        if (length > 0 && isControl(text.substr(0, length))) length = 0;
        if (length > 0) {
            result += text.substr(0, length);
        } else {
            const auto *escape = std::find_if(std::begin(kEscapes), std::end(kEscapes),
                                              [&](const auto &candidate) { return candidate.byte == text[0]; });
            if (escape != std::end(kEscapes)) {
                result += {'\\', escape->letter};
            } else {
                result += fmt::format("\\x{:02X}", static_cast<unsigned char>(text[0]));
            }
        }
        text.remove_prefix(std::max<size_t>(length, 1));
    }
    return result;
}

bool isUtf8(std::string_view text) {
    while (!text.empty()) {
        size_t length = characterLength(text);
        if (length == 0) return false;
        text.remove_prefix(length);
    }
    return true;
}

std::string excerpt(std::string_view text, size_t limit) {
    return text.size() <= limit ? shown(text) : shown(text.substr(0, limit)) + "…";
}

std::string unescaped(std::string_view text, std::string_view what) {
    std::string result;
    for (size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '\\') {
            result += text[i];
            continue;
        }
        char letter = ++i < text.size() ? text[i] : '\0';
        const auto *escape = std::find_if(std::begin(kEscapes), std::end(kEscapes),
                                          [&](const auto &candidate) { return candidate.letter == letter; });
        if (escape != std::end(kEscapes)) {
            result += escape->byte;
            continue;
        }
        unsigned value = 0;
        const char *digits = text.data() + std::min(i + 1, text.size());
        const char *end = digits + std::min<size_t>(2, static_cast<size_t>(text.data() + text.size() - digits));
        auto [stop, error] = std::from_chars(digits, end, value, 16);
        if (letter != 'x' || error != std::errc() || stop != digits + 2) {
            throw Failure(ExitCode::Usage, fmt::format("{}: unknown escape \"{}\"; use \\n \\r \\t \\e \\xNN or \\\\", what,
                                                       shown(text.substr(i - 1, letter == 'x' ? 4 : 2))));
        }
        result += static_cast<char>(value);
        i += 2;
    }
    return result;
}

void requirePlotterText(std::string_view text, std::string_view what) {
    constexpr size_t kLongest = 255;
    auto foreign = std::find_if(text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) >= 0x80; });
    const char *fault = nullptr;
    if (foreign != text.end()) fault = "holds characters outside ASCII; a plotter cannot be sent them";
    if (text.find('\0') != std::string_view::npos) fault = "holds a NUL byte, which cannot be sent; leave it out";
    if (fault) throw Failure(ExitCode::Usage, fmt::format("{}: {}", what, fault));
    if (text.size() > kLongest) {
        throw Failure(ExitCode::Usage, fmt::format("{}: {} bytes, {} more than can be sent at once; shorten it", what,
                                                   text.size(), text.size() - kLongest));
    }
}

std::string grouped(int64_t number) {
    std::string digits = fmt::format("{}", number);
    for (size_t place = digits.size(); place > 3 && digits[place - 4] != '-'; place -= 3)
        digits.insert(place - 3, 1, ' ');
    return digits;
}

std::string counted(int64_t number, std::string_view noun) {
    return fmt::format("{} {}{}", grouped(number), noun, number == 1 ? "" : "s");
}

std::string duration(double seconds) {
    auto whole = static_cast<int64_t>(std::ceil(std::min(seconds, 1e9)));
    if (whole < 60) return fmt::format("{} s", whole);
    if (whole < 3600) return fmt::format("{} min {} s", whole / 60, whole % 60);
    return fmt::format("{} h {} min", whole / 3600, whole % 3600 / 60);
}

size_t widthOf(std::string_view text) {
    return static_cast<size_t>(
        std::count_if(text.begin(), text.end(), [](char c) { return (static_cast<unsigned char>(c) & 0xC0) != 0x80; }));
}

std::string metres(double millimetres) {
    return millimetres < 1000 ? fmt::format("{:.0f} mm", millimetres) : fmt::format("{:.2f} m", millimetres / 1000);
}

std::string wrapped(std::string_view text, size_t width, size_t hang) {
    std::string result;
    while (!text.empty()) {
        size_t end = text.find('\n');
        std::string_view line = text.substr(0, end);
        result += width == 0 || widthOf(line) <= width ? std::string(line) : wrappedLine(line, width, hang);
        if (end == std::string_view::npos) break;
        result += '\n';
        text.remove_prefix(end + 1);
    }
    return result;
}

std::string lowered(std::string_view text) {
    std::string result(text);
    // An abbreviation keeps its capitals.
    if (result.size() > 1 && !std::isupper(static_cast<unsigned char>(result[1]))) {
        result[0] = static_cast<char>(std::tolower(static_cast<unsigned char>(result[0])));
    }
    return result;
}

} // namespace host
