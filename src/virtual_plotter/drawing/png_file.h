// A PNG file, written row by row and packed on all processors: with zlib alone, for what a plot needs of the format is a few
// chunks, and packing is most of the time of a small drawing.
#pragma once

#include "virtual_plotter/drawing/output_file.h"
#include "virtual_plotter/drawing/page.h"

#include <functional>
#include <span>
#include <vector>

namespace virtual_plotter {

struct PngHeader {
    int width, height;
    double dotsPerMetre;
    std::span<const Colour> palette; ///< with it a dot is a byte; without, three: red, green, blue
};

/// The bytes of a row, in room when they have to be made. Called for several rows at the same time.
using PngRow = std::function<std::span<const uint8_t>(int y, std::vector<uint8_t> &room)>;

/// Writes the whole file. Throws std::bad_alloc.
void writePng(OutputFile &file, const PngHeader &header, const PngRow &row);

} // namespace virtual_plotter
