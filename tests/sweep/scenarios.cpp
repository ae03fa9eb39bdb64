#include "sweep/scenarios.h"

namespace sweep {

namespace {

using namespace std::string_literals;

// The waits of each step when all its retries fail, in seconds.
constexpr unsigned kOpen = 11;                  // eleven opens of the port
constexpr unsigned kClose = 2;                  // before the port's close
constexpr unsigned kPrepare = 60 + 2;           // sixty opens of the device, two configurations
constexpr unsigned kInterface = 20;             // twenty opens of the interface
constexpr unsigned kPipes = 2;                  // once the pipes are clear
constexpr unsigned kPolls = 3 + 11;             // before a serial reply, and eleven polls for it
constexpr unsigned kMorePolls = 2 + 10;         // for the second one
constexpr unsigned kPasses = 100 * 101 / 2 - 1; // over USB: 2, 3 ... 100 seconds, when replies come but never complete

constexpr unsigned kSerialPrint = kOpen + kClose, kUsbPrint = kPrepare + kInterface + kPipes;
constexpr unsigned kSerialQuery = 2 * kOpen + kPolls + kClose; // it opens the port twice
constexpr unsigned kUsbQuery = kInterface + kPipes + kPasses;

constexpr uint32_t kUsb = kORB_OSX_METHOD_USB, kSerial = kORB_OSX_METHOD_SERIAL, kOther = 3;
constexpr const char *kPort = "/dev/plotter", *kForeignPort = "/dev/h\xC3\xA9";

std::string repeated(int times, const std::string &text, const std::string &end = {}) {
    std::string plot;
    for (int i = 0; i < times; ++i)
        plot += text;
    return plot + end;
}

const std::string kPenDown = repeated(9, "PU10,10;PD20,20,30,30;", "SP0;rest");
const std::string kCommaD = repeated(40, "U1,1,D2,2,", "@rest");
const std::string kNoMark = repeated(9, "U1,1,D2,2;");
const std::string kEtxD = repeated(9, "\3N1,1;\3D2,2,3;");
const std::string kD = repeated(9, "M10,10;D20,20,30;");
const std::string kUncut = std::string(100, 'x') + "\0\0;PD1;"s + std::string(60, ';');
const std::string kForeign = kPenDown + "\xE9;PD;PD;PD;PD;PD;PD;";
constexpr const char *kHpglReply = "0,0,15200,10800\r";

const Scenario kServices[] = {
    {"ghost-4", 4, 0, kSerial, Before::nothing, kPort, kHostsErrorID},
    {"list-plotters", 2, 0},
    {"list-ports", 3, 0},
    {"open-and-write", 5, kOpen},
    {"open-and-write-17008", 5, kOpen, kSerial, Before::nothing, kPort, kORB_NoError, 17008},
    {"open-again", 5, kOpen, kSerial, Before::portOpen},
    {"open-no-path", 5, 0, kSerial, Before::nothing, "", kORB_SerialTools_errorNoBSDIn},
    {"open-foreign-path", 5, 0, kSerial, Before::nothing, kForeignPort},
    {"prepare", 8, kPrepare},
    {"write-usb", 9, 0, kUsb, Before::interfaceOpen},
    {"write-usb-closed", 9, 0, kUsb, Before::nothing, kPort, kORB_ErrorPipe},
    {"close-usb", 10, 0, kUsb, Before::interfaceOpen, kPort, kHostsErrorID},
    {"close-usb-closed", 10, 0, kUsb, Before::nothing, kPort, kHostsErrorID},
    {"query-serial-no-path", 7, 0, kSerial, Before::nothing, "", kORB_SerialTools_errorNoBSDIn},
    {"query-serial-silent", 7, kSerialQuery},
    {"query-usb-silent", 11, kUsbQuery, kUsb, Before::nothing, kPort, kORB_ErrorPipe},
    {"query-usb-open", 11, kUsbQuery, kUsb, Before::interfaceOpen, kPort, kORB_ErrorPipe},
    {"query-usb-other-link", 11, 0, kOther, Before::nothing, kPort, kORB_ErrorInterfaceNotOpened},
};

const struct Query {
    const char *name;
    uint32_t method;
    int32_t emulation;
    uint32_t variant;
    uint16_t vendor;
    std::vector<std::string> replies;
    unsigned moreSeconds = 0;
} kSerialQueries[] =
    {
        {"query-serial", kSerial, 17001, 0, 0, {kHpglReply}},
        {"query-serial-17005", kSerial, 17005, 0, 0, {"% 0 0 330 240 "}},
        {"query-serial-17008", kSerial, 17008, 1, 0, {"a,b,c,d,1,2,3,4\r"}},
        {"query-serial-17009", kSerial, 17009, 1, 0, {"120,340\r", "560,780\r"}, kMorePolls},
        {"query-serial-17009-2", kSerial, 17009, 2, 0, {kHpglReply}},
        {"query-serial-other-link", kOther, 17001, 0, 0, {kHpglReply}},
        {"query-serial-usb", kUsb, 17001, 0, 0x0B75, {kHpglReply}, kInterface},
},
  kUsbQueries[] = {
      {"query-usb", kUsb, 17001, 0, 0x0B75, {kHpglReply}},
      {"query-usb-17002", kUsb, 17002, 0, 0x0F0B, {"", "0,0,1", kHpglReply}},
      {"query-usb-17005", kUsb, 17005, 0, 0x0C30, {"% 0 0 330 240 "}},
      {"query-usb-17008", kUsb, 17008, 3, 0x099F, {"(0,1,2,3,100,200,300,400,\r"}},
      {"query-usb-17009", kUsb, 17009, 1, 0x0B4D, {"120,340\r", "", "560,780\r"}, kPasses},
      {"query-usb-17009-2", kUsb, 17009, 2, 0x0B4D, {kHpglReply}},
      {"query-usb-17010", kUsb, 17010, 2, 0x0B4D, {kHpglReply}},
};

/// Over both links.
const struct {
    const char *name;
    int32_t emulation;
    uint16_t vendor;
    std::string plot;
    uint32_t stopReason = kORB_StopFinished;
} kPrints[] = {
    {"17001", 17001, 0x0B75, kPenDown},
    {"17002", 17002, 0x0F0B, kPenDown},
    {"17008", 17008, 0x099F, kCommaD},
    {"17009", 17009, 0x0B4D, kEtxD},
    {"17011", 17011, 0x0C30, kD},
    {"uncut", 17001, 0x0B75, kUncut},
    {"foreign", 17001, 0x0B75, kForeign, kORB_StopNotASCII},
    {"no-mark", 17036, 0x0B75, kNoMark, kORB_StopNoMarkInTail},
    {"empty", 17001, 0x0B75, {}},
};

constexpr const char *kUnfitJob = "<plist>\n<dict><key>a</key><integer>12x</integer></dict></plist>";
constexpr const char *kArrayJob = "<plist><array><data>AAAA</data><date>2020-01-01T00:00:00Z</date><true/></array></plist>";

const struct {
    const char *name;
    uint32_t method;
    uint32_t stopReason = kORB_StopFinished;
    const char *port = kPort;
    int32_t errorID = kORB_NoError;
    const char *job = "", *terminator = ";";
    Before before = Before::nothing;
} kOtherPrints[] = {
    {"print-no-path", kSerial, kORB_StopNoLink, "", kORB_SerialTools_errorNoBSDIn},
    {"print-foreign-path", kSerial, kORB_StopUnconvertible, kForeignPort},
    {"print-no-terminator", kSerial, kORB_StopJobFile, kPort, kORB_NoError, "", ""},
    {"print-unfit-job", kSerial, kORB_StopJobFile, kPort, kORB_NoError, kUnfitJob},
    {"print-array-job", kSerial, kORB_StopJobFile, kPort, kORB_NoError, kArrayJob},
    {"print-other-link", kOther, kORB_StopNoLink},
    {"print-interface-open", kUsb, kORB_StopFinished, kPort, kORB_NoError, "", ";", Before::interfaceOpen},
    {"print-port-open", kSerial, kORB_StopFinished, kPort, kORB_NoError, "", ";", Before::portOpen},
};

std::vector<Scenario> makeScenarios() {
    std::vector<Scenario> all(std::begin(kServices), std::end(kServices));
    const auto addQuery = [&](uint32_t service, unsigned seconds, const Query &query) {
        all.push_back({query.name, service, seconds + query.moreSeconds, query.method});
        all.back().emulation = query.emulation;
        all.back().variant = query.variant;
        all.back().vendor = query.vendor;
        all.back().replies = query.replies;
    };
    for (const Query &query : kSerialQueries)
        addQuery(kORB_ServiceSerialHardClip, kSerialQuery, query);
    for (const Query &query : kUsbQueries)
        addQuery(kORB_ServiceUSBHardClip, kUsbQuery, query);
    const auto addPrint = [&](std::string name, uint32_t method, const std::string &plot,
                              uint32_t stopReason) -> Scenario & {
        all.push_back({std::move(name), kORB_ServicePrint, method == kSerial ? kSerialPrint : kUsbPrint, method});
        all.back().plot = plot;
        all.back().stopReason = stopReason;
        return all.back();
    };
    for (const auto &print : kPrints) {
        for (const uint32_t method : {kSerial, kUsb}) {
            const std::string name = std::string(method == kUsb ? "print-usb-" : "print-serial-") + print.name;
            Scenario &added = addPrint(name, method, print.plot, print.stopReason);
            added.emulation = print.emulation;
            added.vendor = print.vendor;
        }
    }
    for (const auto &print : kOtherPrints) {
        Scenario &added = addPrint(print.name, print.method, kPenDown, print.stopReason);
        added.port = print.port;
        added.errorID = print.errorID;
        added.job = print.job;
        added.terminator = print.terminator;
        added.before = print.before;
    }
    return all;
}

} // namespace

const std::vector<Scenario> &scenarios() {
    static const std::vector<Scenario> all = makeScenarios();
    return all;
}

} // namespace sweep
