#include "printer_app/page/html.h"

#include "property_list/utf8.h"

#include <algorithm>
#include <fmt/format.h>
#include <iterator>

namespace printer_app {
namespace {

constexpr std::string_view kUnknown = "\uFFFD";

/// Characters by the bytes before their last one, and by the range that it is in; the first row that fits counts.
constexpr struct Replaced {
    std::string_view lead;
    unsigned char first, last;
    std::string_view by;
} kReplaced[] = {
    {"", '&', '&', "&amp;"},
    {"", '<', '<', "&lt;"},
    {"", '>', '>', "&gt;"},
    {"", '"', '"', "&quot;"},
    {"", '\'', '\'', "&#39;"},
    {"", '\t', '\n', " "},
    {"", 0x00, 0x1F, kUnknown},
    {"", 0x7F, 0x7F, kUnknown},
    {"\xC2", 0x80, 0x9F, kUnknown},
    {"\xE2\x80", 0xA8, 0xAE, kUnknown},
    {"\xE2\x81", 0xA6, 0xA9, kUnknown},
};

const Replaced *replacedAt(std::string_view text) {
    const auto *found = std::find_if(std::begin(kReplaced), std::end(kReplaced), [&](const Replaced &row) {
        if (text.size() <= row.lead.size() || !text.starts_with(row.lead)) return false;
        const auto last = static_cast<unsigned char>(text[row.lead.size()]);
        return last >= row.first && last <= row.last;
    });
    return found == std::end(kReplaced) ? nullptr : found;
}

std::string escapedUtf8(std::string_view text) {
    std::string result;
    while (!text.empty()) {
        const Replaced *row = replacedAt(text);
        result += row ? row->by : text.substr(0, 1);
        text.remove_prefix(row ? row->lead.size() + 1 : 1);
    }
    return result;
}

bool isPlain(char c) {
    constexpr std::string_view kPlain = "-._~0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz";
    return kPlain.find(c) != std::string_view::npos;
}

} // namespace

std::string escaped(std::string_view text) {
    std::string result;
    for (;;) {
        const size_t fit = property_list::validUtf8Length(text);
        result += escapedUtf8(text.substr(0, fit));
        if (fit == text.size()) return result;
        result += kUnknown;
        text.remove_prefix(fit + 1);
    }
}

std::string named(std::string_view name) { return fmt::format("<bdi>{}</bdi>", escaped(name)); }

std::string inAddress(std::string_view text) {
    std::string result;
    for (const char c : text)
        result += isPlain(c) ? std::string(1, c) : fmt::format("%{:02X}", static_cast<unsigned char>(c));
    return result;
}

} // namespace printer_app
