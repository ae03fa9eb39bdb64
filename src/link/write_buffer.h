// The record's ORB_writeBuffer as senders fill it: both links write what stands there, up to the first NUL.
//
// Texts (requests, tools, start-up) come as strings, which may be unfit: too long, or not ASCII. Pieces of the plot file
// come as bytes that were checked already; for them nothing is converted and the buffer is not cleared each time.
#pragma once

#include "orb/vectorix.h"

#include <cstdint>
#include <string_view>

namespace plot {

/// Clears the buffer and converts a string into it; false, with the buffer left cleared, when it is not ASCII or has more
/// than 255 characters.
bool loadText(CFStringRef text) noexcept;

/// The buffer during a stream of pieces: cleared when the stream ends, not after each piece.
class PieceBuffer {
public:
    PieceBuffer() = default;
    PieceBuffer(const PieceBuffer &) = delete;
    PieceBuffer &operator=(const PieceBuffer &) = delete;
    ~PieceBuffer();

    /// Puts a piece of at most 255 ASCII bytes there, with a NUL. Returns the bytes that the link will be offered: those
    /// before the first NUL of the piece itself, if it has one.
    int64_t load(std::string_view piece) noexcept;

private:
    bool used_ = false;
};

} // namespace plot
