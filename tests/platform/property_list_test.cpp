#include "support/scripted.h"

#include "platform/corefoundation/handle_table.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <span>

namespace {

std::string described(CFTypeRef object);

struct Describer {
    std::string operator()(std::monostate) const { return "none"; }
    std::string operator()(const std::string &text) const { return "'" + text + "'"; }
    std::string operator()(const platform::Number &number) const {
        char text[64];
        if (const int64_t *integer = std::get_if<int64_t>(&number)) return std::to_string(*integer);
        snprintf(text, sizeof text, "%gr", std::get<double>(number));
        return text;
    }
    std::string operator()(bool value) const { return value ? "true" : "false"; }
    std::string operator()(const platform::Data &data) const { return "data '" + data.bytes + "'"; }
    std::string operator()(const platform::Date &date) const { return "date " + date.text; }
    std::string operator()(const platform::Array &array) const {
        std::string out = "[";
        for (const CFRef &item : array)
            out += described(item.get()) + " ";
        return out + "]";
    }
    std::string operator()(const platform::Dictionary &dictionary) const {
        std::string out = "{";
        for (const auto &[key, value] : dictionary)
            out += key + "=" + described(value.get()) + " ";
        return out + "}";
    }
};

std::string described(CFTypeRef object) {
    const platform::Value *value = platform::findValue(object);
    return value == nullptr ? "stale" : std::visit(Describer(), *value);
}

/// The list described, or the reason why it is none; fails when an object is left.
std::string parsed(std::string_view xml) {
    const uint32_t before = platform::liveObjectCount();
    std::string result;
    {
        CFRef reason;
        const CFRef list(CFPropertyListCreateFromXMLData(xml.data(), xml.size(), reason.out()));
        EXPECT_NE(bool(list), bool(reason));
        result = list ? described(list.get()) : std::string(platform::stringView(reason.get()));
    }
    EXPECT_EQ(platform::liveObjectCount(), before) << xml.substr(0, 200);
    return result;
}

struct Case {
    std::string_view xml, expected;
};

void expectCases(std::span<const Case> cases) {
    for (const Case &c : cases)
        EXPECT_EQ(parsed(c.xml), c.expected) << c.xml;
}

TEST(PropertyList, FitLists) {
    constexpr Case kCases[] = {
        {"<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<!DOCTYPE plist PUBLIC \"-//X//DTD PLIST 1.0//EN\" \"x.dtd\">\n"
         "<plist version=\"1.0\"><dict><key>a :</key><integer>3</integer><key>b</key><true/></dict></plist>\n<!-- end -->",
         "{a :=3 b=true }"},
        {"\xEF\xBB\xBF<string>x</string>", "'x'"},
        {"<string> \n</string>", "' \n'"},
        {"<string>a\r\nb\rc</string>", "'a\nb\nc'"},
        {"<string>a<!-- no -->b<![CDATA[<&amp;]]>&lt;&#65;&#233;&#x20AC;&#x1F600;&#27;</string>",
         "'ab<&amp;<A\u00E9\xE2\x82\xAC\xF0\x9F\x98\x80\x1B'"},
        {"<dict><key>k</key><string>1</string><key>k</key><string>2</string></dict>", "{k='2' }"},
        {"<dict><key/><false></false><key>&amp;</key><array> <array/><real>.5</real></array></dict>",
         "{=false &=[[] 0.5r ] }"},
        {"<integer> +12\n</integer>", "12"},
        {"<integer>-0x10</integer>", "-16"},
        {"<integer>9223372036854775807</integer>", "9223372036854775807"},
        {"<integer>-9223372036854775808</integer>", "-9223372036854775808"},
        {"<real>-inf</real>", "-infr"},
        {"<date> 2004-02-29T12:00:00Z</date>", "date 2004-02-29T12:00:00Z"},
        {"<data> aGVs\n bG8= </data>", "data 'hello'"},
    };
    expectCases(kCases);
}

TEST(PropertyList, UnfitListsSayWhereAndWhy) {
    using namespace std::literals;
    constexpr Case kCases[] = {
        {"<plist>\n</plist>", "line 1: no value"},
        {"\n<dict><true/></dict>", "line 2: <true> without a key in <dict>"},
        {"bplist00\xD1", "line 1: a binary property list; only XML is read"},
        {"<dict>\n\n<foo/></dict>", "line 3: unknown element <foo>"},
        {"<array>\r\n\r<a/></array>", "line 3: unknown element <a>"},
        {"<aaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaa/>",
         "line 1: unknown element <aaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaa...>"},
        {"<plist><true/>\n<false/></plist>", "line 2: a second value: <false>"},
        {"<dict/>\n\r\ntrailing", "line 3: text outside a value"},
        {"<dict>\n<key>a</key></dict>", "line 1: a key without a value in <dict>"},
        {"<dict><key>a</key>\n<key>b</key></dict>", "line 2: <key> out of place"},
        {"<array><plist><true/></plist></array>", "line 1: <plist> out of place"},
        {"<string>a\n<b/></string>", "line 2: <b> inside <string>"},
        {"<true>x</true>", "line 1: unfit text in <true>"},
        {"<string>&esc;</string>", "line 1: unknown entity in <string>"},
        {"<string>&#0;</string>", "line 1: unknown entity in <string>"},
        {"<string>&#xD800;</string>", "line 1: unknown entity in <string>"},
        {"<string>&#x110000;</string>", "line 1: unknown entity in <string>"},
        {"<array>\n<string>\xFF</string></array>", "line 2: not UTF-8"},
        {"<true/>\n\0<false/>"sv, "line 2: a NUL byte"},
        {"<integer>12x</integer>", "line 1: unfit text in <integer>"},
        {"<integer>+-1</integer>", "line 1: unfit text in <integer>"},
        {"<integer>9223372036854775808</integer>", "line 1: unfit text in <integer>"},
        {"<integer>-9223372036854775809</integer>", "line 1: unfit text in <integer>"},
        {"<real>1e999</real>", "line 1: unfit text in <real>"},
        {"<date>yesterday</date>", "line 1: unfit text in <date>"},
        {"<data>aGV</data>", "line 1: unfit text in <data>"},
        {"<data>a===</data>", "line 1: unfit text in <data>"},
        {"<data>a!==</data>", "line 1: unfit text in <data>"},
        {"<data>aG==aGVs</data>", "line 1: unfit text in <data>"},
    };
    expectCases(kCases);
    // The words are the XML parser's own; the line is ours.
    EXPECT_TRUE(parsed("<dict>\n<key>a</key>\n<true>\n</dict>").starts_with("line 4: "));
    EXPECT_TRUE(parsed("<plist>\n<dict>").starts_with("line 2: "));
}

std::string repeated(std::string_view text, size_t times) {
    std::string out;
    for (size_t i = 0; i < times; ++i)
        out += text;
    return out;
}

TEST(PropertyList, DepthIsLimited) {
    const auto nested = [](size_t depth) { return parsed(repeated("<array>", depth) + repeated("</array>", depth)); };
    EXPECT_EQ(nested(512), repeated("[", 512) + "]" + repeated(" ]", 511));
    EXPECT_EQ(nested(513), "line 1: nested too deep");
    EXPECT_EQ(nested(500'000), "line 1: nested too deep");
    EXPECT_TRUE(parsed(repeated("<array>", 500'000)).starts_with("line 1: "));
}

// Input that costs a careless parser time or memory out of proportion: these would hold the test for minutes.
TEST(PropertyList, NoInputIsABomb) {
    std::string laughs = "<!DOCTYPE plist [<!ENTITY l0 \"ha\">";
    for (int i = 1; i < 40; ++i)
        laughs += "<!ENTITY l" + std::to_string(i) + " \"" + repeated("&l" + std::to_string(i - 1) + ";", 10) + "\">";
    EXPECT_EQ(parsed(laughs + "]><string>&l39;</string>"), "line 1: unknown entity in <string>");
    EXPECT_EQ(parsed("<string>" + repeated("a<!-- -->", 300'000) + "</string>").size(), 300'002U);
    EXPECT_EQ(parsed("<string>" + repeated("&amp;", 500'000) + "</string>").size(), 500'002U);
    EXPECT_EQ(parsed("<string>" + repeated("&", 500'000) + "</string>"), "line 1: unknown entity in <string>");
    EXPECT_EQ(parsed("<array>" + repeated("\n<true/>", 300'000) + "<x/></array>"), "line 300001: unknown element <x>");
    // More values than there are handles.
    EXPECT_EQ(parsed("<array>" + repeated("<date>2004-02-29T12:00:00Z</date>", 1 << 20) + "</array>"),
              "line 1: no room for another object");
}

TEST(PropertyList, DictionaryLookup) {
    constexpr std::string_view kList = "<dict><key>n :</key><integer>1</integer></dict>";
    const CFRef list(CFPropertyListCreateFromXMLData(kList.data(), kList.size(), nullptr));
    EXPECT_EQ(CFGetTypeID(list.get()), CFDictionaryGetTypeID());
    EXPECT_EQ(described(CFDictionaryGetValue(list.get(), "n :")), "1");
    EXPECT_EQ(CFDictionaryGetValue(list.get(), "n"), 0U);
    EXPECT_EQ(CFDictionaryGetValue(0, "n :"), 0U);
    EXPECT_EQ(CFDictionaryGetValue(CFDictionaryGetValue(list.get(), "n :"), "n :"), 0U);
}

} // namespace
