#include "language/places.h"

#include "language/plot_reader.h"

namespace language {

namespace {

/// Calls visit at each instruction's start, until it answers false; and at the plot's end, if it never does.
void scan(const PlotSource &plot, const std::function<bool(const Reader &)> &visit) {
    NoPen sink;
    bool goesOn = true;
    PlotReader reader(plot.language, sink, plot.hardClip, Clipping::None); // the plotter may reach further
    reader.onChoice = [&](Reader &chosen) { chosen.onInstruction = [&] { goesOn = goesOn && visit(chosen); }; };
    for (auto piece = plot.next(); goesOn && !piece.empty(); piece = plot.next())
        reader.take(piece);
    if (!goesOn) return;
    reader.finish();
    if (goesOn) visit(*reader.reader());
}

bool goodToStart(const Place &place) { return place.penUp && place.carries; }

/// The last good place before one that is beyond what is wanted; none when no place is.
std::optional<Place> lastPlace(const PlotSource &plot, const std::function<bool(const Place &)> &isBeyond) {
    std::optional<Place> last;
    bool goesOn = true;
    scan(plot, [&](const Reader &reader) {
        const Place place = reader.place();
        goesOn = !isBeyond(place);
        if (goesOn && goodToStart(place)) last = place;
        return goesOn;
    });
    return goesOn ? std::nullopt : last;
}

/// Puts a plot's parts together, from each instruction's start.
class PenParts {
public:
    explicit PenParts(std::vector<PenPart> &parts) : parts_(parts) {}

    void at(const Place &place) {
        if (!next_) next_ = PenPart{.pen = place.pen, .offset = 0, .start = 0};
        if (place.pen != next_->pen) begin(place);
        last_ = place;
    }

    void end() {
        if (next_) close(last_);
    }

private:
    /// The instruction before this place has changed the pen.
    void begin(const Place &place) {
        close(last_);
        next_ = PenPart{.pen = place.pen, .offset = last_.offset, .start = place.offset};
        next_->splits = place.strokes == last_.strokes;
        from_ = last_;
    }

    void close(const Place &end) {
        next_->strokes = end.strokes - from_.strokes;
        next_->millimetres = end.millimetres - from_.millimetres;
        if (next_->strokes == 0) return;
        if (parts_.empty()) next_->offset = next_->start = 0;
        if (parts_.empty() || parts_.back().pen != next_->pen) return parts_.push_back(*next_);
        parts_.back().strokes += next_->strokes;
        parts_.back().millimetres += next_->millimetres;
    }

    std::vector<PenPart> &parts_;
    std::optional<PenPart> next_;
    Place last_, from_;
};

} // namespace

std::optional<Place> placeUpTo(const PlotSource &plot, uint64_t offset) {
    return lastPlace(plot, [&](const Place &place) { return place.offset > offset; });
}

std::optional<Place> placeOfStroke(const PlotSource &plot, uint64_t stroke) {
    return lastPlace(plot, [&](const Place &place) { return place.strokes >= stroke; });
}

std::optional<Place> placeDrawn(const PlotSource &plot, double millimetres) {
    return lastPlace(plot, [&](const Place &place) { return place.millimetres > millimetres; });
}

std::vector<std::string> statesAt(const PlotSource &plot, const std::vector<uint64_t> &offsets) {
    std::vector<std::string> states(offsets.size());
    size_t next = 0;
    scan(plot, [&](const Reader &reader) {
        const uint64_t here = reader.place().offset;
        while (next < offsets.size() && offsets[next] < here)
            ++next;
        if (next < offsets.size() && offsets[next] == here) states[next++] = reader.state();
        return next < offsets.size();
    });
    return states;
}

std::vector<PenPart> penPartsOf(const PlotSource &plot) {
    std::vector<PenPart> parts;
    PenParts making(parts);
    scan(plot, [&](const Reader &reader) {
        making.at(reader.place());
        return true;
    });
    making.end();
    return parts;
}

} // namespace language
