#include "property_list/utf8.h"

#include <algorithm>
#include <cstdint>

namespace property_list {

namespace {

struct Lead {
    uint8_t first, last;     // lead bytes
    uint8_t length;          // of the character
    uint8_t lowest, highest; // second byte: shuts out overlong forms, surrogates and what lies past U+10FFFF
};

constexpr Lead kLeads[] = {
    {0xC2, 0xDF, 2, 0x80, 0xBF}, {0xE0, 0xE0, 3, 0xA0, 0xBF}, {0xE1, 0xEC, 3, 0x80, 0xBF}, {0xED, 0xED, 3, 0x80, 0x9F},
    {0xEE, 0xEF, 3, 0x80, 0xBF}, {0xF0, 0xF0, 4, 0x90, 0xBF}, {0xF1, 0xF3, 4, 0x80, 0xBF}, {0xF4, 0xF4, 4, 0x80, 0x8F},
};

bool isPlain(char c) noexcept { return static_cast<unsigned char>(c) < 0x80; }

/// Length of the character that text starts with; 0 when it is none.
size_t characterLength(std::string_view text) noexcept {
    const auto byte = [&](size_t i) { return static_cast<uint8_t>(text[i]); };
    for (const Lead &lead : kLeads) {
        if (byte(0) < lead.first || byte(0) > lead.last) continue;
        if (text.size() < lead.length || byte(1) < lead.lowest || byte(1) > lead.highest) return 0;
        for (size_t i = 2; i < lead.length; ++i) {
            if ((byte(i) & 0xC0) != 0x80) return 0;
        }
        return lead.length;
    }
    return 0;
}

} // namespace

size_t validUtf8Length(std::string_view text) noexcept {
    size_t at = 0;
    while (at < text.size()) {
        const size_t length = isPlain(text[at]) ? 1 : characterLength(text.substr(at));
        if (length == 0) break;
        at += length;
    }
    return at;
}

bool isAscii(std::string_view text) noexcept { return std::all_of(text.begin(), text.end(), isPlain); }

} // namespace property_list
