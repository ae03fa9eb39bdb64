#include "support/scripted.h"

#include "platform/corefoundation/handle_table.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstdio>

using namespace std::string_view_literals;
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
    EXPECT_EQ(CFGetTypeID(number.get()), CFNumberGetTypeID());
    EXPECT_NE(CFGetTypeID(s.get()), CFNumberGetTypeID());
    for (const uint32_t madeUp : {s.get() ^ 0x100000U, s.get() + 0x80000U, ~0U, 0U}) {
        char text[8];
        CFRelease(madeUp);
        EXPECT_FALSE(CFStringGetCString(madeUp, text, sizeof text, kCFStringEncodingUTF8)) << madeUp;
    }
    EXPECT_EQ(stringView(s.get()), "1");
}

TEST(Handles, ConstantsIgnoreCounts) {
    static const char kText[] = "ready";
    const CFStringRef s = platform::constantString(kText);
    for (CFTypeRef constant : {CFTypeRef(s), kCFBooleanTrue, kCFBooleanFalse}) {
        CFRelease(constant);
        CFRelease(constant);
        EXPECT_NE(CFGetTypeID(constant), 0U);
    }
    EXPECT_EQ(platform::constantString(kText), s);
}

TEST(Handles, EpochTellsWhatTheCurrentCallMade) {
    const CFRef outside(CFStringCreateWithUTF8("outside"));
    platform::beginObjectEpoch();
    const CFRef inside(CFStringCreateWithUTF8("inside"));
    EXPECT_TRUE(madeInThisCall(inside.get()));
    EXPECT_FALSE(madeInThisCall(outside.get()));
    EXPECT_FALSE(madeInThisCall(platform::constantString("made in the call")));
    platform::endObjectEpoch();
    platform::beginObjectEpoch();
    EXPECT_FALSE(madeInThisCall(inside.get()));
    platform::endObjectEpoch();
}

// One inside the other, so that releasing them by recursion would overflow the stack. The first that is refused takes all of
// them along.
TEST(Handles, AMillionObjectsAtMost) {
    const uint32_t before = liveObjectCount();
    uint32_t made = 0;
    for (CFRef outermost(CFStringCreateWithUTF8("x")); outermost; ++made) {
        platform::Array array;
        array.push_back(std::move(outermost));
        outermost = CFRef(platform::createObject(std::move(array)));
    }
    EXPECT_GT(made, 1'000'000U);
    EXPECT_EQ(liveObjectCount(), before);
    EXPECT_TRUE(CFRef(CFStringCreateWithUTF8("x")));
}

TEST(Strings, MustBeUtf8) {
    for (const char *bad : {"\x80", "\xC0\x80", "\xE0\x9F\xBF", "\xED\xA0\x80", "\xF4\x90\x80\x80", "\xF5", "a\xE2\x82"})
        EXPECT_EQ(CFStringCreateWithUTF8(bad), 0U) << bad;
}

TEST(Strings, GetCString) {
    constexpr struct {
        const char *what;
        std::string_view text;
        uint32_t encoding, size;
        std::string_view expected = "untouched"; // refused
    } kCases[] = {
        {"fits exactly, with a NUL within", "a\0c"sv, kCFStringEncodingASCII, 4, "a\0c"sv},
        {"one byte short", "abc", kCFStringEncodingASCII, 3},
        {"not ASCII", "caf\u00E9", kCFStringEncodingASCII, 16},
        {"UTF-8", "caf\u00E9", kCFStringEncodingUTF8, 6, "caf\u00E9"},
        {"Mac OS Roman", "caf\u00E9", kCFStringEncodingMacRoman, 5, "caf\x8E"},
        {"Mac OS Roman lacks it", "\u4E2D", kCFStringEncodingMacRoman, 16},
    };
    for (const auto &c : kCases) {
        const CFRef s(CFStringCreateWithUTF8(c.text));
        char buffer[16] = "untouched";
        EXPECT_EQ(CFStringGetCString(s.get(), buffer, c.size, c.encoding), c.expected != "untouched") << c.what;
        EXPECT_EQ(std::string_view(buffer, c.expected.size() + 1), std::string(c.expected) + '\0') << c.what;
    }
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
    EXPECT_EQ(formatted("%@|%@|%d", s.get(), 0U, 7), "\u00E9t\u00E9|(null)|7");
    EXPECT_EQ(formatted("%Q %5y|%n|%d%", 3), "%Q %5y|%n|3%");
    EXPECT_EQ(formatted("%s %s", std::string(5000, 'x').c_str(), "end"), std::string(5000, 'x') + " end");
    EXPECT_EQ(CFStringCreateWithFormat("%s", "\xFF"), 0U);
}

/// The number converted, with a "!" when that lost something of it.
template <typename T> std::string converted(CFNumberRef number, CFNumberType type) {
    T value[2] = {99, 99};
    char text[64];
    const bool isExact = CFNumberGetValue(number, type, value);
    EXPECT_EQ(value[1], T(99)) << "wrote past it";
    snprintf(text, sizeof text, "%.16g%s", double(value[0]), isExact ? "" : "!");
    return text;
}

TEST(Numbers, Conversions) {
    constexpr struct {
        const char *xml, *word, *lowByte, *real;
    } kCases[] = {
        {"<integer>17008</integer>", "17008", "112!", "17008"},
        {"<integer>4294967297</integer>", "1!", "1!", "4294967297"},
        {"<integer>9223372036854775807</integer>", "-1!", "-1!", "9.223372036854776e+18!"},
        {"<integer>-9223372036854775808</integer>", "0!", "0!", "-9.223372036854776e+18"},
        {"<real>3</real>", "3", "3", "3"},
        {"<real>300.5</real>", "300!", "44!", "300.5"},
        {"<real>9223372036854775808</real>", "2147483647!", "127!", "9.223372036854776e+18"},
        {"<real>-inf</real>", "-2147483648!", "-128!", "-inf"},
        {"<real>nan</real>", "0!", "0!", "nan"},
    };
    for (const auto &c : kCases) {
        const CFRef number = fromXml(c.xml);
        EXPECT_EQ(converted<int32_t>(number.get(), kCFNumberSInt32Type), c.word) << c.xml;
        EXPECT_EQ(converted<signed char>(number.get(), kCFNumberCharType), c.lowByte) << c.xml;
        EXPECT_EQ(converted<double>(number.get(), kCFNumberDoubleType), c.real) << c.xml;
    }
}

} // namespace
