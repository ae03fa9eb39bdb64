#include "support/platform.h"

#include "support/input.h"
#include "usb/interface.h"

#include <cerrno>
#include <cstring>
#include <set>

namespace fuzz {

using stand_in::Effect, stand_in::Ending, stand_in::Seam;

namespace {

constexpr uint16_t kProduct = 7;

// Seconds. A plotter that answers each question of a USB query, and never wholly, is asked twice 99 times, with pauses that
// grow from 2 to 100 seconds; all else is over in minutes.
constexpr uint64_t kLongestCall = 2 * 5049 + 300;

bool isIdentifier(int32_t errorID) {
#define SAME(name, value, fault, text) || errorID == (value)
    return false ORB_ERROR_IDENTIFIERS(SAME);
#undef SAME
}

void requireReports() {
    ORB_JobReport job{};
    job.structSize = sizeof job;
    ORB_hostGetJobReport(&job);
    require(job.fileBytes == job.sentBytes + job.failedBytes + job.withheldBytes, "the job report adds up");
    require(job.sentBytes >= 0 && job.failedBytes >= 0 && job.withheldBytes >= 0, "nothing in the job report is negative");
    require(isIdentifier(job.firstErrorID), "the job report's identifier is in the table");
    ORB_QueryReport query{};
    query.structSize = sizeof query;
    ORB_hostGetQueryReport(&query);
    require(query.requestBytes < sizeof query.request && query.replyBytes < sizeof query.reply, "the query report's sizes");
    require(query.request[query.requestBytes] == 0 && query.reply[query.replyBytes] == 0, "the query report's texts end");
}

} // namespace

Platform::Platform(uint16_t vendor, size_t plotters, size_t ports) : vendor_(vendor) {
    keepsLog = false;
    files.files = {{kJobPath, ""}, {kPlotPath, ""}};
    for (uint32_t plotter = 0; plotter < plotters; ++plotter)
        registry.devices.push_back({vendor, kProduct, kLocation + plotter, {0, 0}});
    for (size_t port = 1; port <= ports; ++port) {
        auto &properties = registry.serialPorts.emplace_back();
        for (const char *key : {"IOTTYDevice", "IOCalloutDevice", "IODialinDevice"})
            properties[key] = key + std::to_string(port);
    }
}

Platform::~Platform() {
    weather = {};
    terminal.openPaths.clear(); // the host closes what it holds
    gORB_interfaceInterface.reset();
    require(registry.outstanding == 0, "everything of the registry is released");
}

void Platform::says(std::string_view replies) {
    while (!replies.empty()) {
        const std::string_view reply = replies.substr(0, replies.find('\xFF'));
        terminal.replies.emplace_back(reply);
        replies.remove_prefix(std::min(reply.size() + 1, replies.size()));
    }
    registry.replies = terminal.replies;
}

Ending Platform::before(Seam seam, const char *call) {
    static constexpr int kErrors[] = {EIO, EAGAIN, EINTR, EBUSY, ENXIO, ENODEV, EACCES, ENOTTY};
    static constexpr IOReturn kCodes[] = {kIOReturnError,       kIOReturnNoDevice,     kIOReturnExclusiveAccess,
                                          kIOReturnAborted,     kIOReturnNotOpen,      kIOUSBPipeStalled,
                                          kIOReturnNoResources, kIOReturnNotResponding};
    if (seam != Seam::terminal && seam != Seam::registry) return {};
    if (!weather.empty()) {
        const auto now = static_cast<unsigned char>(weather.front());
        weather.remove_prefix(1);
        if (now >= 0xC0) return {Effect::fails, seam == Seam::terminal ? kErrors[now % 8] : kCodes[now % 8]};
    }
    if (mostTaken && strcmp(call, "write") == 0) return {Effect::gives, *mostTaken};
    if (strcmp(call, "open") == 0) { // the lowest number that is free, as the system does
        terminal.nextDescriptor = 5;
        while (terminal.openPaths.contains(terminal.nextDescriptor))
            ++terminal.nextDescriptor;
    }
    return {};
}

void Platform::misuse(const std::string &what) { require(false, what.c_str()); }

ORB_ServiceRecord Platform::record() const {
    ORB_ServiceRecord record{};
    record.ORB_serviceNumber = kORB_ServicePrint;
    record.ORB_OutputMethode = kORB_OSX_METHOD_SERIAL;
    record.ORB_portFD = -1;
    record.ORB_USBidVendor = vendor_;
    record.ORB_USBidProduct = kProduct;
    static const CFStringRef port = platform::constantString(kPort);
    record.ORB_CFSTR_bsdIn_VectorixDevice = port;
    platform::internFSRef(kJobPath, &record.ORB_JobFileRef);
    platform::internFSRef(kPlotPath, &record.ORB_PlotFileInRef);
    return record;
}

ORB_ServiceRecord call(Platform &platform, const ORB_ServiceRecord &record) {
    const uint64_t before = platform.clock.slept;
    const ORB_ServiceRecord returned = ORB_getVectorixCS2(record);
    require(platform.clock.slept - before <= kLongestCall, "a call ends in bounded time");
    require(platform.files.openForks == 0, "no file stays open");
    std::set<std::string> ports;
    for (const auto &[fd, path] : platform.terminal.openPaths)
        require(ports.insert(path).second, "a port stays open at most once");
    require(platform.registry.outstanding <= 1, "of the registry at most the interface is kept");
    require(returned.ORB_errorID == record.ORB_errorID || isIdentifier(returned.ORB_errorID), "the identifier's table");
#define KEPT(field) require(memcmp(returned.field, record.field, sizeof record.field) == 0, #field " is kept")
    KEPT(reserved1);
    KEPT(reserved2);
    KEPT(reserved3);
    KEPT(reserved4);
    KEPT(reserved5);
    KEPT(reserved6);
    KEPT(reserved7);
    KEPT(reserved8);
    KEPT(reserved9);
    KEPT(reserved11);
    KEPT(reserved12);
    KEPT(reserved13);
    KEPT(reserved14);
    KEPT(reserved15);
#undef KEPT
    requireReports();
    return returned;
}

bool isClosed(const Platform &platform, const ORB_ServiceRecord &returned) {
    const auto &ports = platform.terminal.openPaths;
    return platform.registry.outstanding == 0 && ports.size() == ports.count(returned.ORB_portFD);
}

void releaseStrings(const ORB_ServiceRecord &record) {
    for (const auto &list : {record.ORB_CFSTR_TTYDevice, record.ORB_CFSTR_CalloutDevice, record.ORB_CFSTR_DialinDevice}) {
        for (int i = 0; i < 6; ++i)
            ORB_hostReleaseString(list[i]);
    }
    for (CFStringRef s : {record.ORB_CFSTR_message, record.ORB_CFSTR_ProjectName, record.ORB_CFSTR_PlotterName,
                          record.ORB_CFSTR_PlotfileTerminator, record.ORB_CFSTR_Tool1, record.ORB_CFSTR_Tool2,
                          record.ORB_CFSTR_Tool3, record.ORB_CFSTR_Tool4, record.ORB_CFSTR_Tool5, record.ORB_CFSTR_Tool6,
                          record.ORB_CFSTR_Tool7, record.ORB_CFSTR_Tool8})
        ORB_hostReleaseString(s);
}

} // namespace fuzz
