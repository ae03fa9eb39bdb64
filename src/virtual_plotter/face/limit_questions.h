// Questions for the hard-clip limits that are no instructions of the plotter's language. Hosts ask some plotters with an
// escape sequence, in another language, or with single bytes: the reader would report these as errors, so they are taken out
// of the stream before it.
#pragma once

#include "language/geometry.h"

#include <array>
#include <functional>
#include <string>
#include <string_view>

namespace virtual_plotter {

using namespace language; // Point, Rectangle and the plotter unit are used all over this folder

/// Up to two texts that each ask for both corners; an empty one is not used.
using LimitTexts = std::array<std::string_view, 2>;

/// Takes the questions out of what the plotter hears and answers them; all else goes on as the plot, also a text that only
/// begins like a question. With inPairs, "[" asks for the lower corner, and "U" right behind it for the upper one; each may
/// be sent twice to fill a USB packet, and is answered once. Both functions must be set before take().
class LimitQuestions {
public:
    LimitQuestions(bool inPairs, const LimitTexts &texts, const Rectangle &hardClip);

    std::function<void(std::string_view plot)> onPlot;
    std::function<void(std::string_view reply)> onReply;

    void take(std::string_view bytes);
    /// No more bytes come: what was held back as the beginning of a question goes on as plot.
    void finish();

private:
    bool takeCorner(char byte);
    void takeText(char byte);

    bool inPairs_;
    LimitTexts texts_;
    Rectangle hardClip_;
    bool betweenCorners_ = false; ///< the last byte was "[" or "U"
    char answered_ = 0;           ///< the corner whose second byte may follow
    std::string held_;            ///< the beginning of a text
};

} // namespace virtual_plotter
