// The plotter in software in virtual time.
#include "language/recording_sink.h"
#include "virtual_plotter/face/plotter.h"

#include <gtest/gtest.h>
#include <string>

namespace virtual_plotter {

namespace {

using std::chrono::milliseconds;

/// A plotter on the test sheet, and all that it has said.
struct Played {
    explicit Played(const PlotterOptions &options) : plotter(options, sink, kTestSheet) {}
    /// Says the text as there is room; the pace decides when that is.
    void tell(std::string_view text) {
        while (!text.empty() && now < milliseconds(100'000)) {
            const size_t taken = plotter.hear(text, now);
            said += plotter.takeSaid();
            text.remove_prefix(taken);
            if (taken == 0) pass(milliseconds(1));
        }
    }
    void pass(milliseconds time) {
        now += time;
        plotter.advance(now);
        said += plotter.takeSaid();
    }

    RecordingSink sink;
    VirtualPlotter plotter;
    VirtualPlotter::Time now{0};
    std::string said;
};

PlotterOptions faulty(Fault fault, uint64_t after) {
    PlotterOptions options;
    options.fault = fault;
    options.faultAfter = after;
    return options;
}

/// A byte a millisecond.
PlotterOptions paced(size_t bufferBytes, PlotterOptions options = {}) {
    options.bufferBytes = bufferBytes;
    options.perByte = milliseconds(1);
    return options;
}

TEST(VirtualPlotterTest, AnswersEachFamilyInItsForm) {
    constexpr struct {
        const char *what;
        int32_t emulation;
        std::string_view heard, said;
    } kCases[] = {
        {"limits", 17002, "IN;OH;", "0,0,10000,8000\r"},
        {"each corner asked twice, the second of them again", 17009, "[[UUUU", "0,0\r10000,8000\r10000,8000\r"},
        {"a pen that is lifted is no corner", 17009, "PU;", ""},
        {"no corners elsewhere", 17002, "[U", ""},
        {"what begins like a question", 17010, "\x1b%0B\x03NP4,\x03NP7,70,:EC;PA1,2;OA;", "1,2,0\r"},
        {"a question behind its own beginning", 17010, ":ECN,:ECN,EF,P0,A,U,U0,0,K,", "0,0,10000,8000\r"},
        {"a question of other plotters", 17002, "\x1b%0B\x03NP4,\x03NP7,70,\x03NP7,76,!ST1;", ""},
        {"language by its first bytes", 17002, " ;:EH,EC5,ER,Q@", "0,0,0,0,0,0,1969,1575,\r"},
        {"position and pen, in both units", 17002, "IP100,100,1100,900;SC0,10,0,8;PA5,4;PD;OA;OC;", "600,500,1\r5,4,1\r"},
        {"areas", 17002, "IP100,100,1100,900;SC0,10,0,8;IW1,1,2,2;OP;OW;", "100,100,1100,900\r200,200,300,300\r"},
        {"fresh until asked, an error until it is asked for", 17002, "OS;XX;OS;OE;OE;CI;OE;OS;", "24\r48\r1\r0\r2\r16\r"},
        {"device control, partly without an answer", 17002, "\x1B.B\x1B.N;19:\x1B.I81;;17:\x1B..\x1B\x1B.O", "1024\r8\r"},
        {"a question that it does not know", 17002, "OG;OF;", "40,40\r"},
    };
    for (const auto &c : kCases) {
        PlotterOptions options;
        setEmulation(options, c.emulation);
        Played played(options);
        played.tell(c.heard);
        EXPECT_EQ(played.said, c.said) << c.what;
    }
}

/// One byte a millisecond out of 16: held when fewer than 4 are free, let go when 12 are.
TEST(VirtualPlotterTest, HoldsItsHostWhileTheBufferIsNearlyFull) {
    Played played(paced(16));
    EXPECT_EQ(played.plotter.hear("PA;PA;PA;PA;", {}), 12U);
    EXPECT_EQ(played.plotter.takeSaid(), "");
    EXPECT_EQ(played.plotter.hear("PA;;PA;", {}), 4U) << "no more than there is room for";
    EXPECT_EQ(played.plotter.takeSaid(), "\x13");
    played.pass(milliseconds(11));
    EXPECT_EQ(played.plotter.room(), 11U);
    EXPECT_EQ(played.said, "") << "still held";
    played.pass(milliseconds(1));
    EXPECT_EQ(played.said, "\x11");
    played.pass(milliseconds(1000));
    played.plotter.hear("OF;", played.now);
    played.pass(milliseconds(2));
    EXPECT_EQ(played.said, "\x11") << "time without work saves up no pace";
    played.pass(milliseconds(1));
    EXPECT_EQ(played.said.substr(1), "40,40\r");
}

/// A question about the buffer is answered when it is heard; it counts itself.
TEST(VirtualPlotterTest, TellsItsFreeBufferAheadOfWhatWaits) {
    Played played(paced(100));
    played.tell("OF;PA0,0;\x1B.B");
    EXPECT_EQ(played.said, "88\r");
    played.pass(milliseconds(1000));
    EXPECT_EQ(played.said, "88\r40,40\r");
}

TEST(VirtualPlotterTest, HangsAndHangsUpAtTheByte) {
    for (Fault fault : {Fault::Hang, Fault::HangUp}) {
        for (size_t after : {0U, 1U, 7U}) {
            Played played(faulty(fault, after));
            VirtualPlotter &plotter = played.plotter;
            EXPECT_EQ(plotter.hear("IN;SP1;PA0,0;", {}), after);
            EXPECT_EQ(plotter.hear("OF;", {}), 0U);
            EXPECT_EQ(plotter.isHanging(), fault == Fault::Hang);
            EXPECT_EQ(plotter.hasHungUp(), fault == Fault::HangUp);
        }
    }
}

TEST(VirtualPlotterTest, HoldsForGoodButStillListens) {
    Played played(paced(64, faulty(Fault::Xoff, 5)));
    played.tell("PA0,");
    EXPECT_EQ(played.said, "");
    played.tell("0;PD9,9;PU;");
    played.pass(milliseconds(1000));
    EXPECT_EQ(played.said, "\x13") << "once, and never the other";
    EXPECT_EQ(played.sink.text(), "0,0 9,9");
}

TEST(VirtualPlotterTest, TalksRubbishThatHoldsNobody) {
    Played played(faulty(Fault::Rubbish, 4));
    played.tell("OF;");
    EXPECT_EQ(played.said, "40,40\r") << "before the fault";
    for (int i = 0; i < 2000; ++i)
        played.tell("OF;");
    const std::string rubbish = played.said.substr(6);
    EXPECT_GT(rubbish.size(), 2000 * 6U) << "some of it unasked";
    EXPECT_EQ(rubbish.find("40,40\r"), std::string::npos);
    EXPECT_EQ(rubbish.find_first_of("\x11\x13"), std::string::npos);
}

} // namespace

} // namespace virtual_plotter
