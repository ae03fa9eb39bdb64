#include "serial/discovery.h"

#include "serial_fixture.h"

namespace {

using Ports = std::vector<std::map<std::string, std::string>>;

Ports ports(int count) {
    Ports made;
    for (int i = 1; i <= count; ++i) {
        std::string name = "ttyUSB" + std::to_string(i);
        made.push_back({{"IOTTYDevice", name}, {"IOCalloutDevice", "/dev/" + name}, {"IODialinDevice", "/dev/" + name}});
    }
    return made;
}

constexpr const char *kSevenInSix = "ttyUSB1/12 ttyUSB2/12 ttyUSB3/12 ttyUSB4/12 ttyUSB5/12 ttyUSB7/12 ";
constexpr const char *kNoName = "return as ORB_IOproperty1 == (CFStringRef) NULL\n";

using Given = std::function<void(scripted::Platform &)>;

/// Three ports, the second one with another value under the key; none when it is empty.
Given secondWith(const char *key, const std::string &value) {
    return [=](scripted::Platform &platform) {
        platform.registry.serialPorts = ports(3);
        if (value.empty())
            platform.registry.serialPorts[1].erase(key);
        else
            platform.registry.serialPorts[1][key] = value;
    };
}

Given failing(const char *call) {
    return [=](scripted::Platform &platform) { platform.script(call, gives(-5)); };
}

/// The names in the slots, and the size of each callout path.
std::string listed() {
    std::string all;
    for (int slot = 0; slot < 6; ++slot) {
        const std::string_view name = platform::stringView(answer().ORB_CFSTR_TTYDevice[slot]);
        if (name.empty()) continue;
        all.append(name).append("/").append(std::to_string(CFStringGetLength(answer().ORB_CFSTR_CalloutDevice[slot])) + " ");
        EXPECT_EQ(platform::stringView(answer().ORB_CFSTR_DialinDevice[slot]), "/dev/" + std::string(name));
    }
    return all;
}

TEST(Discovery, Outcomes) {
    const std::string wide = std::string(38, 'x') + "\xC3\xA9"; // 39 characters, more bytes in UTF-8
    const struct {
        const char *what;
        Given given;
        int32_t result, errorID, count;
        const char *console, *listed;
    } cases[] = {
        {"no registry", failing("IOMasterPort"), -5, kORB_ErrorMasterPort, 0, "", ""},
        {"no dictionary", failing("IOServiceMatching"), 0, kORB_ErrorMatching, 0, "", ""},
        {"no iterator", failing("IOServiceGetMatchingServices"), -5, kORB_ErrorGetServices, 0, "", ""},
        {"no port", [](auto &) {}, 0, kORB_ErrorNoPort, 0, "", ""},
        {"eight", [](auto &p) { p.registry.serialPorts = ports(8); }, 0, kORB_NoError, 7, "", kSevenInSix},
        {"no name", secondWith("IOTTYDevice", ""), 0, kORB_NoError, 1, kNoName, "ttyUSB1/12 "},
        {"no callout path", secondWith("IOCalloutDevice", ""), 0, kORB_NoError, 1, "", "ttyUSB1/12 "},
        {"a path of 39 characters", secondWith("IOCalloutDevice", wide), 0, kORB_NoError, 3, "",
         "ttyUSB1/12 ttyUSB2/40 ttyUSB3/12 "},
        {"of 40", secondWith("IODialinDevice", std::string(40, 'x')), 0, kORB_ErrorPathNameTooLong, 1, "", "ttyUSB1/12 "},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.what);
        scripted::Platform platform;
        c.given(platform);
        answer() = {};
        answer().reserved5[1] = 9;
        EXPECT_EQ(ORB_VectorixService3(), c.result);
        EXPECT_EQ(answer().ORB_errorID, c.errorID);
        EXPECT_EQ(answer().ORB_deviceCount, c.count);
        EXPECT_EQ(answer().ORB_lastService, 3);
        EXPECT_EQ(answer().reserved5[1], 9);
        EXPECT_EQ(platform.console.out, c.console);
        EXPECT_EQ(listed(), c.listed);
    }
}

TEST(Discovery, OldStringsAreReleasedAndSlotsAboveTheCountStay) {
    scripted::Platform platform;
    answer() = {};
    const uint32_t before = platform::liveObjectCount();
    for (const int count : {7, 7, 1}) {
        platform.registry.serialPorts = ports(count);
        ORB_VectorixService3();
        EXPECT_EQ(platform::liveObjectCount(), before + 18);
        EXPECT_EQ(listed(), kSevenInSix);
    }
}

} // namespace
