#include "sweep/bench.h"

#include "support/job.h"

#include <cstring>

namespace sweep {

namespace {

constexpr uint16_t kProduct = 7;
constexpr uint32_t kLocation = 0x01100000;

std::string jobOf(const Scenario &scenario) {
    if (!scenario.job.empty()) return scenario.job;
    jobs::Keys keys = {{"Project name :", jobs::string("a project whose name needs memory of its own")},
                       {"Plotter name :", jobs::string("a plotter")},
                       {"ORB_UseTools :", jobs::integer(1)},
                       {"Plotter ID :", jobs::integer(20596)},
                       {"X Tile :", "<real>2.5</real>"},
                       {"Plotter emulation ID :", jobs::integer(scenario.emulation)},
                       {"ORB_CFSTR_Tool1 :", jobs::string("EC1,P1,")},
                       {"ORB_CFSTR_Tool8 :", jobs::string("EC8,P8,")}};
    if (*scenario.terminator != '\0') keys.push_back({"Plotfile terminator :", jobs::string(scenario.terminator)});
    return jobs::jobXML(keys);
}

} // namespace

CFStringRef stringAt(const ORB_ServiceRecord &record, size_t offset) {
    CFStringRef s;
    memcpy(&s, reinterpret_cast<const char *>(&record) + offset, sizeof s);
    return s;
}

std::vector<size_t> portStrings() {
    std::vector<size_t> all;
    for (size_t list : kPortLists)
        for (size_t slot = 0; slot < 6; ++slot)
            all.push_back(list + slot * sizeof(CFStringRef));
    return all;
}

void furnish(scripted::Platform &platform, const Scenario &scenario) {
    platform.terminal.logWrites = false;
    platform.terminal.replies.assign(scenario.replies.begin(), scenario.replies.end());
    platform.registry.replies.assign(scenario.replies.begin(), scenario.replies.end());
    platform.registry.devices = {{0x1234, kProduct, 0x01000000},
                                 {scenario.vendor, kProduct, kLocation, {1, 2}},
                                 {scenario.vendor, kProduct, kLocation + 1}};
    for (int port = 0; port < 8; ++port) { // one more than is counted
        const std::string name = "ttyUSB" + std::to_string(port), path = port == 1 ? "/dev/h\xC3\xA9" : "/dev/" + name;
        platform.registry.serialPorts.push_back(
            {{"IOTTYDevice", name}, {"IOCalloutDevice", path}, {"IODialinDevice", path}});
    }
}

ORB_ServiceRecord makeRecord(scripted::Platform &platform, const Scenario &scenario) {
    const ORB_ServiceRecord job = jobs::printRecord(platform, jobOf(scenario), scenario.plot);
    ORB_ServiceRecord record;
    auto *bytes = reinterpret_cast<unsigned char *>(&record);
    for (size_t i = 0; i < sizeof record; ++i)
        bytes[i] = static_cast<unsigned char>(i * 31 + 7);

    const auto setString = [&](size_t offset, const char *text) {
        const CFStringRef made = *text == '\0' ? 0 : ORB_hostCreateString(text);
        memcpy(bytes + offset, &made, sizeof made);
    };
    for (size_t offset : kStrings) {
        const bool port = offset == offsetof(ORB_ServiceRecord, ORB_CFSTR_bsdIn_VectorixDevice);
        const bool terminator = offset == offsetof(ORB_ServiceRecord, ORB_CFSTR_PlotfileTerminator);
        setString(offset, port ? scenario.port : terminator ? scenario.terminator : "a string of the host");
    }
    for (size_t offset : portStrings())
        setString(offset, "a port of an earlier scan");

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
    record.ORB_USBdeviceOpen = 0;
    record.ORB_interfaceOpen = 0;
    record.ORB_USB_PIPEOUT = 1;
    record.ORB_USB_PIPEIN = 2;
    record.ORB_JobFileRef = job.ORB_JobFileRef;
    record.ORB_PlotFileInRef = job.ORB_PlotFileInRef;
    strcpy(record.ORB_writeBuffer, "IN;SP1;");
    return record;
}

} // namespace sweep
