// DM/PL.
#include "language/recording_sink.h"

#include <gtest/gtest.h>

namespace language {
namespace {

constexpr StrokeCase kDmpl[] = {
    {"as a cutter's job is written", ";: ECM,U H L0,A100,100,R,U,342,-55,V100;,BP80;,P0;,D,60,0,58,16,U,9,9,e",
     "1768,180 2008,180 2240,244"},
    {"thousandths of an inch at first", ";:HAU1000,2000D3000,2000", "1016,2032 3048,2032"},
    {"units", ";:EC5U100,0D200,0 ECM D200,10 ECN D0,0 EC1 D0,0", "508,0 1016,0 800,40 0,0"},
    {"without commas", ";:ECN A L0 D3 2  U1 4 D+5+6", "0,0 3,2 | 1,4 5,6"},
    {"numbers behind A and R are points too", ";:ECNA10,10DR5,5A20,20", "10,10 15,15 20,20"},
    {"home lifts the pen", ";:ECND5,5H D0,7", "0,0 5,5 | 0,0 0,7"},
    {"another origin", ";:ECNU100,100OD10,0HU50,50D60,50", "100,100 110,100 | 50,50 60,50"},
    {"pens", ";:ECNP3D9,9P0D8,8", "[3 0.35] 0,0 9,9 [1 0.35] 9,9 8,8"},
    {"labels are read over", ";:ECNU5,5S12D9,9_D6,6S1x\rD7,7", "5,5 6,6 7,7"},
    {"not for this plotter", ";:ECNU1,1D2,2@D9,9;D;:D3,3", "1,1 2,2 | 2,2 3,3"},
};

TEST(Dmpl, Strokes) {
    expectStrokes(kDmpl, Language::Dmpl);
    const Job arcs(";:ECNU600,600CA500,500,90D0,0U600,500CC500,500", Language::Dmpl);
    EXPECT_EQ(arcs.findings().strokes, 3u);
    EXPECT_NE(arcs.strokes().find(" 400,600 | 400,600 0,0 | 600,500 "), std::string::npos) << arcs.strokes();
    EXPECT_TRUE(arcs.strokes().ends_with(" 600,500")) << arcs.strokes();
}

TEST(Dmpl, OdditiesAndQuestions) {
    EXPECT_EQ(Job(";:U1,2,3 Y7,EC7,G,CX1,?P-1,E", Language::Dmpl).oddities(),
              "malformed@2 U1,2,3 \nunknown@9 Y\nmalformed@12 EC7,\nunknown@16 G\nunknown@18 CX\nunknown@22 ?\n"
              "malformed@23 P-1,\nunknown@27 E");
    EXPECT_EQ(Job(";:EH,ECN,ER,Q@", Language::Dmpl, 1).requests, "EH,ECN,ER;");
    EXPECT_EQ(Job(";:ECN,EF,P0,A,U,U0,0,K,", Language::Dmpl).oddities(), "");
    EXPECT_EQ(Job(";:ECNU300,200D", Language::Dmpl).reader->status().at, (Point{300, 200}));
}

} // namespace
} // namespace language
