#include "orb/vectorix.h"

#include "platform/corefoundation/corefoundation.h"
#include "support/scripted.h"

#include <gtest/gtest.h>

#include <cstring>

namespace {

constexpr int32_t kKept = -99;

constexpr struct {
    uint32_t number;
    int32_t lastService, errorID; ///< kKept: as the host sent it
    const char *console;
} kEntryCases[] = {
    {0, 0, 0, ""},
    {1, kKept, kORB_NoError, ""},
    {4, kKept, kKept, " [S4] called by ORB Vectorix.  this is a ghost : it does nothing\n"},
    {6, kKept, kORB_NoError, " [S6] called by ORB Vectorix, but this service is a ghost : it does nothing\n"},
    {12, kKept, kKept, ""},
    {14, 14, 0, " [S14] called by ORB Vectorix\n"},
    {18, kKept, kKept,
     " [S18] called by ORB Vectorix\n"
     "[VECTORIX FOUNDATION] : ORB_VectorixService18 does nothing at this stage of developements\n"},
    {0xFFFFFFFF, 0, 0, ""},
};

TEST(Entry, ServicesThatItAnswersItselfChangeNothingElse) {
    for (const auto &c : kEntryCases) {
        scripted::Platform platform;
        ORB_ServiceRecord sent;
        for (size_t i = 0; i < sizeof sent; ++i)
            reinterpret_cast<unsigned char *>(&sent)[i] = static_cast<unsigned char>(i * 31 + 7);
        sent.ORB_serviceNumber = c.number;
        const ORB_ServiceRecord returned = ORB_getVectorixCS2(sent);
        if (c.lastService != kKept) sent.ORB_lastService = c.lastService;
        if (c.errorID != kKept) sent.ORB_errorID = c.errorID;
        const auto bytes = [](const auto &of) { return std::string_view(reinterpret_cast<const char *>(&of), sizeof of); };
        EXPECT_TRUE(bytes(returned) == bytes(sent)) << c.number;
        EXPECT_EQ(platform.console.out, c.console) << c.number;
    }
    EXPECT_EQ(gORB_verboseBasicMode, kCFBooleanTrue);
    EXPECT_EQ(gORB_verboseReadMode, kCFBooleanFalse);
}

TEST(Host, Strings) {
    CFStringRef s = ORB_hostCreateString("h\xC3\xA9llo");
    ASSERT_NE(s, 0U);
    char text[8];
    EXPECT_EQ(ORB_hostGetString(s, nullptr, 0), 6);
    EXPECT_EQ(ORB_hostGetString(s, text, sizeof text), 6);
    EXPECT_STREQ(text, "h\xC3\xA9llo");
    EXPECT_EQ(ORB_hostGetString(s, text, 3), 6); // two bytes fit, and would split the second character
    EXPECT_STREQ(text, "h");
    ORB_hostReleaseString(s);
    EXPECT_EQ(ORB_hostGetString(s, text, sizeof text), -1);
    EXPECT_EQ(ORB_hostCreateString(nullptr), 0U);
    EXPECT_EQ(ORB_hostCreateString("\xFF"), 0U);
    EXPECT_EQ(ORB_hostGetString(kCFBooleanTrue, text, sizeof text), -1);
}

TEST(Host, ReportWritesNoMoreThanTheHostHasRoomFor) {
    ORB_JobReport reports[2];
    memset(&reports, 0x55, sizeof reports);
    reports[0].structSize = 8;
    ORB_hostGetJobReport(&reports[0]);
    EXPECT_EQ(reports[0].structSize, 8U);
    EXPECT_EQ(reports[0].firstErrorID, 0x55555555);
    reports[0].structSize = 0xFFFFFFFF;
    ORB_hostGetJobReport(&reports[0]);
    EXPECT_EQ(reports[1].structSize, 0x55555555U);
}

} // namespace
