#include "stand_in/scenario.h"

#include "usb/interface.h"

#include <cmath>
#include <cstring>
#include <set>

namespace stand_in {
namespace {

constexpr uint16_t kProduct = 7;
constexpr uint32_t kLocation = 0x01100000;

std::string jobOf(const Scenario &scenario) {
    const std::string &end = scenario.terminator;
    return "<plist><dict><key>Project name :</key><string>a project whose name needs memory of its own</string>"
           "<key>ORB_UseTools :</key><integer>1</integer><key>X Tile :</key><real>2.5</real>"
           "<key>ORB_CFSTR_Tool1 :</key><string>EC1,P1,</string><key>ORB_CFSTR_Tool8 :</key><string>EC8,P8,</string>"
           "<key>Plotter emulation ID :</key><integer>" +
           std::to_string(scenario.emulation) + "</integer>" +
           (end.empty() ? end : "<key>Plotfile terminator :</key><string>" + end + "</string>") + "</dict></plist>";
}

// By the record's layout, in bytes, with where each begins: what is reserved, of the plotters in the table too, and what is
// only the host's to write.
constexpr std::pair<size_t, size_t> kKept[] = {
    {4, 4},       {12, 8},       {20, 4},      {36, 24},      {62, 6},     {356, 20},    {384, 12},     {420, 4},
    {448, 4},     {480, 8},      {492, 8},     {504, 9},      {514, 2110}, {2628, 8},    {2640, 9},     {2650, 2110},
    {4764, 8},    {4776, 9},     {4786, 2110}, {6900, 8},     {6912, 9},   {6922, 2110}, {9036, 8},     {9048, 9},
    {9058, 2110}, {11172, 8},    {11184, 9},   {11194, 2110}, {13308, 8},  {13320, 9},   {13330, 2110}, {15440, 6620},
    {22060, 80},  {22140, 1424}, {23564, 80},  {23644, 84},   {23856, 8},  {23942, 22}};

void requireReports(Complaints &all) {
    const ORB_JobReport job = lastReport(ORB_hostGetJobReport);
    all.require(job.fileBytes == job.sentBytes + job.failedBytes + job.withheldBytes, "file is sent + failed + withheld");
    all.require(job.sentBytes >= 0 && job.failedBytes >= 0 && job.withheldBytes >= 0, "no less than nothing is reported");
    all.require(isIdentifier(job.firstErrorID) && job.stopReason <= kORB_StopUnconvertible, "a failure and a reason");
    all.require(job.firstErrorOffset >= -1 && job.firstErrorOffset <= job.fileBytes, "the failure is in the file");
    const bool isEnd = job.stopReason == kORB_StopFinished || job.stopReason == kORB_StopNoMarkInTail;
    const bool isWhole = job.failedBytes == 0 && job.piecesFailed == 0 && isEnd;
    all.require(isWhole || job.firstErrorID != kORB_NoError, "what failed has a failure");
    const ORB_QueryReport query = lastReport(ORB_hostGetQueryReport);
    all.require(isIdentifier(query.errorID), "the query's identifier");
    all.require(strnlen(query.request, sizeof query.request) == query.requestBytes, "the request's size");
    all.require(query.replyBytes < sizeof query.reply && query.reply[query.replyBytes] == 0, "the reply's size");
}

} // namespace

void furnish(Platform &platform, const Scenario &scenario) {
    platform.files.files = {{kJobPath, scenario.job.empty() ? jobOf(scenario) : scenario.job}, {kPlotPath, scenario.plot}};
    platform.terminal.replies.assign(scenario.replies.begin(), scenario.replies.end());
    platform.registry.replies = platform.terminal.replies;
    platform.registry.devices = {{scenario.vendor, kProduct, kLocation + 1},
                                 {scenario.vendor, kProduct, kLocation, {1, 2}},
                                 {0x1234, kProduct, 0x01000000}};
    for (int port = 0; port < 8; ++port) { // one more than is counted
        const std::string name = "ttyUSB" + std::to_string(port), path = port == 1 ? "/dev/h\xC3\xA9" : "/dev/" + name;
        platform.registry.serialPorts.push_back(
            {{"IOTTYDevice", name}, {"IOCalloutDevice", path}, {"IODialinDevice", path}});
    }
}

ORB_ServiceRecord recordOf(const Scenario &scenario) {
    ORB_ServiceRecord record;
    auto *bytes = reinterpret_cast<unsigned char *>(&record);
    for (size_t i = 0; i < sizeof record; ++i)
        bytes[i] = static_cast<unsigned char>(i * 31 + 7);
    for (size_t offset : kStrings) {
        const bool isPort = offset == offsetof(ORB_ServiceRecord, ORB_CFSTR_bsdIn_VectorixDevice);
        const bool isTerminator = offset == offsetof(ORB_ServiceRecord, ORB_CFSTR_PlotfileTerminator);
        const std::string text = isPort ? scenario.port : isTerminator ? scenario.terminator : "a string of the host";
        const CFStringRef made = text.empty() ? 0 : ORB_hostCreateString(text.c_str());
        memcpy(bytes + offset, &made, sizeof made);
    }
    record.ORB_serviceNumber = scenario.service;
    record.ORB_errorID = kHostsErrorID;
    record.ORB_OutputMethode = scenario.method;
    record.ORB_EmulationID = record.ORB_queryEmulationID = scenario.emulation;
    record.ORB_emulationVariant = scenario.variant;
    record.ORB_portFD = -1;
    record.ORB_USBplotterIndex = 1;
    record.ORB_USBidVendor = scenario.vendor;
    record.ORB_USBidProduct = kProduct;
    record.ORB_USBlocationID = kLocation;
    record.ORB_USBdeviceOpen = record.ORB_interfaceOpen = 0;
    record.ORB_USB_PIPEOUT = 1;
    record.ORB_USB_PIPEIN = 2;
    record.ORB_UseTools = 0;
    platform::internFSRef(kJobPath, &record.ORB_JobFileRef);
    platform::internFSRef(kPlotPath, &record.ORB_PlotFileInRef);
    strcpy(record.ORB_writeBuffer, "IN;SP1;");
    return record;
}

CFStringRef stringAt(const ORB_ServiceRecord &record, size_t offset) {
    CFStringRef s;
    memcpy(&s, reinterpret_cast<const char *>(&record) + offset, sizeof s);
    return s;
}

void releaseStrings(const ORB_ServiceRecord &record) {
    for (size_t offset : kStrings)
        ORB_hostReleaseString(stringAt(record, offset));
}

bool isIdentifier(int32_t value) {
#define SAME(name, number, fault, text) || value == (number)
    return false ORB_ERROR_IDENTIFIERS(SAME);
#undef SAME
}

void requireSound(Complaints &all, const Platform &platform, const ORB_ServiceRecord &sent,
                  const ORB_ServiceRecord &returned, unsigned mostSeconds) {
    const uint32_t service = sent.ORB_serviceNumber;
    static const std::set<uint32_t> kAnswering = {1, 2, 3, 5, 6, 7, 8, 9, 11, 17}; // with an identifier, whatever comes
    const bool isAsBefore = returned.ORB_errorID == sent.ORB_errorID && !kAnswering.contains(service);
    all.require(isIdentifier(returned.ORB_errorID) || isAsBefore, "an identifier of the table");
    const auto *before = reinterpret_cast<const char *>(&sent), *now = reinterpret_cast<const char *>(&returned);
    for (const auto &[offset, size] : kKept)
        all.require(memcmp(before + offset, now + offset, size) == 0, "changed bytes behind " + std::to_string(offset));
    requireReports(all);
    const bool isQuery = service == kORB_ServiceSerialHardClip || service == kORB_ServiceUSBHardClip;
    for (double limit : {returned.ORB_HARDC_1, returned.ORB_HARDC_2, returned.ORB_HARDC_3, returned.ORB_HARDC_4})
        all.require(!isQuery || (std::isfinite(limit) && limit >= -1),
                    "limits are numbers, or -1 for one that did not come");
    const size_t arrived = platform.terminal.written.size() + platform.registry.written.size();
    const auto sentBytes = static_cast<size_t>(lastReport(ORB_hostGetJobReport).sentBytes);
    all.require(service != kORB_ServicePrint || sentBytes <= arrived, "what is reported as sent arrived");
    all.require(platform.clock.slept <= mostSeconds, "it ends after its retries");
    all.require(platform.files.openForks.empty(), "no file stays open");
    all.require(platform.registry.outstanding == (gORB_interfaceInterface ? 1 : 0), "all but the interface is released");
    std::set<std::string> ports;
    for (const auto &[fd, path] : platform.terminal.openPaths)
        all.require(fd == 0 || ports.insert(path).second, "a port is open once"); // 0 is none
}

} // namespace stand_in
