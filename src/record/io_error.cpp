#include "record/io_error.h"

#include "platform/corefoundation/corefoundation.h"
#include "platform/iokit/io_return.h"
#include "platform/posix/console.h"
#include "record/state.h"
#include "record/status_text.h"

namespace {

struct Code {
    uint16_t number; ///< the code is 0xE0000000 plus this
    const char *description;
};

#define IOKIT_ROW(name, number, description) {number, description},
constexpr Code kCodes[] = {IOKIT_RETURN_CODES(IOKIT_ROW)};
#undef IOKIT_ROW

/// How the texts of a code are set, where they differ from the usual.
struct Setting {
    uint16_t number = 0;
    const char *lead = " ";        ///< before "iokit_common_err" in the line
    const char *end = "\n";        ///< behind the description in the line
    const char *separator = " ";   ///< before the slashes in both texts
    const char *messageLead = " "; ///< at the start of the message's second line
};

constexpr Setting kUsual;
constexpr Setting kSettings[] = {
    {0x001, "", "\n", "   "},
    {0x2c3, "  "},
    {0x2cd, " ", " \n"},
    {0x2ce, " ", " \n"},
    {0x2cf, " ", " \n"},
    {0x2d0, " ", " \n"},
    {0x2d1, " ", " \n"},
    {0x2d2, " ", " \n", " ", ""},
    {0x2d3, " ", " \n ", " ", ""},
    {0x2d6, " ", " \n"},
    {0x2d7, " ", " \n"},
    {0x2d8, " ", " \n"},
    {0x2da, " ", " \n"},
    {0x2db, " ", " \n"},
    {0x2dd, " ", " \n"},
    {0x2de, " ", " \n"},
    {0x2df, " ", " \n"},
    {0x2e0, " ", " \n"},
    {0x2e1, " ", " \n"},
    {0x2e2, " ", " \n"},
    {0x2e3, " ", "\n "},
    {0x2e4, " ", "\n "},
    {0x2e5, " ", " \n", ""},
    {0x2e6, " ", "\n "},
    {0x2e7, "  "},
    {0x2e9, " ", "\n "},
    {0x2ea, ""},
    {0x2eb, ""},
    {0x2ed, "", "=> sleep 10\n"},
    {0x2ee, ""},
    {0x2ef, " ", "\n "},
    {0x2f0, " kIOReturnNotFound        "},
};

const Setting &settingOf(uint16_t number) {
    for (const Setting &setting : kSettings) {
        if (setting.number == number) return setting;
    }
    return kUsual;
}

void setMessage(CFStringRef message) {
    clearStatus();
    answer().ORB_CFSTR_message = message;
}

} // namespace

extern "C" int32_t ORB_logIOError(int32_t code) {
    if (code == kORB_NoError) {
        posix::puts("ORB Vectorix Foundation : ORB error 22007");
        setMessage(CFStringCreateWithFormat("ORB Vectorix Foundation :ORB error %d", code));
        return code;
    }
    for (const Code &row : kCodes) {
        if (static_cast<uint32_t>(code) != 0xE0000000U + row.number) continue;
        const Setting &set = settingOf(row.number);
        posix::printf("ORB Vectorix Foundation :%siokit_common_err(0x%x)%s// %s%s", set.lead, row.number, set.separator,
                      row.description, set.end);
        setMessage(CFStringCreateWithFormat("ORB Vectorix Foundation :iokit_common_err =%d\n%s(0x%x)%s// %s", code,
                                            set.messageLead, row.number, set.separator, row.description));
        return code;
    }
    posix::puts("ORB Vectorix Foundation : default unknownerror, thus device is not responding");
    setMessage(CFStringCreateWithFormat("ORB Vectorix Foundation :iokit_common_err =%d\n"
                                        " : default unknownerror, thus device is not responding",
                                        kIOReturnNotResponding));
    return kIOReturnNotResponding;
}
