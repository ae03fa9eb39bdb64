#include "emulations/emulations.h"

#include <gtest/gtest.h>

#include <string>

namespace {

struct CutCase {
    const char *what;
    int32_t emulation;
    std::string_view terminator, chunk;
    size_t cut;
};

constexpr CutCase kCuts[] = {
    {"semicolon before the last PD", 17002, ";", "IN;SP1;PU0,0;PD100,0,100,100;PU;PD0,100,0,0;PU;SP0;PD200,200;PU0", 51},
    {"no terminator", 17002, "\r", "IN;SP1;PU0,0;PD100,0", 0},
    {"PD: terminator at 9 is too near", 17002, ";", "IN;PD,,,,;PD1", 0},
    {"PD: mark at 9 is too near", 17002, ";", "123456789;PD1;", 0},
    {"PD: mark at 10", 17002, ";", "1234567890;PD1;", 11},
    {"PD: the mark must lie wholly before the terminator", 17002, "PD", "1234567890;PD", 0},
    {"PD: a line end between is no mark", 17002, ";", "PU0,0;PD1,1;\nPD2,2;\n", 0},
    {"terminator of two characters", 17002, ";\n", "PU0,0,0,0,0;PD1,1;PD2,2;\nPD3", 18},
    {"comma-D after the comma", 17008, "@", "U100,200,D300,400,D500@", 18},
    {"comma-D: terminator at 11 is too near", 17030, "@", "123456789,D@", 0},
    {"comma-D: terminator at 12, mark at 10", 17036, "@", "1234567890,D@", 11},
    {"comma-D: not before D alone", 17036, "@", "1234567890D1D2D3@", 0},
    {"ETX-D where no comma-D is", 17009, ";", "LBsome text\3D1,1;", 12},
    {"comma-D before ETX-D", 17009, ";", "1234567890,D1\3D2;", 11},
    {"a comma-D too near hides an ETX-D", 17009, ";", "1,D34567890123\3D2;", 0},
    {"D before the letter", 17011, ";", "U1,1;1234567D9;", 12},
    {"D: only the last counts, at 9 too near", 17012, ";", "12345678,D,,;", 0},
    {"an empty terminator finds nothing", 17002, "", "1234567890;PD1;PD2;", 0},
};

TEST(Cut, Chunks) {
    for (const CutCase &c : kCuts) {
        EXPECT_EQ(findCut(c.chunk, c.terminator, emulations::of(c.emulation).cut), c.cut) << c.what << ": " << c.chunk;
    }
}

TEST(Cut, Ends) {
    constexpr CutCase kEnds[] = {
        {"terminator included", 17002, ";", "PU;SP0;\n", 7},
        {"comma-D ends at the at sign", 17008, ";", "U1,1;@ ;", 6},
        {"17009 ends at its terminator", 17009, ";", "U1,1@;x", 6},
        {"two characters", 17002, ";\r", "PU;\r;", 4},
    };
    for (const CutCase &c : kEnds) {
        EXPECT_EQ(findEnd(c.chunk, c.terminator, emulations::of(c.emulation).cut), c.cut) << c.what;
    }
}

} // namespace
