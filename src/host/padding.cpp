#include "host/examination.h"

#include <algorithm>

namespace host {

namespace {

/// Length of the escape sequence at the start of text, which begins with the escape character.
size_t escapeLength(std::string_view text) {
    if (text.size() < 2) return text.size();
    if (text[1] == '.') {
        // Device control of pen plotters: a letter or sign, then numbers, ";" and ":" for those that take parameters.
        size_t end = std::min<size_t>(text.size(), 3);
        size_t last = text.find_first_not_of("0123456789;", end);
        return last != std::string_view::npos && text[last] == ':' ? last + 1 : end;
    }
    if (std::string_view("%&*()").find(text[1]) != std::string_view::npos) {
        // Printer languages: parameters up to a capital letter or "@".
        auto end = std::find_if(text.begin() + 2, text.end(), [](char c) { return c >= '@' && c <= 'Z'; });
        return std::min(static_cast<size_t>(end - text.begin()) + 1, text.size());
    }
    return 2;
}

} // namespace

bool isPadding(std::string_view text) {
    while (!text.empty()) {
        auto byte = static_cast<unsigned char>(text[0]);
        if (byte == 0x1B) {
            text.remove_prefix(escapeLength(text));
        } else if (byte <= 0x20 || byte == 0x7F) {
            text.remove_prefix(1);
        } else {
            return false;
        }
    }
    return true;
}

} // namespace host
