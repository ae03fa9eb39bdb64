#include "hardclip/reply.h"

#include "record/state.h"
#include "support/scripted.h"

#include <gtest/gtest.h>

namespace {

using namespace hardclip;

constexpr auto kSerial = Link::Serial;
constexpr auto kUsb = Link::Usb;
constexpr auto k1st = ReplyPart::First;
constexpr auto k2nd = ReplyPart::Second;

constexpr struct {
    const char *what;
    int32_t emulation;
    Link link;
    ReplyPart part;
    std::string_view reply;
    double values[4];
    bool complete;
} kReplies[] = {
    {"commas", 17001, kSerial, k1st, "0,0,15200,10800\r", {0, 0, 15200, 10800}, true},
    {"commas, nothing behind the last number", 17001, kSerial, k1st, "1,2,3,4", {1, 2, 3, 0}, false},
    {"the reply's end is enough over USB", 17001, kUsb, k1st, "1,2,3,4", {1, 2, 3, 4}, true},
    {"a fourth 0 does not complete", 17001, kSerial, k1st, "0,0,15200,0\r", {0, 0, 15200, 0}, false},
    {"but for 17032 over USB", 17032, kUsb, k1st, "0,0,15200,0\r", {0, 0, 15200, 0}, true},
    {"17032 wants three commas", 17032, kUsb, k1st, "0,0,15200\r", {0, 0, 0, 0}, false},
    {"a fourth comma completes a 0", 17001, kUsb, k1st, "1,2,3,0,", {1, 2, 3, 0}, true},
    {"serial walks on", 17001, kSerial, k1st, "1,2,3,4\r5\n", {1, 2, 3, 45}, true},
    {"USB does not", 17001, kUsb, k1st, "1,2,3,4\r5\n", {1, 2, 3, 4}, true},
    {"signs, points and blanks", 17001, kSerial, k1st, "-5,12.5, 1 0,)7\r", {5, 125, 10, 7}, true},
    {"a point ends the fourth", 17001, kUsb, k1st, "1,2,3,4.5\r", {1, 2, 3, 4}, true},

    {"blanks", 17005, kSerial, k1st, "% 0 0 33000 24000 ", {0, 0, 33000, 24000}, true},
    {"a percent sign starts anew", 17005, kSerial, k1st, "9 9 %1 2 3 4 5 ", {1, 2, 3, 4}, true},
    {"USB: any digit completes", 17005, kUsb, k1st, "0 5", {0, 0, 0, 0}, true},
    {"USB: 0 is not enough", 17005, kUsb, k1st, "0 0", {0, 0, 0, 0}, false},

    {"skip", 17008, kSerial, k1st, "a,b,c,d,100,200,300,400\r", {100, 200, 300, 400}, true},
    {"skip stops when complete", 17008, kSerial, k1st, ",,,,1,2,3,4,5,6\r", {1, 2, 3, 4}, true},
    {"skip, USB", 17008, kUsb, k1st, "x(0,1,2,3,100,200,300,400,", {100, 200, 300, 400}, true},
    {"skip, USB, no pair: from the first byte", 17008, kUsb, k1st, "a,b,c,d,1,2,3,4,", {1, 2, 3, 4}, true},
    {"skip, USB: only a comma ends the fourth", 17008, kUsb, k1st, ",,,,1,2,3,4\r", {1, 2, 3, 0}, false},

    {"pair", 17009, kSerial, k1st, "120,340\r", {120, 340, 0, 111}, true},
    {"each further byte ends it again", 17009, kSerial, k1st, "120,340\r\n", {120, 0, 0, 111}, true},
    {"no digit behind the comma", 17009, kSerial, k1st, "120,\r\n", {120, 0, 0, 0}, false},
    {"second pair", 17009, kSerial, k2nd, "5, 6)\r", {0, 0, 5, 6}, true},
    {"pair, USB", 17009, kUsb, k1st, "120,340", {120, 340, 111, 111}, true},
    {"pair, USB, no digit", 17009, kUsb, k1st, "120,\r", {120, -1, 111, 111}, true},
    {"second pair, USB", 17009, kUsb, k2nd, " 5,6\r", {0, 0, 5, 6}, true},
    {"second pair, USB, no comma", 17009, kUsb, k2nd, "56\r7", {0, 0, 56, 567}, true},
};

ReplyForm formOf(int32_t emulation) { return emulations::of(emulation).reply; }

TEST(Reply, Rules) {
    scripted::Platform platform;
    for (const auto &c : kReplies) {
        SCOPED_TRACE(c.what);
        Reading reading = readingOf(formOf(c.emulation));
        readReply(c.reply, formOf(c.emulation), c.link, c.part, reading);
        for (int i = 0; i < 4; ++i)
            EXPECT_EQ(reading.values[i], c.values[i]) << "value " << i + 1;
        EXPECT_EQ(reading.complete, c.complete);
    }
}

TEST(Reply, WhatLivesFromOneReplyToTheNext) {
    constexpr struct {
        const char *what;
        int32_t emulation;
        std::string_view first, second;
        int index;
        double value; ///< there, afterwards
        bool complete;
    } kCases[] = {
        {"the commas that were skipped, not their number", 17008, "a,b,", "c,d,1,2,3,4,", 0, 1, true},
        {"values start with the first again", 17008, "a,b,c,d,1,2,", "3,4,5,6,", 0, 3, true},
        {"a fourth that is in already is not set by the reply's end", 17001, "1,2,3,9,", "1,2,3,4", 3, 9, false},
    };
    for (const auto &c : kCases) {
        SCOPED_TRACE(c.what);
        scripted::Platform platform;
        Reading reading = readingOf(formOf(c.emulation));
        readReply(c.first, formOf(c.emulation), kUsb, k1st, reading);
        readReply(c.second, formOf(c.emulation), kUsb, k1st, reading);
        EXPECT_EQ(reading.values[c.index], c.value);
        EXPECT_EQ(reading.complete, c.complete);
    }
}

} // namespace
