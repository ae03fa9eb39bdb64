#include "record/io_error.h"

#include "platform/iokit/io_return.h"
#include "record/state.h"
#include "support/scripted.h"

#include <gtest/gtest.h>

namespace {

constexpr const char *kUnknownLine = " default unknownerror, thus device is not responding\n";
constexpr const char *kUnknownMessage =
    "iokit_common_err =-536870163\n : default unknownerror, thus device is not responding";

// The usual form, one of each that differs from it, and numbers that are no codes.
const struct {
    int32_t code, result;
    const char *line, *message; ///< behind "ORB Vectorix Foundation :"
} kErrors[] = {
    {kIOReturnError, kIOReturnError, " iokit_common_err(0x2bc) // general error\n",
     "iokit_common_err =-536870212\n (0x2bc) // general error"},
    {kIOReturnStillOpen, kIOReturnStillOpen, " iokit_common_err(0x2d2) // device(s) still open \n",
     "iokit_common_err =-536870190\n(0x2d2) // device(s) still open"},
    {kIOReturnUnformattedMedia, kIOReturnUnformattedMedia, " iokit_common_err(0x2e5)// media not formatted \n",
     "iokit_common_err =-536870171\n (0x2e5)// media not formatted"},
    {22007, 22007, " ORB error 22007\n", "ORB error 22007"},
    {0, kIOReturnNotResponding, kUnknownLine, kUnknownMessage},
    {-0x1FFFFD3A, kIOReturnNotResponding, kUnknownLine, kUnknownMessage}, // 0xE00002C6
};

TEST(IOError, LinesMessagesAndResults) {
    const std::string lead = "ORB Vectorix Foundation :";
    for (const auto &c : kErrors) {
        SCOPED_TRACE(c.code);
        scripted::Platform platform;
        answer().ORB_CFSTR_message = platform::constantString("before");
        answer().ORB_errorID = 4711;
        EXPECT_EQ(ORB_logIOError(c.code), c.result);
        EXPECT_EQ(platform.console.out, lead + c.line);
        EXPECT_EQ(platform::stringView(answer().ORB_CFSTR_message), lead + c.message);
        EXPECT_EQ(answer().ORB_errorID, 4711);
        CFRelease(answer().ORB_CFSTR_message);
    }
}

} // namespace
