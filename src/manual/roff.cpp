#include "manual/roff.h"

#include <algorithm>
#include <cstdint>
#include <fmt/format.h>

namespace manual {

namespace {

/// The character at the front of UTF-8 text, which is taken off.
uint32_t takeCharacter(std::string_view &text) {
    auto byte = [&](size_t i) { return static_cast<unsigned char>(text[i]); };
    size_t length = byte(0) < 0x80 ? 1 : byte(0) < 0xE0 ? 2 : byte(0) < 0xF0 ? 3 : 4;
    uint32_t character = length == 1 ? byte(0) : byte(0) & (0xFFU >> (length + 1));
    for (size_t i = 1; i < length && i < text.size(); ++i)
        character = character << 6 | (byte(i) & 0x3FU);
    text.remove_prefix(std::min(length, text.size()));
    return character;
}

} // namespace

std::string roff(std::string_view line) {
    std::string text = !line.empty() && (line[0] == '.' || line[0] == '\'') ? "\\&" : "";
    while (!line.empty()) {
        uint32_t character = takeCharacter(line);
        switch (character) {
        case '\\': text += "\\e"; break;
        case '-': text += "\\-"; break;
        case '\'': text += "\\(aq"; break;
        case '`': text += "\\(ga"; break;
        case '^': text += "\\(ha"; break;
        case '~': text += "\\(ti"; break;
        case '"': text += "\\(dq"; break;
        default:
            text += character < 0x80 ? std::string(1, static_cast<char>(character)) : fmt::format("\\[u{:04X}]", character);
        }
    }
    return text;
}

std::string bold(std::string_view line) { return "\\fB" + roff(line) + "\\fR"; }
std::string italic(std::string_view line) { return "\\fI" + roff(line) + "\\fR"; }

std::string filled(std::string_view text) {
    std::string result;
    while (!text.empty()) {
        size_t end = std::min(text.find('\n'), text.size());
        std::string_view line = text.substr(0, end);
        line.remove_prefix(std::min(line.find_first_not_of(' '), line.size()));
        if (!result.empty()) result += "\n";
        result += roff(line);
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return result;
}

std::string paragraphs(std::string_view text) {
    std::string result;
    while (!text.empty()) {
        size_t end = std::min(text.find("\n\n"), text.size());
        std::string_view paragraph = text.substr(0, end);
        text.remove_prefix(std::min(end + 2, text.size()));
        bool keepsLines = paragraph.find("\n ") != std::string_view::npos || paragraph.substr(0, 1) == " ";
        result += keepsLines ? ".PP\n.nf\n" : ".PP\n";
        if (!keepsLines) {
            result += filled(paragraph) + "\n";
            continue;
        }
        for (size_t start = 0; start < paragraph.size();) {
            size_t stop = std::min(paragraph.find('\n', start), paragraph.size());
            result += roff(paragraph.substr(start, stop - start)) + "\n";
            start = stop + 1;
        }
        result += ".fi\n";
    }
    return result;
}

} // namespace manual
