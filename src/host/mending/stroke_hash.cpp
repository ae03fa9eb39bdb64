#include "host/mending/stroke_hash.h"

#include "language/reader.h"

namespace host {

using language::Language;

Drawn drawnBy(const PlotFile &plot, Language language) {
    constexpr language::Rectangle kSheet{{0, 0}, {16158, 11040}}; // A3; nothing is clipped at it
    StrokeHash strokes;
    auto reader = language::makeReader(language, strokes, kSheet, language::Clipping::None);
    plot.readBlocks([&](std::string_view block) {
        reader->take(block);
        return true;
    });
    auto oddities = [&] { return reader->findings().unknown + reader->findings().malformed; };
    const uint64_t before = oddities();
    reader->finish();
    return {strokes.value(), oddities() > before};
}

} // namespace host
