#include "emulations/cut.h"

#include <cstring>

namespace emulations {

namespace {

constexpr size_t kMarkBehind = 9; // a mark counts only at a position greater than this

/// The last position of text in bytes; npos when there is none, or text is empty.
size_t findLast(std::string_view bytes, std::string_view text) noexcept {
    if (text.empty()) return std::string_view::npos;
    // For its last byte, which memrchr finds many bytes at a time; rfind compares the text at every position.
    const size_t head = text.size() - 1;
    for (size_t end = bytes.size(); end > head;) {
        const void *last = memrchr(bytes.data() + head, text.back(), end - head);
        if (last == nullptr) break;
        end = static_cast<size_t>(static_cast<const char *>(last) - bytes.data());
        if (memcmp(bytes.data() + end - head, text.data(), head) == 0) return end - head;
    }
    return std::string_view::npos;
}

} // namespace

size_t findCut(std::string_view chunk, std::string_view terminator, const CutRule &rule) noexcept {
    size_t end = findLast(chunk, terminator);
    if (end == std::string_view::npos || end <= rule.terminatorBehind) return 0;
    std::string_view before = chunk.substr(0, end);
    const CutMark *mark = &rule.mark;
    size_t at = findLast(before, mark->text);
    if (at == std::string_view::npos) {
        mark = &rule.otherwise;
        at = findLast(before, mark->text);
    }
    if (at == std::string_view::npos || at <= kMarkBehind) return 0;
    return at + mark->kept;
}

size_t findEnd(std::string_view tail, std::string_view terminator, const CutRule &rule) noexcept {
    std::string_view end = rule.end.empty() ? terminator : rule.end;
    size_t at = findLast(tail, end);
    return at == std::string_view::npos ? 0 : at + end.size();
}

} // namespace emulations
