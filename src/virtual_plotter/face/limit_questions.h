// Questions for the hard-clip limits that are no instructions of the plotter's language.
#pragma once

#include "language/geometry.h"

#include <array>
#include <functional>
#include <string>
#include <string_view>

namespace virtual_plotter {

using namespace language; // a plotter in software speaks in the terms of the languages that it reads

/// Texts that ask for both corners as they stand; an empty one asks nothing.
using LimitTexts = std::array<std::string_view, 2>;

/// Takes the questions out of what the plotter hears. A text that only begins like one stays in the plot. In pairs, "[" asks
/// for the lower corner, and "U" right behind it for the upper one; each may be sent twice to fill a USB packet, and is
/// answered once.
class LimitQuestions {
public:
    LimitQuestions(bool inPairs, const LimitTexts &texts, const Rectangle &hardClip);

    std::function<void(std::string_view plot)> onPlot;
    std::function<void(std::string_view reply)> onReply;

    void take(std::string_view bytes);
    /// What looked like the beginning of a question was none.
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
