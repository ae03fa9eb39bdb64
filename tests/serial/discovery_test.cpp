#include "serial/discovery.h"

#include "record/state.h"
#include "support/scripted.h"

#include <gtest/gtest.h>

namespace {

constexpr const char *kSevenInSix = "ttyUSB1/12 ttyUSB2/12 ttyUSB3/12 ttyUSB4/12 ttyUSB5/12 ttyUSB7/12 ";

/// Ports from ttyUSB1 up; the second one with another value under the key, or none when it is empty.
std::vector<std::map<std::string, std::string>> ports(int count, const char *key = "", const std::string &value = {}) {
    std::vector<std::map<std::string, std::string>> made;
    for (int i = 1; i <= count; ++i) {
        const std::string name = "ttyUSB" + std::to_string(i), path = "/dev/" + name;
        made.push_back({{"IOTTYDevice", name}, {"IOCalloutDevice", path}, {"IODialinDevice", path}});
    }
    if (*key != '\0') made[1][key] = value;
    if (*key != '\0' && value.empty()) made[1].erase(key);
    return made;
}

/// The names in the slots, and the size of each callout path.
std::string listed() {
    std::string all;
    for (int slot = 0; slot < 6; ++slot) {
        const std::string name(platform::stringView(answer().ORB_CFSTR_TTYDevice[slot]));
        if (name.empty()) continue;
        all += name + "/" + std::to_string(CFStringGetLength(answer().ORB_CFSTR_CalloutDevice[slot])) + " ";
        EXPECT_EQ(platform::stringView(answer().ORB_CFSTR_DialinDevice[slot]), "/dev/" + name);
    }
    return all;
}

TEST(Discovery, Outcomes) {
    constexpr const char *kNoName = "return as ORB_IOproperty1 == (CFStringRef) NULL\n";
    const std::string wide = std::string(38, 'x') + "\xC3\xA9"; // 39 characters, more bytes in UTF-8
    const struct {
        const char *what;
        int ports;
        const char *key; ///< of the second one
        std::string value;
        int32_t errorID, count;
        const char *listed, *console = "", *fails = "";
    } cases[] = {
        {"no registry", 3, "", "", kORB_ErrorMasterPort, 0, "", "", "IOMasterPort"},
        {"no dictionary", 3, "", "", kORB_ErrorMatching, 0, "", "", "IOServiceMatching"},
        {"no iterator", 3, "", "", kORB_ErrorGetServices, 0, "", "", "IOServiceGetMatchingServices"},
        {"no port", 0, "", "", kORB_ErrorNoPort, 0, ""},
        {"eight", 8, "", "", kORB_NoError, 7, kSevenInSix},
        {"no name", 3, "IOTTYDevice", "", kORB_NoError, 1, "ttyUSB1/12 ", kNoName},
        {"no callout path", 3, "IOCalloutDevice", "", kORB_NoError, 1, "ttyUSB1/12 "},
        {"39 characters", 3, "IOCalloutDevice", wide, kORB_NoError, 3, "ttyUSB1/12 ttyUSB2/40 ttyUSB3/12 "},
        {"40", 3, "IODialinDevice", std::string(40, 'x'), kORB_ErrorPathNameTooLong, 1, "ttyUSB1/12 "},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.what);
        scripted::Platform platform;
        platform.registry.serialPorts = ports(c.ports, c.key, c.value);
        if (*c.fails != '\0') platform.script(c.fails, scripted::gives(-5));
        answer() = {};
        EXPECT_EQ(ORB_VectorixService3(), *c.fails != '\0' && c.errorID != kORB_ErrorMatching ? -5 : 0);
        EXPECT_EQ(answer().ORB_errorID, c.errorID);
        EXPECT_EQ(answer().ORB_deviceCount, c.count);
        EXPECT_EQ(answer().ORB_lastService, 3);
        EXPECT_EQ(platform.console.out, c.console);
        EXPECT_EQ(listed(), c.listed);
    }
}

} // namespace
