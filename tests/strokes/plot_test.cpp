// The road of strokes: what is written must be read as the strokes that were given, and be cut between instructions.
#include "strokes/measure.h"
#include "strokes/round_trip.h"

#include <gtest/gtest.h>

#include <random>

namespace strokes {

namespace {

Drawing readBack(std::string_view plot) {
    uint64_t strange = 0;
    Drawing read = readPlot(plot, strange);
    EXPECT_EQ(strange, 0U) << plot.substr(0, 200);
    return read;
}

/// Steps of all lengths around 0, 0, up to 2.5 m away, some too small to be told apart; dots among the strokes, and 12 pens.
Drawing scribble() {
    std::mt19937 random(1);
    auto within = [&](double most) { return std::uniform_real_distribution(-most, most)(random); };
    Drawing drawing;
    for (int i = 0; i < 4000; ++i) {
        Stroke stroke{.pen = 1 + i / 20 % 12, .points = {{within(1200), within(1200)}}};
        for (auto left = random() % 12; left > 0; --left) {
            const Point last = stroke.points.back();
            const double most = std::pow(10, within(2.5) - 0.5);
            stroke.points.push_back(random() % 9 == 0 ? Point{within(9), within(9)}
                                                      : Point{last.x + within(most), last.y + within(most)});
        }
        drawing.strokes.push_back(stroke);
    }
    return drawing;
}

bool isNear(Point a, Point b) { return std::abs(a.x - b.x) <= 0.012501 && std::abs(a.y - b.y) <= 0.012501; }

/// Whether each point of one is, in order, half a unit or less from one of the other; the other may have left some out.
bool isSame(const Stroke &given, const Stroke &read) {
    size_t at = 0;
    for (Point p : given.points) {
        if (at + 1 < read.points.size() && isNear(p, read.points[at + 1])) ++at;
        if (!isNear(p, read.points[at])) return false;
    }
    return at + 1 == read.points.size() && given.pen == read.pen;
}

TEST(WrittenPlot, IsReadAsTheStrokesThatWereGivenAndCutsBetweenInstructions) {
    const Drawing given = scribble();
    for (int32_t number : {17002, 17008, 17022, 17030, 17032}) {
        const PlotForm form = formOf(number);
        const std::string plot = plotOf(given, form);
        const Drawing read = readBack(plot);
        ASSERT_EQ(read.strokes.size(), given.strokes.size()) << number;
        for (size_t i = 0; i < given.strokes.size(); ++i)
            ASSERT_TRUE(isSame(given.strokes[i], read.strokes[i])) << number << ", stroke " << i;
        for (size_t at = 0; at + form.chunk < plot.size();) {
            const size_t cut = form.cut(std::string_view(plot).substr(at, form.chunk));
            ASSERT_EQ(cut == 0, form.chunk < 64) << number << " at " << at;
            at += cut == 0 ? form.chunk : cut;
            const size_t last = plot.find_last_not_of(' ', at - 1);
            ASSERT_TRUE(plot[last] == terminatorOf(form.language)[0] && plot.find_first_of("PUDS@", at) == at) << at;
        }
    }
}

TEST(WrittenPlot, RefusesWhatNoPieceHolds) {
    Drawing far;
    far.strokes.push_back({.points = {{-30000, -30000}}});
    EXPECT_NO_THROW(plotOf(far, formOf(17002)));
    EXPECT_THROW(plotOf(far, formOf(17022)), Unwritable);
}

TEST(PlotStrokes, KeepsWhatLiesOutsideTheSheetAndOutlinesFills) {
    const Drawing read = readBack("IN;SP2;PU-4000,-400;PD40000,400;PU0,0;FT1;RA-40,-80;SP3;PU-800,0;FT3,400;RA-2000,1000;");
    ASSERT_EQ(read.strokes.size(), 4U);
    EXPECT_EQ(read.strokes[0].points, (std::vector<Point>{{-100, -10}, {1000, 10}}));
    EXPECT_EQ(read.strokes[1].points, (std::vector<Point>{{0, 0}, {-1, 0}, {-1, -2}, {0, -2}, {0, 0}}));
    EXPECT_EQ(read.strokes[2].pen, 3);
    EXPECT_EQ(extentOf(read)->lower, (Point{-100, -10}));
    EXPECT_DOUBLE_EQ(read.strokes[3].points[0].x + read.strokes[3].points[1].x, -70) << "hatched outside as well";
}

} // namespace

} // namespace strokes
