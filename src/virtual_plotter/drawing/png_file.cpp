#include "virtual_plotter/drawing/png_file.h"
#include "virtual_plotter/drawing/bands.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <new>
#include <string_view>
#include <vector>
#include <zlib.h>

namespace virtual_plotter {

namespace {

using Bytes = std::vector<uint8_t>;

// Each band is packed by itself, which costs some bytes at its end; so many at a time, which bounds the memory.
constexpr size_t kBandBytes = 512 << 10, kBandsAtATime = 32;

void putNumber(Bytes &bytes, uint32_t number) {
    for (int shift = 24; shift >= 0; shift -= 8)
        bytes.push_back(static_cast<uint8_t>(number >> shift));
}

/// Length, type, data, check.
void writeChunk(OutputFile &file, std::string_view type, const Bytes &data) {
    Bytes chunk;
    putNumber(chunk, static_cast<uint32_t>(data.size()));
    const size_t checkedFrom = chunk.size();
    chunk.insert(chunk.end(), type.begin(), type.end());
    chunk.insert(chunk.end(), data.begin(), data.end());
    putNumber(chunk, static_cast<uint32_t>(crc32_z(0, chunk.data() + checkedFrom, chunk.size() - checkedFrom)));
    file.write(chunk.data(), chunk.size());
}

void writeHeader(OutputFile &file, const PngHeader &header) {
    constexpr uint8_t kBitDepth = 8, kPalette = 3, kTrueColour = 2, kMetre = 1;
    file.write("\x89PNG\r\n\x1A\n", 8);
    Bytes size, density, palette;
    putNumber(size, static_cast<uint32_t>(header.width));
    putNumber(size, static_cast<uint32_t>(header.height));
    size.insert(size.end(), {kBitDepth, header.palette.empty() ? kTrueColour : kPalette, 0, 0, 0});
    writeChunk(file, "IHDR", size);
    // Without it the picture would not be printed in the size of the sheet.
    for (int side = 0; side < 2; ++side)
        putNumber(density, static_cast<uint32_t>(std::lround(header.dotsPerMetre)));
    density.push_back(kMetre);
    writeChunk(file, "pHYs", density);
    for (const Colour &colour : header.palette)
        palette.insert(palette.end(), {colour.red, colour.green, colour.blue});
    if (!palette.empty()) writeChunk(file, "PLTE", palette);
}

struct Band {
    Bytes packed;
    uLong check = adler32(0, nullptr, 0), size = 0; // of what was packed
};

/// Packs parts of one stream, each without the others: what one was packed with serves for the next.
class Packer {
public:
    explicit Packer(size_t mostBytes) {
        if (deflateInit2(&stream_, Z_BEST_SPEED, Z_DEFLATED, -MAX_WBITS, MAX_MEM_LEVEL - 1, Z_DEFAULT_STRATEGY) != Z_OK)
            throw std::bad_alloc();
        constexpr size_t kMark = 16; // more than what ends a part
        packed_.resize(deflateBound(&stream_, mostBytes) + kMark);
    }
    Packer(const Packer &) = delete;
    Packer &operator=(const Packer &) = delete;
    ~Packer() { deflateEnd(&stream_); }

    void begin() {
        deflateReset(&stream_);
        stream_.next_out = packed_.data();
        stream_.avail_out = static_cast<uInt>(packed_.size());
    }
    void add(std::span<const uint8_t> bytes, Band &band) {
        stream_.next_in = const_cast<uint8_t *>(bytes.data());
        stream_.avail_in = static_cast<uInt>(bytes.size());
        deflate(&stream_, Z_NO_FLUSH);
        band.check = adler32_z(band.check, bytes.data(), bytes.size());
        band.size += bytes.size();
    }
    void end(Band &band, bool isLast) {
        deflate(&stream_, isLast ? Z_FINISH : Z_SYNC_FLUSH);
        band.packed.assign(packed_.begin(), packed_.begin() + static_cast<ptrdiff_t>(stream_.total_out));
    }

private:
    z_stream stream_ = {};
    Bytes packed_;
};

} // namespace

void writePng(OutputFile &file, const PngHeader &header, const PngRow &row) {
    writeHeader(file, header);
    const size_t rowBytes = 1 + static_cast<size_t>(header.width) * (header.palette.empty() ? 3 : 1);
    const size_t rows = std::max<size_t>(1, kBandBytes / rowBytes), height = static_cast<size_t>(header.height);
    const size_t count = (height + rows - 1) / rows;

    writeChunk(file, "IDAT", {0x78, 0x01}); // a stream of zlib's, packed fast
    uLong check = adler32(0, nullptr, 0);
    std::vector<Band> bands;
    for (size_t done = 0; done < count; done += bands.size()) {
        bands.assign(std::min(kBandsAtATime, count - done), {});
        forEachBand(bands.size(), [&]() -> BandWork {
            return [&, packer = std::make_shared<Packer>(rows * rowBytes), room = Bytes()](size_t i) mutable {
                constexpr uint8_t kAsItIs[] = {0}; // the rows of a drawing are no smoother than its dots
                const size_t begin = (done + i) * rows, end = std::min(height, begin + rows);
                packer->begin();
                for (size_t y = begin; y < end; ++y) {
                    packer->add(kAsItIs, bands[i]);
                    packer->add(row(static_cast<int>(y), room), bands[i]);
                }
                packer->end(bands[i], end == height);
            };
        });
        for (const Band &band : bands) {
            writeChunk(file, "IDAT", band.packed);
            check = adler32_combine(check, band.check, static_cast<z_off_t>(band.size));
        }
    }
    Bytes end;
    putNumber(end, static_cast<uint32_t>(check));
    writeChunk(file, "IDAT", end);
    writeChunk(file, "IEND", {});
}

} // namespace virtual_plotter
