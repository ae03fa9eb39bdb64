// Plotter languages: the first byte chooses how the rest is cut into pieces. The cuts must make no difference.
#include "language/plot_reader.h"
#include "support/input.h"
#include "support/sheet_sink.h"

#include <cmath>

namespace {

using language::Findings;

struct Drawn {
    fuzz::SheetSink sink;
    language::PlotReader plot{std::nullopt, sink, fuzz::kSheet};

    const Findings &of(std::string_view text, size_t piece) {
        for (; !text.empty(); text.remove_prefix(std::min(piece, text.size())))
            plot.take(text.substr(0, piece));
        plot.finish();
        return plot.reader()->findings();
    }
};

bool isLength(double value) { return std::isfinite(value) && value >= 0; }

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    fuzz::Input input(data, size);
    const size_t piece = 1 + input.byte() % 64;
    const std::string_view text = input.rest();
    Drawn whole, pieces;
    const Findings &one = whole.of(text, text.size() + 1), &other = pieces.of(text, piece);
    fuzz::require(one.bytes == text.size(), "every byte is counted");
    fuzz::require(one.oddities.size() <= Findings::kMaxOddities, "oddities are kept up to a number");
    fuzz::require(isLength(one.downMillimetres) && isLength(one.upMillimetres) && isLength(one.seconds),
                  "lengths and times");
    fuzz::require(whole.sink.sum == pieces.sink.sum && one.instructions == other.instructions &&
                      one.unknown == other.unknown && one.malformed == other.malformed,
                  "how the bytes are cut makes no difference");
    return 0;
}
