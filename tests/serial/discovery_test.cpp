#include "serial/discovery.h"

#include "serial_fixture.h"
#include "service/state.h"

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

struct DiscoveryCase {
    const char *what;
    std::function<void(scripted::Registry &)> given;
    int32_t result, errorID, count;
    const char *console;
};

TEST(Discovery, Outcomes) {
    const DiscoveryCase kCases[] = {
        {"no registry", [](auto &r) { r.script("IOMasterPort", gives(-5)); }, -5, kORB_ErrorMasterPort, 0, ""},
        {"no dictionary", [](auto &r) { r.script("IOServiceMatching", gives(-5)); }, 0, kORB_ErrorMatching, 0, ""},
        {"no iterator", [](auto &r) { r.script("IOServiceGetMatchingServices", gives(-5)); }, -5, kORB_ErrorGetServices, 0,
         ""},
        {"no port", [](auto &) {}, 0, kORB_ErrorNoPort, 0, ""},
        {"three", [](auto &r) { r.serialPorts = ports(3); }, 0, kORB_NoError, 3, ""},
        {"eight", [](auto &r) { r.serialPorts = ports(8); }, 0, kORB_NoError, 7, ""},
        {"a second one without a name", [](auto &r) { r.serialPorts = ports(3), r.serialPorts[1].erase("IOTTYDevice"); }, 0,
         kORB_NoError, 1, "return as ORB_IOproperty1 == (CFStringRef) NULL\n"},
        {"a second one without a dial-in path",
         [](auto &r) { r.serialPorts = ports(3), r.serialPorts[1].erase("IODialinDevice"); }, 0, kORB_NoError, 1, ""},
        {"a path of 39 characters",
         [](auto &r) { r.serialPorts = ports(1), r.serialPorts[0]["IOCalloutDevice"] = std::string(39, 'x'); }, 0,
         kORB_NoError, 1, ""},
        {"of 40", [](auto &r) { r.serialPorts = ports(2), r.serialPorts[1]["IODialinDevice"] = std::string(40, 'x'); }, 0,
         kORB_ErrorPathNameTooLong, 1, ""},
        {"39 characters that take more in UTF-8",
         [](auto &r) {
             std::string path = std::string(38, 'x') + "\xC3\xA9";
             r.serialPorts = ports(1), r.serialPorts[0]["IOCalloutDevice"] = path;
         },
         0, kORB_NoError, 1, ""},
    };
    for (const DiscoveryCase &c : kCases) {
        SCOPED_TRACE(c.what);
        scripted::Platform platform;
        c.given(platform.registry);
        answer() = {};
        answer().reserved5[1] = 9;
        EXPECT_EQ(ORB_VectorixService3(), c.result);
        EXPECT_EQ(answer().ORB_errorID, c.errorID);
        EXPECT_EQ(answer().ORB_deviceCount, c.count);
        EXPECT_EQ(answer().ORB_lastService, 3);
        EXPECT_EQ(answer().reserved5[1], 9);
        EXPECT_EQ(platform.console.out, c.console);
        for (int slot = 0; slot < 6; ++slot) {
            for (CFStringRef s : {answer().ORB_CFSTR_TTYDevice[slot], answer().ORB_CFSTR_CalloutDevice[slot],
                                  answer().ORB_CFSTR_DialinDevice[slot]})
                CFRelease(s);
        }
    }
}

TEST(Discovery, TheSeventhPortTakesTheSixthSlotAndOldStringsAreReleased) {
    scripted::Platform platform;
    platform.registry.serialPorts = ports(7);
    answer() = {};
    uint32_t before = platform::liveObjectCount();
    for (int round = 0; round < 3; ++round) {
        ORB_VectorixService3();
        EXPECT_EQ(platform::stringView(answer().ORB_CFSTR_TTYDevice[4]), "ttyUSB5");
        EXPECT_EQ(platform::stringView(answer().ORB_CFSTR_TTYDevice[5]), "ttyUSB7");
        EXPECT_EQ(platform::stringView(answer().ORB_CFSTR_CalloutDevice[5]), "/dev/ttyUSB7");
        EXPECT_EQ(platform::liveObjectCount(), before + 18);
    }
    platform.registry.serialPorts = ports(1); // slots above the count keep what they held
    ORB_VectorixService3();
    EXPECT_EQ(platform::stringView(answer().ORB_CFSTR_TTYDevice[5]), "ttyUSB7");
    platform.registry.serialPorts.clear();
    for (CFStringRef *list :
         {answer().ORB_CFSTR_TTYDevice, answer().ORB_CFSTR_CalloutDevice, answer().ORB_CFSTR_DialinDevice}) {
        for (int slot = 0; slot < 6; ++slot)
            CFRelease(list[slot]);
    }
}

} // namespace
