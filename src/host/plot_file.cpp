#include "host/plot_file.h"

#include "host/failure.h"
#include "host/text.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <fmt/format.h>
#include <functional>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace host {

namespace {

constexpr int64_t kLongestTail = 255 + 255; // the largest chunk, and the longest mark before it

int64_t sizeOf(const std::string &path) {
    struct stat status;
    if (stat(path.c_str(), &status) != 0) throw fileFailure(path, errno);
    return status.st_size;
}

std::string endOf(const std::string &path, int64_t size, int64_t length) {
    std::string text(static_cast<size_t>(length), '\0');
    int fd = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0) throw fileFailure(path, errno);
    ssize_t count = pread(fd, text.data(), text.size(), size - length);
    close(fd);
    text.resize(static_cast<size_t>(std::max<ssize_t>(count, 0)));
    return text;
}

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

void requireInputFile(const std::string &path, const char *what) {
    struct stat status;
    if (stat(path.c_str(), &status) != 0) throw fileFailure(path, errno);
    if (S_ISDIR(status.st_mode)) throw fileFailure(path, EISDIR);
    if (!S_ISREG(status.st_mode)) {
        throw Failure(ExitCode::Unfit, fmt::format("{}: not a {}; save it in one first", shown(path), what));
    }
    int fd = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0) throw fileFailure(path, errno);
    close(fd);
    if (status.st_size == 0)
        throw Failure(ExitCode::Unfit, fmt::format("{}: the {} is empty; make it again", shown(path), what));
}

void readBlocks(const std::string &path, int64_t end,
                const std::function<bool(int64_t offset, std::string_view block)> &look) {
    int fd = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0) throw fileFailure(path, errno);
    std::vector<char> buffer(size_t{64} * 1024);
    int64_t offset = 0;
    ssize_t count = 0;
    while (offset < end) {
        count = pread(fd, buffer.data(), std::min(buffer.size(), static_cast<size_t>(end - offset)), offset);
        if (count <= 0 || !look(offset, {buffer.data(), static_cast<size_t>(count)})) break;
        offset += count;
    }
    int errorNumber = errno;
    close(fd);
    if (count < 0) throw fileFailure(path, errorNumber);
}

std::optional<ForeignByte> findForeignByte(const std::string &path) {
    std::optional<ForeignByte> found;
    readBlocks(path, sizeOf(path), [&](int64_t offset, std::string_view block) {
        auto at = std::find_if(block.begin(), block.end(), [](char c) { return static_cast<unsigned char>(c) >= 0x80; });
        if (at == block.end()) return true;
        found = {offset + (at - block.begin()), static_cast<unsigned char>(*at)};
        return false;
    });
    return found;
}

Withheld findWithheld(const std::string &path, std::string_view mark, int64_t withheldBytes) {
    Withheld result;
    int64_t size = sizeOf(path);
    std::string end = endOf(path, size, std::min(size, kLongestTail));
    size_t at = mark.empty() ? std::string::npos : end.rfind(mark);
    auto behind = static_cast<int64_t>(at == std::string::npos ? end.size() : end.size() - at - mark.size());
    result.tailBytes = std::min(behind, withheldBytes);
    result.tail = end.substr(end.size() - static_cast<size_t>(result.tailBytes));
    result.innerBytes = withheldBytes - result.tailBytes;
    if (result.innerBytes == 0) return result;
    readBlocks(path, size - result.tailBytes, [&](int64_t offset, std::string_view block) {
        size_t nul = block.find('\0');
        if (result.firstNul < 0 && nul != std::string_view::npos) result.firstNul = offset + static_cast<int64_t>(nul);
        result.nulBytes += std::count(block.begin(), block.end(), '\0');
        return true;
    });
    return result;
}

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
