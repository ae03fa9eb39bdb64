// The chunk of a PNG file that tells the size of its dots. The drawing library writes none, and without it the picture would
// not be printed in the size of the sheet.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace virtual_plotter {

/// The signature and the header chunk, behind which this chunk stands.
constexpr size_t kPngHeaderSize = 8 + 25;

using PngSizeChunk = std::array<uint8_t, 21>;

/// Length, type pHYs, dots per metre in x and in y, unit, check (all big-endian).
constexpr PngSizeChunk pngSizeChunk(uint32_t dotsPerMetre) {
    PngSizeChunk chunk = {0, 0, 0, 9, 'p', 'H', 'Y', 's'};
    const auto put = [&chunk](size_t at, uint32_t value) {
        for (int shift = 24; shift >= 0; shift -= 8)
            chunk[at++] = static_cast<uint8_t>(value >> shift);
    };
    put(8, dotsPerMetre);
    put(12, dotsPerMetre);
    chunk[16] = 1;               // the metre
    uint32_t check = 0xFFFFFFFF; // CRC-32 of type and data
    for (size_t at = 4; at < 17; ++at) {
        check ^= chunk[at];
        for (int bit = 0; bit < 8; ++bit)
            check = (check & 1) != 0 ? (check >> 1) ^ 0xEDB88320 : check >> 1;
    }
    put(17, ~check);
    return chunk;
}

} // namespace virtual_plotter
