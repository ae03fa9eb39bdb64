#include "property_list/value_text.h"

#include <algorithm>
#include <charconv>
#include <limits>

namespace property_list {

namespace {

constexpr std::string_view kSpace = " \t\r\n";

std::string_view trimmed(std::string_view text) noexcept {
    const size_t first = text.find_first_not_of(kSpace);
    if (first == std::string_view::npos) return {};
    return text.substr(first, text.find_last_not_of(kSpace) - first + 1);
}

/// Takes a sign off the front; true for minus.
bool takeSign(std::string_view &text) noexcept {
    const bool signedText = !text.empty() && (text.front() == '-' || text.front() == '+');
    const bool negative = signedText && text.front() == '-';
    if (signedText) text.remove_prefix(1);
    return negative;
}

/// The whole text as a number without a sign; base only for integers.
template <typename T, typename... Base> std::optional<T> wholeNumber(std::string_view text, Base... base) noexcept {
    // std::from_chars takes a minus of its own, which would be a second sign here.
    if (text.empty() || text.front() == '-') return std::nullopt;
    T value{};
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value, base...);
    if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
    return value;
}

struct Entity {
    std::string_view name;
    char character;
};

constexpr Entity kEntities[] = {{"amp", '&'}, {"lt", '<'}, {"gt", '>'}, {"quot", '"'}, {"apos", '\''}};

bool appendUtf8(std::string &out, uint32_t c) {
    if (c == 0 || c > 0x10FFFF || (c >= 0xD800 && c <= 0xDFFF)) return false;
    const auto add = [&](uint32_t byte) { out += static_cast<char>(byte); };
    if (c < 0x80) {
        add(c);
    } else if (c < 0x800) {
        add(0xC0 | c >> 6);
        add(0x80 | (c & 0x3F));
    } else if (c < 0x10000) {
        add(0xE0 | c >> 12);
        add(0x80 | (c >> 6 & 0x3F));
        add(0x80 | (c & 0x3F));
    } else {
        add(0xF0 | c >> 18);
        add(0x80 | (c >> 12 & 0x3F));
        add(0x80 | (c >> 6 & 0x3F));
        add(0x80 | (c & 0x3F));
    }
    return true;
}

/// name is what stands between "&" and ";".
bool appendReference(std::string &out, std::string_view name) {
    if (name.starts_with("#")) {
        const bool hex = name.starts_with("#x");
        const auto code = wholeNumber<uint32_t>(name.substr(hex ? 2 : 1), hex ? 16 : 10);
        return code && appendUtf8(out, *code);
    }
    const auto entity = std::find_if(std::begin(kEntities), std::end(kEntities), [&](auto &e) { return e.name == name; });
    if (entity == std::end(kEntities)) return false;
    out += entity->character;
    return true;
}

constexpr std::string_view kBase64 = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

} // namespace

bool isXmlSpace(std::string_view text) noexcept { return text.find_first_not_of(kSpace) == std::string_view::npos; }

std::optional<std::string_view> appendResolved(std::string &out, std::string_view text) {
    for (size_t at; (at = text.find('&')) != std::string_view::npos;) {
        out += text.substr(0, at);
        const size_t end = text.find(';', at);
        const std::string_view name = text.substr(at + 1, end == std::string_view::npos ? end : end - at - 1);
        if (end == std::string_view::npos || !appendReference(out, name)) return name;
        text.remove_prefix(end + 1);
    }
    out += text;
    return std::nullopt;
}

std::optional<Number> integerOf(std::string_view text) noexcept {
    text = trimmed(text);
    const bool negative = takeSign(text);
    const bool hex = text.starts_with("0x") || text.starts_with("0X");
    const auto magnitude = wholeNumber<uint64_t>(hex ? text.substr(2) : text, hex ? 16 : 10);
    constexpr uint64_t kMax = std::numeric_limits<int64_t>::max();
    if (!magnitude || *magnitude > kMax + (negative ? 1 : 0)) return std::nullopt;
    return static_cast<int64_t>(negative ? 0 - *magnitude : *magnitude);
}

std::optional<Number> realOf(std::string_view text) noexcept {
    text = trimmed(text);
    const bool negative = takeSign(text);
    const auto magnitude = wholeNumber<double>(text);
    if (!magnitude) return std::nullopt;
    return negative ? -*magnitude : *magnitude;
}

std::optional<Date> dateOf(std::string_view text) {
    constexpr std::string_view kShape = "0000-00-00T00:00:00Z";
    text = trimmed(text);
    const bool fits = std::equal(text.begin(), text.end(), kShape.begin(), kShape.end(),
                                 [](char c, char shape) { return shape == '0' ? c >= '0' && c <= '9' : c == shape; });
    if (!fits) return std::nullopt;
    return Date{std::string(text)};
}

std::optional<Data> dataOf(std::string_view text) {
    Data data;
    data.bytes.reserve(text.size() / 4 * 3);
    uint32_t bits = 0;
    size_t digits = 0, padding = 0;
    for (char c : text) {
        if (kSpace.find(c) != std::string_view::npos) continue;
        const size_t digit = kBase64.find(c);
        if (c == '=') {
            ++padding;
        } else if (digit == std::string_view::npos || padding != 0) {
            return std::nullopt;
        } else {
            bits = bits << 6 | static_cast<uint32_t>(digit);
            // Each digit but the first of four completes a byte.
            if (++digits % 4 != 1) data.bytes += static_cast<char>(bits >> (8 - 2 * ((digits - 1) % 4 + 1)));
        }
    }
    if ((digits + padding) % 4 != 0 || padding > 2) return std::nullopt;
    return data;
}

} // namespace property_list
