// Which pen draws a stroke. A carousel holds a few pens, a drawing may have any number of colours; a plot file has pens and
// no colours, and the pens in this carousel may stand elsewhere than its author's.
#pragma once

#include "strokes/stroke.h"

#include <map>
#include <optional>
#include <string_view>
#include <vector>

namespace strokes {

/// What is drawn with a pen: a colour of a drawing, or a pen of a plot file.
struct PenRule {
    std::optional<uint32_t> colour; ///< 0xRRGGBB
    int from = 0;                   ///< the plot file's pen, where it is no colour
    int pen = 1;
};

/// What a pen draws, 0xRRGGBB: of several colours the first.
using PenColours = std::map<int, uint32_t>;

/// Reads "black=1,red=2,#00f=3" or, of a plot file's pens, "1=2,2=1": names of colours (the sixteen of HTML, and orange,
/// brown, pink, violet, turquoise), #RGB, #RRGGBB, or numbers, and pens from 1 to 255. Throws std::invalid_argument with
/// what is wrong.
std::vector<PenRule> parsePens(std::string_view text);

/// Gives each stroke of a drawing with colours its pen. With rules, that of the rule for its colour; without any, the pens 1
/// to carousel go to the colours in the order in which they appear, behind those that are taken: of drawings that the same
/// carousel draws. A colour without a pen takes that of the nearest colour which has one, and a note says how many did.
/// Rules for pens change nothing.
void assignPens(Drawing &drawing, const std::vector<PenRule> &rules, int carousel, const PenColours &taken = {});

/// Of the pens that draw strokes of a drawing; those that are taken keep their colour.
PenColours coloursOf(const Drawing &drawing, const PenColours &taken);

/// Exchanges the pens of a plot file's strokes by the rules for pens; those without a rule stay.
void exchangePens(Drawing &drawing, const std::vector<PenRule> &rules);

} // namespace strokes
