// The plot file: what must hold before a job, and what was left of it after one.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace host {

/// Throws Failure unless there is a file with something in it that may be read. what names its kind: "plot file".
void requireInputFile(const std::string &path, const char *what);

/// Reads a file block by block, from its start to the offset end or to its end, until look returns false. Throws Failure.
void readBlocks(const std::string &path, int64_t end,
                const std::function<bool(int64_t offset, std::string_view block)> &look);

struct ForeignByte {
    int64_t offset;
    unsigned char byte;
};

/// The first byte that is not ASCII: no plot gets past one.
std::optional<ForeignByte> findForeignByte(const std::string &path);

/// What a job that came to its end left unsent.
struct Withheld {
    int64_t tailBytes = 0;  ///< behind the last mark
    std::string tail;       ///< those bytes
    int64_t innerBytes = 0; ///< behind NUL bytes inside the plot, those NUL bytes included
    int64_t nulBytes = 0;   ///< how many of them are NUL
    int64_t firstNul = -1;  ///< offset of the first one
};

/// Looks into the plot file for the withheld bytes of a finished job. mark is what a piece at the file's end ends with.
Withheld findWithheld(const std::string &path, std::string_view mark, int64_t withheldBytes);

/// True when nothing in the text draws: white space, control bytes and escape sequences.
bool isPadding(std::string_view text);

} // namespace host
