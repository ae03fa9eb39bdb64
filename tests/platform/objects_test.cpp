#include "support/scripted.h"

#include "platform/corefoundation/handle_table.h"

#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <cstring>
#include <limits>

using platform::liveObjectCount;
using platform::madeInThisCall;
using platform::stringView;

namespace {

CFRef fromXml(const std::string &xml) { return CFRef(CFPropertyListCreateFromXMLData(xml.data(), xml.size(), nullptr)); }

TEST(Handles, CountsDecideWhenAnObjectGoes) {
    const uint32_t before = liveObjectCount();
    const CFStringRef s = CFStringCreateWithUTF8("plotter");
    EXPECT_EQ(CFRetain(s), s);
    CFRelease(s);
    EXPECT_EQ(stringView(s), "plotter");
    CFRelease(s);
    EXPECT_EQ(liveObjectCount(), before);
    CFRelease(s); // once too often
    EXPECT_EQ(CFRetain(s), 0U);
    EXPECT_EQ(CFGetTypeID(s), 0U);
    EXPECT_EQ(liveObjectCount(), before);
}

TEST(Handles, AStaleHandleStaysStaleWhileOthersComeAndGo) {
    const CFStringRef stale = CFStringCreateWithUTF8("gone");
    CFRelease(stale);
    for (int i = 0; i < 1'000'000; ++i) {
        const CFRef other(CFStringCreateWithUTF8("x"));
        ASSERT_NE(other.get(), stale);
        ASSERT_EQ(CFStringGetLength(stale), 0U);
    }
}

TEST(Handles, WrongTypesBehaveAsNull) {
    const CFRef number = fromXml("<integer>1</integer>"), s(CFStringCreateWithUTF8("1"));
    int32_t value = 7;
    EXPECT_FALSE(CFNumberGetValue(s.get(), kCFNumberSInt32Type, &value));
    EXPECT_EQ(value, 7);
    EXPECT_EQ(CFStringCreateCopy(number.get()), 0U);
    EXPECT_EQ(CFDictionaryGetValue(s.get(), "1"), 0U);
    EXPECT_NE(CFGetTypeID(number.get()), CFGetTypeID(s.get()));
    for (const uint32_t madeUp : {s.get() ^ 0x100000U, s.get() + 0x80000U, ~0U, 0U}) {
        char text[8];
        CFRelease(madeUp);
        EXPECT_FALSE(CFStringGetCString(madeUp, text, sizeof text, kCFStringEncodingUTF8)) << madeUp;
    }
    EXPECT_EQ(stringView(s.get()), "1");
}

TEST(Handles, ConstantsIgnoreCounts) {
    static const char kText[] = "ready";
    const uint32_t before = liveObjectCount();
    const CFStringRef s = platform::constantString(kText);
    for (CFTypeRef constant : {CFTypeRef(s), kCFBooleanTrue, kCFBooleanFalse}) {
        CFRelease(constant);
        CFRelease(constant);
        EXPECT_NE(CFGetTypeID(constant), 0U);
    }
    EXPECT_EQ(platform::constantString(kText), s);
    EXPECT_EQ(stringView(s), "ready");
    EXPECT_EQ(liveObjectCount(), before);
    EXPECT_NE(kCFBooleanTrue, kCFBooleanFalse);
}

TEST(Handles, EpochTellsWhatTheCurrentCallMade) {
    const CFRef outside(CFStringCreateWithUTF8("outside"));
    platform::beginObjectEpoch();
    const CFRef inside(CFStringCreateWithUTF8("inside"));
    EXPECT_TRUE(madeInThisCall(inside.get()));
    EXPECT_FALSE(madeInThisCall(outside.get()));
    EXPECT_FALSE(madeInThisCall(platform::constantString("made in the call")));
    EXPECT_FALSE(madeInThisCall(0));
    platform::endObjectEpoch();
    EXPECT_FALSE(madeInThisCall(inside.get()));
    platform::beginObjectEpoch();
    EXPECT_FALSE(madeInThisCall(inside.get()));
    platform::endObjectEpoch();
}

// One inside the other, so that releasing them by recursion would overflow the stack.
TEST(Handles, AMillionObjectsAtMost) {
    const uint32_t before = liveObjectCount();
    CFRef outermost;
    for (uint32_t made = before; made < 1'000'000; ++made) {
        platform::Array array;
        array.push_back(std::move(outermost));
        outermost = CFRef(platform::createObject(std::move(array)));
        ASSERT_TRUE(outermost);
    }
    std::vector<CFRef> rest;
    do
        rest.emplace_back(CFStringCreateWithUTF8("x"));
    while (rest.back() && rest.size() < 100'000);
    EXPECT_LT(rest.size(), 100'000U);
    rest.clear();
    outermost.reset();
    EXPECT_EQ(liveObjectCount(), before);
    EXPECT_TRUE(CFRef(CFStringCreateWithUTF8("x")));
}

TEST(Strings, RefusedCreations) {
    for (const char *bad :
         {"\x80", "\xC0\x80", "\xC3", "\xE0\x9F\xBF", "\xED\xA0\x80", "\xF4\x90\x80\x80", "\xF5", "a\xE2\x82"})
        EXPECT_EQ(CFStringCreateWithUTF8(bad), 0U) << bad;
    EXPECT_EQ(CFStringCreateCopy(0), 0U);
    scripted::Platform scripted;
    scripted.objects.failAt = 1;
    scripted.objects.failAllAfter = true;
    EXPECT_EQ(CFStringCreateWithUTF8("x"), 0U);
    EXPECT_EQ(CFStringCreateWithFormat("%d", 1), 0U);
    EXPECT_EQ(CFStringCreateCopy(platform::constantString("x")), 0U);
}

TEST(Strings, GetCString) {
    constexpr struct {
        const char *what;
        std::string_view text;
        uint32_t encoding, size;
        const char *expected; // nullptr: refused, with the buffer untouched
    } kCases[] = {
        {"fits exactly", "abc", kCFStringEncodingASCII, 4, "abc"},
        {"one byte short", "abc", kCFStringEncodingASCII, 3, nullptr},
        {"no room at all", "", kCFStringEncodingUTF8, 0, nullptr},
        {"not ASCII", "caf\u00E9", kCFStringEncodingASCII, 16, nullptr},
        {"UTF-8", "caf\u00E9", kCFStringEncodingUTF8, 6, "caf\u00E9"},
        {"Mac OS Roman", "caf\u00E9", kCFStringEncodingMacRoman, 5, "caf\x8E"},
        {"Mac OS Roman lacks it", "\u4E2D", kCFStringEncodingMacRoman, 16, nullptr},
        {"unknown encoding", "abc", 12345, 16, nullptr},
    };
    for (const auto &c : kCases) {
        const CFRef s(CFStringCreateWithUTF8(c.text));
        char buffer[16] = "untouched";
        const bool done = CFStringGetCString(s.get(), buffer, c.size, c.encoding);
        EXPECT_EQ(done, c.expected != nullptr) << c.what;
        EXPECT_STREQ(buffer, c.expected == nullptr ? "untouched" : c.expected) << c.what;
    }
    const CFRef s(CFStringCreateWithUTF8(std::string_view("a\0b", 3)));
    char buffer[4];
    EXPECT_TRUE(CFStringGetCString(s.get(), buffer, sizeof buffer, kCFStringEncodingASCII));
    EXPECT_EQ(memcmp(buffer, "a\0b", 4), 0);
}

TEST(Strings, Format) {
    const auto formatted = [](const char *format, auto... arguments) {
        return std::string(stringView(CFRef(CFStringCreateWithFormat(format, arguments...)).get()));
    };
    const CFRef s(CFStringCreateWithUTF8("\u00E9t\u00E9"));
    EXPECT_EQ(formatted("%d %i %u %x %X %o %c %s|%%", -1, 2, 3U, 255, 255, 8, 'c', "text"), "-1 2 3 ff FF 10 c text|%");
    EXPECT_EQ(formatted("%5d|%-5d|%05d|%+d|% d|%#x", 42, 42, 42, 42, 42, 42), "   42|42   |00042|+42| 42|0x2a");
    EXPECT_EQ(formatted("%*d|%-*d|%.*s|%.2f", 4, 1, 4, 1, 2, "abcdef", 2.345), "   1|1   |ab|2.35");
    EXPECT_EQ(formatted("%.*f|%.*s", -1, 2.5, -1, "abc"), "2.500000|abc");
    EXPECT_EQ(formatted("%ld %lld %lu %llu %zu", LONG_MIN, LLONG_MAX, ULONG_MAX, ULLONG_MAX, sizeof(int)),
              "-9223372036854775808 9223372036854775807 18446744073709551615 18446744073709551615 4");
    EXPECT_EQ(formatted("%f %lf %e %g", 1.5, 2.5, 1500.0, 0.25), "1.500000 2.500000 1.500000e+03 0.25");
    EXPECT_EQ(formatted("%@|%@|%d", s.get(), 0U, 7), "\u00E9t\u00E9|(null)|7");
    EXPECT_EQ(formatted("%Q %5y|%n|%d%", 3), "%Q %5y|%n|3%");
    EXPECT_EQ(formatted("%s %s", std::string(5000, 'x').c_str(), "end"), std::string(5000, 'x') + " end");
    EXPECT_EQ(formatted("%300d", 1), std::string(299, ' ') + "1");
    EXPECT_EQ(CFStringCreateWithFormat("%s", "\xFF"), 0U);
}

enum Lost : bool { kLost = false, kExact = true };
struct NumberCase {
    const char *xml;
    int32_t word;
    Lost wordExact;
    int low; // the low byte, signed
    Lost lowExact;
    double real;
    Lost realExact = kExact;
};

TEST(Numbers, Conversions) {
    constexpr double kInfinity = std::numeric_limits<double>::infinity();
    constexpr NumberCase kCases[] = {
        {"<integer>17008</integer>", 17008, kExact, 0x70, kLost, 17008},
        {"<integer>129</integer>", 129, kExact, -127, kLost, 129},
        {"<integer>4294967297</integer>", 1, kLost, 1, kLost, 4294967297.0},
        {"<integer>9223372036854775807</integer>", -1, kLost, -1, kLost, 0x1p63, kLost},
        {"<integer>-9223372036854775808</integer>", 0, kLost, 0, kLost, -0x1p63},
        {"<real>3</real>", 3, kExact, 3, kExact, 3},
        {"<real>300.5</real>", 300, kLost, 44, kLost, 300.5},
        {"<real>1e300</real>", INT32_MAX, kLost, INT8_MAX, kLost, 1e300},
        {"<real>9223372036854775808</real>", INT32_MAX, kLost, INT8_MAX, kLost, 0x1p63},
        {"<real>-inf</real>", INT32_MIN, kLost, INT8_MIN, kLost, -kInfinity},
        {"<real>nan</real>", 0, kLost, 0, kLost, std::numeric_limits<double>::quiet_NaN()},
    };
    for (const NumberCase &c : kCases) {
        const CFRef number = fromXml(c.xml);
        int32_t word = 99;
        EXPECT_EQ(CFNumberGetValue(number.get(), kCFNumberSInt32Type, &word), c.wordExact) << c.xml;
        EXPECT_EQ(word, c.word) << c.xml;
        char low[2] = {99, 99};
        EXPECT_EQ(CFNumberGetValue(number.get(), kCFNumberCharType, low), c.lowExact) << c.xml;
        EXPECT_EQ(static_cast<signed char>(low[0]), c.low) << c.xml;
        EXPECT_EQ(low[1], 99) << c.xml;
        double real = 99;
        EXPECT_EQ(CFNumberGetValue(number.get(), kCFNumberDoubleType, &real), c.realExact) << c.xml;
        EXPECT_TRUE(real == c.real || (std::isnan(real) && std::isnan(c.real))) << c.xml << ' ' << real;
    }
    EXPECT_EQ(CFGetTypeID(fromXml("<real>1</real>").get()), CFNumberGetTypeID());
    EXPECT_EQ(CFGetTypeID(fromXml("<integer>1</integer>").get()), CFNumberGetTypeID());
}

} // namespace
