// SVG as cairo writes it, against the strokes that a pen would draw.

#include "strokes/svg_reader.h"

#include <cmath>
#include <gtest/gtest.h>
#include <string>

using namespace strokes;

namespace {

/// Each stroke as "colour: x,y x,y", in tenths of a millimetre from the lower left corner, then the notes.
std::string told(const Drawing &drawing) {
    std::string text;
    for (const Stroke &stroke : drawing.strokes) {
        char hex[8];
        snprintf(hex, sizeof hex, "%x:", stroke.colour);
        text += (text.empty() ? "" : " | ") + std::string(hex);
        for (Point p : stroke.points)
            text += ' ' + std::to_string(std::lround(p.x * 10)) + ',' + std::to_string(std::lround(p.y * 10));
    }
    for (const std::string &note : drawing.notes)
        text += " (" + note + ')';
    return text;
}

/// On a page of 100 mm by 50 mm, in millimetres from the upper left corner.
std::string read(const std::string &body, const SvgOptions &options = {}) {
    const std::string head = "<svg xmlns:xlink=\"x\" width=\"100mm\" height=\"50mm\" viewBox=\"0 0 100 50\">";
    try {
        return told(readSvg(head + body + "</svg>", options));
    } catch (const Unreadable &error) {
        return error.what();
    }
}

const std::string kLine = "<path style='fill:none;stroke:#f00' d='M 10 10 L 30 10'/>";
const std::string kBox = "<path style='fill:rgb(100%,100%,100%)' d='M 15 5 L 20 5 L 20 15 L 15 15 Z M 15 5 '/>";

struct Case {
    const char *what;
    std::string body, strokes;
};

const Case kCases[] = {
    {"line", kLine, "ff0000: 100,400 300,400"},
    {"all instructions", "<path fill='none' stroke='#000' d='M1 1H2V2L3,3C3.33333 3.33333 3.66667 3.66667 4 4ZM7 7'/>",
     "0: 10,490 20,490 20,480 30,470 40,460 10,490"},
    {"after Z it goes on from the start", "<path fill='none' stroke='#000' d='M1 1L2 1ZL1 2'/>",
     "0: 10,490 20,490 10,490 | 0: 10,490 10,480"},
    {"transforms from the outside in",
     "<g transform='translate(10,0) scale(2)'><g transform='matrix(0,1,-1,0,0,0)'>"
     "<path stroke='#00f' fill='none' d='M 5 0 L 10 0'/></g></g>",
     "ff: 100,400 100,300"},
    {"a group's colour in a glyph, which has none",
     "<defs><symbol id='g'><path style='stroke:none' d='M 0 0 L 1 0 L 0 1 Z'/></symbol></defs>"
     "<g fill='rgb(0,128,0)'><use xlink:href='#g' x='10' y='10'/></g>",
     "8000: 100,400 110,400 100,390 100,400"},
    {"dashes", "<path fill='none' stroke='#000' stroke-dasharray='8,3' stroke-dashoffset='2' d='M 0 10 L 20 10'/>",
     "0: 0,400 60,400 | 0: 90,400 170,400"},
    {"a dot needs round ends",
     "<path stroke-linecap='round' stroke='#000' d='M 5 5 L 5 5'/><path stroke='#000' d='M 5 5 L 5 5'/>", "0: 50,450"},
    {"white hides", kLine + kBox, "ff0000: 100,400 150,400 | ff0000: 200,400 300,400"},
    {"only what came before", kBox + kLine, "ff0000: 100,400 300,400"},
    {"not where it is half transparent", kLine + "<rect x='0' y='0' width='50' height='20' fill='#fff' fill-opacity='.5'/>",
     "ff0000: 100,400 300,400"},
    {"not on the border", kLine + "<rect x='10' y='10' width='20' height='20' fill='#fff'/>", "ff0000: 100,400 300,400"},
    {"not in a hole", kLine + "<path fill='#fff' fill-rule='evenodd' d='M5 5H35V15H5ZM12 6H28V14H12Z'/>",
     "ff0000: 120,400 280,400"},
    {"a closed line that is cut is one over its start",
     "<rect x='10' y='10' width='10' height='10' fill='none' stroke='#000'/><path fill='#fff' d='M18 12L22 12L22 18L18 "
     "18'/>",
     "0: 200,320 200,300 100,300 100,400 200,400 200,380"},
    {"clip",
     "<clipPath id='c'><path d='M 15 0 L 20 10 L 15 20 L 12 10 Z'/></clipPath><g clip-path='url(#c)'>" + kLine + "</g>",
     "ff0000: 120,400 200,400"},
    {"wholly in the clip",
     "<clipPath id='c'><path d='M 0 0 L 90 0 L 0 49 Z'/></clipPath><g clip-path='url(#c)'>" + kLine + "</g>",
     "ff0000: 100,400 300,400"},
    {"clip in clip",
     "<clipPath id='c'><rect x='0' y='0' width='20' height='20'/></clipPath>"
     "<clipPath id='d'><rect x='15' y='0' width='20' height='20'/></clipPath>"
     "<g clip-path='url(#c)'><g clip-path='url(#d)'>" +
         kLine + "</g></g>",
     "ff0000: 150,400 200,400"},
    {"a clipped fill has the clip's outline",
     "<clipPath id='c'><rect x='10' y='10' width='5' height='5'/></clipPath>"
     "<rect clip-path='url(#c)' x='0' y='0' width='50' height='50' fill='#00f'/>",
     "ff: 100,350 150,350 150,400 100,400 100,350"},
    {"the page's edge clips, and stays", "<path stroke='#000' fill='none' d='M -10 0 L 110 0 L 110 -5'/>",
     "0: 0,500 1000,500"},
    {"a mask of one plain shape is a clip and an opacity",
     "<mask id='m'><g filter='url(#a)'><rect x='0' y='0' width='20' "
     "height='50' fill-opacity='.5'/></g></mask><g mask='url(#m)'>" +
         kLine + "</g>",
     "ff0000: 100,400 200,400"},
    {"what has no strokes is counted",
     "<image/><g mask='url(#m)'/><rect width='9' height='9' fill='url(#p)'/><defs><image id='i'/>"
     "</defs><use xlink:href='#i'/>",
     " (2 pictures are not plotted) (1 part with a soft mask is not plotted) (1 pattern is not plotted)"},
    {"a gradient in its first colour",
     "<linearGradient id='l'><stop style='stop-color:rgb(0,0,255);'/></linearGradient>"
     "<path fill='url(#l)' d='M 0 0 L 10 0 L 0 10 Z'/>",
     "ff: 0,500 100,500 0,400 0,500 (1 gradient is plotted in one colour)"},
    {"a line that lies on another is drawn once, the topmost",
     kLine + "<path fill='none' stroke='red' d='M30 10L10.004 9.997'/><path fill='none' stroke='#f00' d='M30 10L10 10'/>",
     "0: 300,400 100,400 | ff0000: 300,400 100,400 (1 line lies on another of its colour, and is plotted once)"},
    {"an outline under any line, wherever that begins",
     "<path fill='#00f' d='M5 5L9 5L9 8L5 8'/><path stroke='#f00' fill='none' d='M9 8L9 5L5 5L5 8Z'/>",
     "ff0000: 90,420 90,450 50,450 50,420 90,420"},
    {"an area without what lies within it", "<path d='M1 1L5 1L5 5L1 5ZM2 2L3 2L3 3L2 3ZM4 4L6 4L6 6L4 6Z'/>",
     "0: 60,460 50,460 50,490 10,490 10,450 40,450 40,440 60,440 60,460"},
    {"impossible numbers",
     "<path d='M 1e400 0 L 1 1'/><path d='M 1 q'/><path d='M 1 1 Z 5'/><rect width='1e99' height='1'/>" + kLine,
     "ff0000: 100,400 300,400 (4 shapes with unusable numbers are not plotted)"},
    {"a reference to itself", "<g id='g'><use xlink:href='#g'/></g>",
     "its groups are nested more than 400 deep; take groups apart"},
};

} // namespace

TEST(SvgReader, DrawsWhatIsSeen) {
    for (const Case &c : kCases)
        EXPECT_EQ(read(c.body), c.strokes) << c.what;
    EXPECT_EQ(read(kLine + kBox, {.fill = {}, .hides = false}), "ff0000: 100,400 300,400");
    EXPECT_EQ(read(kLine + kLine, {.fill = {}, .limits = {.points = 15}}).substr(0, 20), "it comes to millions");
    EXPECT_EQ(read("<rect x='10' y='10' width='4' height='4' fill='#000'/>", {.fill = {true, 2, 0}}),
              "0: 100,360 140,360 140,400 100,400 100,360 | 0: 140,380 100,380");
}

TEST(SvgReader, FlattensACircleToItsTolerance) {
    const Drawing drawing = readSvg("<svg width='96' height='72pt'><path stroke='#000' fill='none' d='M 96 0 "
                                    "C 96 53.019336 53.019336 96 0 96'/></svg>",
                                    {});
    EXPECT_EQ(drawing.width, 25.4);
    EXPECT_EQ(drawing.height, 25.4);
    ASSERT_EQ(drawing.strokes.size(), 1U);
    const auto &points = drawing.strokes[0].points;
    EXPECT_LT(points.size(), 60U);
    for (size_t i = 1; i < points.size(); ++i) // the curve itself lies up to 0.007 mm beside the circle
        EXPECT_NEAR(std::hypot((points[i].x + points[i - 1].x) / 2, 25.4 - (points[i].y + points[i - 1].y) / 2), 25.4, 0.02);
}

TEST(SvgReader, RefusesPagesThatAreNone) {
    for (const char *text : {"", "<svg", "<html/>", "<svg/>", "<svg width='0' height='5'/>",
                             "<svg width='1e400' height='5'/>", "<svg width='5' height='5' viewBox='0 0 0 0'/>"})
        EXPECT_THROW(readSvg(text, {}), Unreadable) << text;
}
