// The scenarios: one call of the entry each, and what comes of it when nothing fails.
#pragma once

#include "stand_in/scenario.h"

#include <string>
#include <vector>

namespace sweep {

using namespace stand_in;

inline std::string nine(const std::string &text) {
    const std::string three = text + text + text;
    return three + three + three;
}

const std::string kPenDown = nine("PU10,10;PD20,20,30,30;") + "SP0;rest";
const std::string kUncut = std::string(100, 'x') + std::string("\0\0;PD1;", 7) + std::string(60, ';');
constexpr const char *kForeignPort = "/dev/h\xC3\xA9", *kHpglReply = "0,0,15200,10800\r";
constexpr const char *kUnfitJob = "<plist>\n<dict><key>a</key><integer>12x</integer></dict></plist>";
constexpr const char *kArrayJob = "<plist><array><data>AAAA</data><date>2020-01-01T00:00:00Z</date><true/></array></plist>";
constexpr uint32_t kBoth = 0; // links, one after the other
constexpr uint32_t kNoLink = kORB_StopNoLink, kUnfit = kORB_StopJobFile;
constexpr int32_t kNoPath = kORB_SerialTools_errorNoBSDIn;

const std::vector<Scenario> kScenarios = {
    {.name = "ghost-4", .service = 4, .errorID = kHostsErrorID},
    {.name = "list-plotters", .service = 2},
    {.name = "list-ports", .service = 3},
    {.name = "open-and-write", .service = 5},
    {.name = "open-and-write-17008", .service = 5, .emulation = 17008},
    {.name = "open-again", .service = 5, .before = Before::PortOpen},
    {.name = "open-no-path", .service = 5, .errorID = kNoPath, .port = ""},
    {.name = "open-foreign-path", .service = 5, .port = kForeignPort},
    {.name = "prepare", .service = 8},
    {.name = "write-usb", .service = 9, .method = kUsb, .before = Before::InterfaceOpen},
    {.name = "write-usb-closed", .service = 9, .method = kUsb, .errorID = kORB_ErrorPipe},
    {.name = "close-usb", .service = 10, .method = kUsb, .errorID = kHostsErrorID, .before = Before::InterfaceOpen},

    {"query-serial", 7, kSerial, 17001, 0, 0, {kHpglReply}},
    {"query-serial-17008", 7, kSerial, 17008, 0, 1, {"a,b,c,d,1,2,3,4\r"}},
    {"query-serial-17009", 7, kSerial, 17009, 0, 1, {"120,340\r", "560,780\r"}},
    {"query-serial-usb", 7, kUsb, 17001, 0x0B75, 0, {kHpglReply}},
    {"query-serial-other-link", 7, kOther, 17001, 0, 0, {kHpglReply}},
    {.name = "query-serial-silent", .service = 7},
    {.name = "query-serial-no-path", .service = 7, .errorID = kNoPath, .port = ""},
    {"query-usb", 11, kUsb, 17001, 0x0B75, 0, {kHpglReply}},
    {"query-usb-17002", 11, kUsb, 17002, 0x0F0B, 0, {"", "0,0,1", kHpglReply}},
    {"query-usb-17008", 11, kUsb, 17008, 0x099F, 3, {"(0,1,2,3,100,200,300,400,\r"}},
    {"query-usb-17009", 11, kUsb, 17009, 0x0B4D, 1, {"120,340\r", "", "560,780\r"}},
    {.name = "query-usb-silent", .service = 11, .method = kUsb, .errorID = kORB_ErrorPipe},
    {.name = "query-usb-open", .service = 11, .method = kUsb, .errorID = kORB_ErrorPipe, .before = Before::InterfaceOpen},
    {.name = "query-usb-other-link", .service = 11, .method = kOther, .errorID = kORB_ErrorInterfaceNotOpened},

    {.name = "print-no-path", .plot = kPenDown, .stopReason = kNoLink, .errorID = kNoPath, .port = ""},
    {.name = "print-foreign-path", .plot = kPenDown, .stopReason = kORB_StopUnconvertible, .port = kForeignPort},
    {.name = "print-other-link", .method = kOther, .plot = kPenDown, .stopReason = kNoLink},
    {.name = "print-no-terminator", .plot = kPenDown, .stopReason = kUnfit, .terminator = ""},
    {.name = "print-unfit-job", .plot = kPenDown, .stopReason = kUnfit, .job = kUnfitJob},
    {.name = "print-array-job", .plot = kPenDown, .stopReason = kUnfit, .job = kArrayJob},
    {.name = "print-interface-open", .method = kUsb, .plot = kPenDown, .before = Before::InterfaceOpen},
    {.name = "print-port-open", .plot = kPenDown, .before = Before::PortOpen},

    {"print-17001", 17, kBoth, 17001, 0x0B75, 0, {}, kPenDown},
    {"print-17002", 17, kBoth, 17002, 0x0F0B, 0, {}, kPenDown},
    {"print-17008", 17, kBoth, 17008, 0x099F, 0, {}, nine("U1,1,D2,2,U3,3,D4,4,U5,5,D6,6,U7,7,D8,8,") + "@rest"},
    {"print-17009", 17, kBoth, 17009, 0x0B4D, 0, {}, nine("\3N1,1;\3D2,2,3;")},
    {"print-17011", 17, kBoth, 17011, 0x0C30, 0, {}, nine("M10,10;D20,20,30;")},
    {"print-uncut", 17, kBoth, 17001, 0x0B75, 0, {}, kUncut},
    {"print-foreign", 17, kBoth, 17001, 0x0B75, 0, {}, kPenDown + "\xE9;PD;PD;PD;PD;PD;PD;", kORB_StopNotASCII},
    {"print-no-mark", 17, kBoth, 17036, 0x0B75, 0, {}, nine("U1,1,D2,2;"), kORB_StopNoMarkInTail},
    {.name = "print-empty", .method = kBoth},
};

inline std::vector<Scenario> scenarios() {
    std::vector<Scenario> all;
    for (const Scenario &scenario : kScenarios) {
        all.push_back(scenario);
        if (scenario.method != kBoth) continue;
        all.back().method = kSerial;
        all.push_back(scenario);
        all.back().method = kUsb;
    }
    return all;
}

} // namespace sweep
