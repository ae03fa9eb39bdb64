#include "host/examination/examination.h"
#include "language/hpgl_instructions.h"

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

/// Behind the sequence that leaves a printer's language stand lines of job control.
constexpr std::string_view kExit = "\x1B%-12345X";
constexpr std::string_view kJobControl = "@PJL";

size_t jobControlLength(std::string_view text) {
    size_t length = 0;
    while (text.substr(length, kJobControl.size()) == kJobControl)
        length = std::min(text.find('\n', length), text.size() - 1) + 1;
    return length;
}

bool isQuestion(std::string_view text) {
    using namespace language::hpgl;
    if (text.size() < 2 || (text.size() > 2 && static_cast<unsigned char>(text[2]) > ' ')) return false;
    const Instruction *instruction =
        findInstruction(static_cast<unsigned char>(text[0]), static_cast<unsigned char>(text[1]));
    return instruction && instruction->form == Form::Request;
}

} // namespace

bool isPadding(std::string_view text, bool hasQuestions) {
    while (!text.empty()) {
        auto byte = static_cast<unsigned char>(text[0]);
        if (text.substr(0, kExit.size()) == kExit) {
            text.remove_prefix(kExit.size());
            text.remove_prefix(jobControlLength(text));
        } else if (byte == 0x1B) {
            text.remove_prefix(escapeLength(text));
        } else if (hasQuestions && isQuestion(text)) {
            text.remove_prefix(2);
        } else if (byte <= 0x20 || byte == 0x7F) {
            text.remove_prefix(1);
        } else {
            return false;
        }
    }
    return true;
}

} // namespace host
