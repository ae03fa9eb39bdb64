#include "host/job/job_text.h"

#include <algorithm>
#include <charconv>
#include <limits>
#include <pugixml.hpp>

namespace host {

namespace {

constexpr struct {
    std::string_view name;
    char character;
} kEntities[] = {{"amp", '&'}, {"lt", '<'}, {"gt", '>'}, {"quot", '"'}, {"apos", '\''}};

constexpr std::string_view kSpace = " \t\r\n";

std::string_view trimmed(std::string_view text) {
    text = text.substr(0, text.find_last_not_of(kSpace) + 1);
    text.remove_prefix(std::min(text.find_first_not_of(kSpace), text.size()));
    return text;
}

/// False unless the whole text is a number without a sign.
template <class Number, class... Base> bool readUnsigned(std::string_view text, Number &value, Base... base) {
    if (text.starts_with('-')) return false;
    const char *end = text.data() + text.size();
    const auto result = std::from_chars(text.data(), end, value, base...);
    return result.ec == std::errc() && result.ptr == end;
}

/// Takes white space around the text and its sign away; true for a minus.
bool takeSign(std::string_view &text) {
    text = trimmed(text);
    const bool isNegative = text.starts_with('-');
    if (isNegative || text.starts_with('+')) text.remove_prefix(1);
    return isNegative;
}

} // namespace

std::string characterNamed(std::string_view name) {
    for (const auto &entity : kEntities) {
        if (entity.name == name) return std::string(1, entity.character);
    }
    const bool isHex = name.starts_with("#x");
    uint32_t code = 0;
    if (!name.starts_with('#') || !readUnsigned(name.substr(isHex ? 2 : 1), code, isHex ? 16 : 10)) return {};
    if (code == 0 || code > 0x10FFFF || (code >= 0xD800 && code <= 0xDFFF)) return {};
    return pugi::as_utf8(std::wstring(1, static_cast<wchar_t>(code)));
}

bool readNumber(std::string_view text, double &value) {
    const bool isNegative = takeSign(text);
    if (!readUnsigned(text, value)) return false;
    if (isNegative) value = -value;
    return true;
}

bool readNumber(std::string_view text, int64_t &value) {
    const bool isNegative = takeSign(text);
    const bool isHex = text.starts_with("0x") || text.starts_with("0X");
    uint64_t magnitude = 0;
    if (!readUnsigned(text.substr(isHex ? 2 : 0), magnitude, isHex ? 16 : 10)) return false;
    if (magnitude > uint64_t{std::numeric_limits<int64_t>::max()} + (isNegative ? 1 : 0)) return false;
    value = static_cast<int64_t>(isNegative ? 0 - magnitude : magnitude);
    return true;
}

bool isSpace(std::string_view text) { return trimmed(text).empty(); }

bool isDate(std::string_view text) {
    constexpr std::string_view kShape = "0000-00-00T00:00:00Z";
    text = trimmed(text);
    return std::equal(text.begin(), text.end(), kShape.begin(), kShape.end(),
                      [](char c, char shape) { return shape == '0' ? c >= '0' && c <= '9' : c == shape; });
}

bool isBase64(std::string_view text) {
    constexpr std::string_view kDigits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    size_t digits = 0, padding = 0;
    for (char c : text) {
        if (kSpace.find(c) != std::string_view::npos) continue;
        const bool isDigit = kDigits.find(c) != std::string_view::npos;
        if (isDigit ? padding > 0 : c != '=') return false;
        ++(isDigit ? digits : padding);
    }
    return padding <= 2 && (digits + padding) % 4 == 0;
}

} // namespace host
