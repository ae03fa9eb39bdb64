#include "link/write_buffer.h"

#include "platform/corefoundation/corefoundation.h"
#include "record/state.h"

#include <cstring>

namespace plot {

namespace {

void clearBuffer() noexcept { memset(answer().ORB_writeBuffer, 0, sizeof answer().ORB_writeBuffer); }

} // namespace

bool loadText(CFStringRef text) noexcept {
    clearBuffer();
    return CFStringGetCString(text, answer().ORB_writeBuffer, sizeof answer().ORB_writeBuffer, kCFStringEncodingASCII);
}

PieceBuffer::~PieceBuffer() {
    if (used_) clearBuffer();
}

int64_t PieceBuffer::load(std::string_view piece) noexcept {
    used_ = true;
    char *buffer = answer().ORB_writeBuffer;
    memcpy(buffer, piece.data(), piece.size());
    buffer[piece.size()] = '\0';
    return static_cast<int64_t>(strlen(buffer));
}

} // namespace plot
