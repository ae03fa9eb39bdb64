#include "support/scripted.h"

#include "platform/corefoundation/handle_table.h"

#include <gtest/gtest.h>

#include <sstream>

namespace {

std::string described(CFTypeRef object) {
    const platform::Value *value = platform::findValue(object);
    std::ostringstream out;
    if (const auto *text = std::get_if<std::string>(value)) out << "'" << *text << "'";
    if (const auto *flag = std::get_if<bool>(value)) out << (*flag ? "true" : "false");
    if (const auto *data = std::get_if<platform::Data>(value)) out << "data '" << data->bytes << "'";
    if (const auto *date = std::get_if<platform::Date>(value)) out << "date " << date->text;
    if (const auto *number = std::get_if<platform::Number>(value))
        std::visit([&](auto figure) { out << figure << (std::is_same_v<decltype(figure), double> ? "r" : ""); }, *number);
    if (const auto *array = std::get_if<platform::Array>(value)) {
        for (const CFRef &item : *array)
            out << "[" << described(item.get()) << "]";
    }
    if (const auto *dictionary = std::get_if<platform::Dictionary>(value)) {
        for (const auto &[key, item] : *dictionary)
            out << key << "=" << described(item.get()) << " ";
    }
    return out.str();
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

TEST(PropertyList, FitListsAndWhereAndWhyOthersAreNot) {
    using namespace std::literals;
    constexpr std::pair<std::string_view, std::string_view> kRows[] = {
        {"<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<!DOCTYPE plist PUBLIC \"-//X//DTD PLIST 1.0//EN\" \"x.dtd\">\n"
         "<plist version=\"1.0\"><dict><key>a :</key><integer>3</integer><key>b</key><true/></dict></plist>\n<!-- end -->",
         "a :=3 b=true "},
        {"\xEF\xBB\xBF<string>x</string>", "'x'"},
        {"<string>a\r\nb\rc</string>", "'a\nb\nc'"},
        {"<string>a<!-- no -->b<![CDATA[<&amp;]]>&lt;&#65;&#233;&#x20AC;&#x1F600;&#27;</string>",
         "'ab<&amp;<A\u00E9\xE2\x82\xAC\xF0\x9F\x98\x80\x1B'"},
        {"<dict><key/><false></false><key>&amp;</key><array> <array/><real>.5</real></array></dict>", "=false &=[][0.5r] "},
        {"<integer>9223372036854775807</integer>", "9223372036854775807"},
        {"<date> 2004-02-29T12:00:00Z</date>", "date 2004-02-29T12:00:00Z"},
        {"<data> aGVs\n bG8= </data>", "data 'hello'"},
        {"<plist>\n</plist>", "line 1: no value"},
        {"bplist00\xD1", "line 1: a binary property list; only XML is read"},
        {"<aaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaa/>",
         "line 1: unknown element <aaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaa...>"},
        {"<dict/>\n\r\ntrailing", "line 3: text outside a value"},
        {"<string>a\n<b/></string>", "line 2: <b> inside <string>"},
        {"<true>x</true>", "line 1: unfit text in <true>"},
        {"<array>\n<string>\xFF</string></array>", "line 2: not UTF-8"},
        {"<true/>\n\0<false/>"sv, "line 2: a NUL byte"},
        {"<integer>9223372036854775808</integer>", "line 1: unfit text in <integer>"},
    };
    for (auto [xml, expected] : kRows)
        EXPECT_EQ(parsed(xml), expected) << xml;
    // The words are the XML parser's own; the line is ours.
    EXPECT_TRUE(parsed("<dict>\n<key>a</key>\n<true>\n</dict>").starts_with("line 4: "));
}

std::string repeated(std::string_view text, size_t times) {
    std::string out;
    for (size_t i = 0; i < times; ++i)
        out += text;
    return out;
}

// Input that costs a careless parser time or memory out of proportion: these would hold the test for minutes.
TEST(PropertyList, NoInputIsABomb) {
    const auto nested = [](size_t depth) { return parsed(repeated("<array>", depth) + repeated("</array>", depth)); };
    EXPECT_EQ(nested(512), repeated("[", 511) + repeated("]", 511));
    EXPECT_EQ(nested(513), "line 1: nested too deep");
    EXPECT_TRUE(parsed(repeated("<array>", 500'000)).starts_with("line 1: "));
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

} // namespace
