#include "host/print/parts.h"

#include "host/print/last_place.h"
#include "host/terminal/failure.h"
#include "host/terminal/text.h"

#include <algorithm>
#include <cmath>
#include <fmt/format.h>
#include <map>
#include <memory>

namespace host {

using language::PenPart;
using language::Place;
using language::PlotSource;

namespace {

constexpr std::string_view kStroke = "stroke:";

/// A place as it is typed.
struct TypedPlace {
    enum class Kind { Bytes, Percent, Stroke } kind = Kind::Bytes;
    double value = 0;
};

std::optional<TypedPlace> typedPlace(std::string text) {
    TypedPlace typed;
    if (text.starts_with(kStroke)) {
        typed.kind = TypedPlace::Kind::Stroke;
        text.erase(0, kStroke.size());
    } else if (text.ends_with('%')) {
        typed.kind = TypedPlace::Kind::Percent;
        text.pop_back();
    }
    const std::optional<double> value = typedNumber(text);
    const bool isWhole = typed.kind == TypedPlace::Kind::Percent || (value && std::nearbyint(*value) == *value);
    const double least = typed.kind == TypedPlace::Kind::Stroke ? 1 : 0;
    const double most = typed.kind == TypedPlace::Kind::Percent ? 100 : 1e15;
    if (!value || !isWhole || !(*value >= least && *value <= most)) return std::nullopt;
    typed.value = *value;
    return typed;
}

/// From its beginning.
PlotSource sourceOf(const PlotFile &plot, const ReadAs &as) {
    struct Position {
        std::string buffer = std::string(size_t{64} * 1024, '\0');
        int64_t offset = 0;
    };
    return {as.language, as.hardClip, [&plot, at = std::make_shared<Position>()] {
                const std::string_view block = plot.read(at->offset, at->buffer);
                at->offset += static_cast<int64_t>(block.size());
                return block;
            }};
}

uint64_t resumedOffset(const PlotFile &plot) {
    if (const std::optional<LastPlace> last = lastPlaceOf(hashOf(plot))) return static_cast<uint64_t>(last->offset);
    throw Failure(
        ExitCode::Usage,
        fmt::format("--resume: no print of {} as it is now has ended before its end; say with --from where to begin",
                    shown(plot.path())));
}

std::optional<Place> placeOf(const PlotFile &plot, const ReadAs &as, const StartOptions &options) {
    const PlotSource source = sourceOf(plot, as);
    if (options.isResumed) return placeUpTo(source, resumedOffset(plot));
    const TypedPlace typed = *typedPlace(options.from);
    if (typed.kind == TypedPlace::Kind::Stroke) return placeOfStroke(source, static_cast<uint64_t>(typed.value));
    const double offset =
        typed.kind == TypedPlace::Kind::Bytes ? typed.value : typed.value / 100 * static_cast<double>(plot.size());
    if (offset >= static_cast<double>(plot.size())) return std::nullopt;
    return placeUpTo(source, static_cast<uint64_t>(offset));
}

/// Which pens stand in the holders, as a plot goes on. A pen has its place among them by its number.
class Holders {
public:
    explicit Holders(int count) : count_(count) {}

    /// Whether somebody has to put the pen in. What a plot begins with is taken to be there.
    bool mustChangeFor(int pen) {
        const auto [holder, isEmpty] = holds_.try_emplace((pen - 1) % count_, pen);
        return std::exchange(holder->second, pen) != pen;
    }

private:
    int count_;
    std::map<int, int> holds_;
};

std::string prompt(const PenPart &part, const strokes::PenColours &colours) {
    const auto colour = colours.find(part.pen);
    return fmt::format("put in pen {}{}: {}, {}", part.pen,
                       colour == colours.end() ? "" : fmt::format(" (#{:06x})", colour->second),
                       counted(static_cast<int64_t>(part.strokes), "stroke"), metres(part.millimetres));
}

/// Where a part begins and the one before it ends.
struct Cut {
    int64_t end = 0;   ///< of the part before
    int64_t begin = 0; ///< of this one: behind the selection of its pen, which is in the state
    std::string wanted;
};

std::vector<Cut> cutsOf(const PlotFile &plot, const ReadAs &as, const Place &start, int pensHeld,
                        const strokes::PenColours &colours) {
    const auto first = static_cast<int64_t>(start.offset);
    std::vector<Cut> cuts = {{0, first, {}}};
    if (pensHeld == 0) return cuts;
    Holders holders(pensHeld);
    for (const PenPart &part : penPartsOf(sourceOf(plot, as))) {
        const bool mustChange = holders.mustChangeFor(part.pen);
        const auto end = static_cast<int64_t>(part.offset), begin = static_cast<int64_t>(part.start);
        if (mustChange && begin > first && part.splits) cuts.push_back({std::max(end, first), begin, prompt(part, colours)});
    }
    return cuts;
}

/// The state and the bytes of the plot behind it. Ended as a job wants it: what ends the part is an instruction's end.
PlotFile fileOf(const PlotFile &plot, const std::string &state, int64_t begin, int64_t end, const PlotRules &rules) {
    KeptFile kept(plot.path());
    kept.add(state);
    addBytes(kept, plot, begin, end);
    if (end < plot.size()) kept.add(rules.endMark());
    return PlotFile(std::move(kept));
}

/// Empty when nothing is wrong.
std::string faultOfPlace(const std::string &text) {
    return typedPlace(text) ? std::string()
                            : fmt::format("{} is no place in a plot; write bytes, as in 2000, a part, as in 40%, or a "
                                          "stroke, as in {}12",
                                          text, kStroke);
}

} // namespace

Option addFrom(const Command &command, StartOptions &start) {
    return command.option("--from", start.from, "Begin within the plot: at a byte (2000), a part (40%), or stroke:N")
        .check(faultOfPlace)
        .valueName("PLACE");
}

Place startOf(const PlotFile &plot, const ReadAs &as, const StartOptions &options) {
    if (options.from.empty() && !options.isResumed) return {};
    std::optional<Place> place = placeOf(plot, as, options);
    if (!place)
        throw Failure(ExitCode::Usage, fmt::format("--from: {} has no such place; it has {}", shown(plot.path()),
                                                   counted(plot.size(), "byte")));
    if (options.overlap > 0) place = placeDrawn(sourceOf(plot, as), std::max(0.0, place->millimetres - options.overlap));
    return place.value_or(Place());
}

std::vector<PlotPart> partsOf(const PlotFile &plot, const ReadAs &as, const Place &start, int pensHeld,
                              const strokes::PenColours &colours, const PlotRules &rules) {
    std::vector<Cut> cuts = cutsOf(plot, as, start, pensHeld, colours);
    if (start.offset == 0 && cuts.size() == 1) return {};
    std::vector<uint64_t> offsets;
    offsets.reserve(cuts.size());
    for (const Cut &cut : cuts)
        offsets.push_back(static_cast<uint64_t>(cut.begin));
    const std::vector<std::string> states = statesAt(sourceOf(plot, as), offsets);
    std::vector<PlotPart> parts;
    parts.reserve(cuts.size());
    for (size_t i = 0; i < cuts.size(); ++i) {
        const std::string &state = cuts[i].begin == 0 ? std::string() : states[i];
        const int64_t end = i + 1 < cuts.size() ? cuts[i + 1].end : plot.size();
        parts.push_back({fileOf(plot, state, cuts[i].begin, end, rules), cuts[i].begin, static_cast<int64_t>(state.size()),
                         cuts[i].wanted});
    }
    return parts;
}

} // namespace host
