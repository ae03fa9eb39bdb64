// Where a plot can be cut in two, and what it takes to go on there. A print may pause, wait for another pen, or be taken up
// again after the plotter was switched off: each time what is sent is the state at a place and then the rest, so places
// matter more than bytes.
#pragma once

#include "language/language.h"
#include "language/reader.h"

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace language {

/// A plot to be read from its beginning.
struct PlotSource {
    std::optional<Language> language; ///< none: by its first bytes
    Rectangle hardClip;
    std::function<std::string_view()> next; ///< its next piece, valid until the next call; empty at the end
};

/// The last place at or before the offset at which the pen is up and the state carries all: going on from there leaves out
/// nothing that was not sent up to it. None: the plot has no more than that many bytes.
std::optional<Place> placeUpTo(const PlotSource &plot, uint64_t offset);
/// The last such place before the pen is put down for the stroke of that number, counted from 1. None: there is no such one.
std::optional<Place> placeOfStroke(const PlotSource &plot, uint64_t stroke);
/// The last such place at which so much has been drawn at most.
std::optional<Place> placeDrawn(const PlotSource &plot, double millimetres);

/// Reader::state() where instructions start, at offsets in rising order; empty where none starts.
std::vector<std::string> statesAt(const PlotSource &plot, const std::vector<uint64_t> &offsets);

/// What is drawn with one pen until another one is needed.
struct PenPart {
    int pen;
    uint64_t offset;    ///< of the instruction that selects the pen, where the part before ends; 0 of the first part
    uint64_t start;     ///< of the instruction behind it: the state there has the pen already
    bool splits = true; ///< false: the pen is selected within an encoded polyline, which goes on with it
    uint64_t strokes = 0;
    double millimetres = 0;
};

/// Pens that draw nothing and the putting away of a pen begin no part: they stand at the end of the part before.
std::vector<PenPart> penPartsOf(const PlotSource &plot);

} // namespace language
