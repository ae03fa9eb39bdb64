#include "record/io_error.h"

#include "platform/iokit/io_return.h"
#include "record/state.h"
#include "support/scripted.h"

#include <gtest/gtest.h>

namespace {

struct ErrorCase {
    int32_t code, result;
    const char *line, *message;
};

// The usual form, and one of each that differs from it.
const ErrorCase kErrors[] = {
    {kIOReturnError, kIOReturnError, "ORB Vectorix Foundation : iokit_common_err(0x2bc) // general error\n",
     "ORB Vectorix Foundation :iokit_common_err =-536870212\n (0x2bc) // general error"},
    {kIOReturnInvalid, kIOReturnInvalid, "ORB Vectorix Foundation :iokit_common_err(0x1)   // should never be seen\n",
     "ORB Vectorix Foundation :iokit_common_err =-536870911\n (0x1)   // should never be seen"},
    {kIOReturnLockedRead, kIOReturnLockedRead, "ORB Vectorix Foundation :  iokit_common_err(0x2c3) // device read locked\n",
     "ORB Vectorix Foundation :iokit_common_err =-536870205\n (0x2c3) // device read locked"},
    {kIOReturnStillOpen, kIOReturnStillOpen, "ORB Vectorix Foundation : iokit_common_err(0x2d2) // device(s) still open \n",
     "ORB Vectorix Foundation :iokit_common_err =-536870190\n(0x2d2) // device(s) still open"},
    {kIOReturnRLDError, kIOReturnRLDError, "ORB Vectorix Foundation : iokit_common_err(0x2d3) // rld failure \n ",
     "ORB Vectorix Foundation :iokit_common_err =-536870189\n(0x2d3) // rld failure"},
    {kIOReturnUnformattedMedia, kIOReturnUnformattedMedia,
     "ORB Vectorix Foundation : iokit_common_err(0x2e5)// media not formatted \n",
     "ORB Vectorix Foundation :iokit_common_err =-536870171\n (0x2e5)// media not formatted"},
    {kIOReturnNotResponding, kIOReturnNotResponding,
     "ORB Vectorix Foundation :iokit_common_err(0x2ed) // device not responding=> sleep 10\n",
     "ORB Vectorix Foundation :iokit_common_err =-536870163\n (0x2ed) // device not responding"},
    {kIOReturnNotFound, kIOReturnNotFound,
     "ORB Vectorix Foundation : kIOReturnNotFound        iokit_common_err(0x2f0) // data was not found\n",
     "ORB Vectorix Foundation :iokit_common_err =-536870160\n (0x2f0) // data was not found"},
    {22007, 22007, "ORB Vectorix Foundation : ORB error 22007\n", "ORB Vectorix Foundation :ORB error 22007"},
};

constexpr const char *kUnknownLine = "ORB Vectorix Foundation : default unknownerror, thus device is not responding\n";
constexpr const char *kUnknownMessage = "ORB Vectorix Foundation :iokit_common_err =-536870163\n"
                                        " : default unknownerror, thus device is not responding";

TEST(IOError, LinesMessagesAndResults) {
    std::vector<ErrorCase> cases(std::begin(kErrors), std::end(kErrors));
    for (uint32_t code :
         {0U, 1U, 0xE00002C6U, 0xE00002CBU, 0xE00002DCU, 0xE00002F1U, 0xE0004051U, 0xE0000000U, 0x2BCU, 0xFFFFFFFFU})
        cases.push_back({static_cast<int32_t>(code), kIOReturnNotResponding, kUnknownLine, kUnknownMessage});
    for (const ErrorCase &c : cases) {
        scripted::Platform platform;
        answer().ORB_CFSTR_message = platform::constantString("before");
        answer().ORB_errorID = 4711;
        EXPECT_EQ(ORB_logIOError(c.code), c.result) << c.code;
        EXPECT_EQ(platform.console.out, c.line) << c.code;
        EXPECT_EQ(platform::stringView(answer().ORB_CFSTR_message), c.message) << c.code;
        EXPECT_EQ(answer().ORB_errorID, 4711);
        CFRelease(answer().ORB_CFSTR_message);
    }
}

TEST(IOError, KnowsFiftyOneCodes) {
    scripted::Platform platform;
    int known = 0;
    for (uint32_t number = 0; number < 0x400; ++number) {
        auto code = static_cast<int32_t>(0xE0000000U + number);
        if (ORB_logIOError(code) == code) ++known;
    }
    EXPECT_EQ(known, 51);
    platform.objects.failAt = 1;
    platform.objects.failAllAfter = true;
    platform.objects.creations = 0;
    EXPECT_EQ(ORB_logIOError(kIOReturnError), kIOReturnError);
    EXPECT_EQ(answer().ORB_CFSTR_message, 0U);
}

} // namespace
