// A call of the entry, as the fault sweep and the fuzz targets make it: the devices and the files of a scenario, the record
// that a host sends, and what must hold afterwards, whatever failed.
#pragma once

#include "orb/vectorix.h"
#include "stand_in/platform.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace stand_in {

inline constexpr const char *kJobPath = "/job.plist", *kPlotPath = "/plot.plt";
inline constexpr uint32_t kUsb = kORB_OSX_METHOD_USB, kSerial = kORB_OSX_METHOD_SERIAL, kOther = 3;
inline constexpr int32_t kHostsErrorID = 4711; ///< what the host leaves in ORB_errorID: no identifier of the table

/// What the host has done before.
enum class Before : uint8_t { Nothing, InterfaceOpen, PortOpen };

struct Scenario {
    std::string name = {};
    uint32_t service = kORB_ServicePrint;
    uint32_t method = kSerial;
    int32_t emulation = 17001; ///< of the link, of a query, and of the job
    uint16_t vendor = 0x0B75;  ///< of the USB plotter
    uint32_t variant = 0;      ///< of the emulation
    std::vector<std::string> replies = {};
    std::string plot = {};
    uint32_t stopReason = kORB_StopFinished; ///< of a print, when nothing fails
    int32_t errorID = kORB_NoError;          ///< when nothing fails
    std::string job = {};                    ///< another than the usual, if any
    const char *port = "/dev/plotter";       ///< "" for none
    std::string terminator = ";";            ///< in the job; "" for none
    Before before = Before::Nothing;
};

void furnish(Platform &platform, const Scenario &scenario);

/// Every byte that has no meaning holds a pattern, every string field a string of the host's own.
ORB_ServiceRecord recordOf(const Scenario &scenario);

/// Where the record has strings, in bytes: the host's own first, then the port lists, which a scan replaces.
inline constexpr size_t kStrings[] = {448,   476,   23808, 23812, 23816, 23824, 23828, 23832, 23836, 23840, 23844,
                                      23848, 23852, 396,   400,   404,   408,   412,   416,   424,   428,   432,
                                      436,   440,   444,   452,   456,   460,   464,   468,   472};
inline constexpr size_t kHostsStrings = 13;

CFStringRef stringAt(const ORB_ServiceRecord &record, size_t offset);
void releaseStrings(const ORB_ServiceRecord &record);

bool isIdentifier(int32_t value);
template <typename Report> Report lastReport(void (*get)(Report *)) {
    Report report{};
    report.structSize = sizeof report;
    get(&report);
    return report;
}

/// Sentences on what does not hold.
struct Complaints : std::vector<std::string> {
    void require(bool holds, const std::string &what) {
        if (!holds) push_back(what);
    }
};

/// Looks at the record, at what is left open, and at the reports. The clock began at 0.
void requireSound(Complaints &all, const Platform &platform, const ORB_ServiceRecord &sent,
                  const ORB_ServiceRecord &returned, unsigned mostSeconds);

} // namespace stand_in
