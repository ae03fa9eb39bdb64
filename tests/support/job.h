// Jobs for tests: a job file made of keys, a plot file, and a record that prints them over a scripted serial line. Test
// files of several folders print: what they have in common is here, so that each shows only what its case is about.
#pragma once

#include "orb/vectorix.h"
#include "support/scripted.h"

#include <gtest/gtest.h>
#include <sstream>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace jobs {

inline constexpr const char *kJobPath = "/job.plist";
inline constexpr const char *kPlotPath = "/plot.plt";
inline constexpr const char *kPort = "/dev/plotter";

/// XML of a value: `"text"` makes a string, anything else stands for itself.
using Keys = std::vector<std::pair<std::string, std::string>>;

inline std::string plist(std::string_view body) {
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\">" + std::string(body) + "</plist>\n";
}

inline std::string jobXML(const Keys &keys) {
    std::string body = "<dict>";
    for (const auto &[key, value] : keys)
        body.append("<key>").append(key).append("</key>").append(value);
    return plist(body + "</dict>");
}

inline std::string integer(long number) { return "<integer>" + std::to_string(number) + "</integer>"; }
inline std::string string(std::string_view text) { return "<string>" + std::string(text) + "</string>"; }

/// A job that names an emulation and a terminator (none when empty).
inline std::string simpleJob(int emulation, std::string_view terminator) {
    Keys keys = {{"Plotter emulation ID :", integer(emulation)}};
    if (!terminator.empty()) keys.push_back({"Plotfile terminator :", string(terminator)});
    return jobXML(keys);
}

/// A record for service 17 over kPort, with the job and the plot put into the scripted files.
inline ORB_ServiceRecord printRecord(scripted::Platform &platform, std::string job, std::string plot) {
    platform.files.files[kJobPath] = std::move(job);
    platform.files.files[kPlotPath] = std::move(plot);
    ORB_ServiceRecord record{};
    record.ORB_serviceNumber = kORB_ServicePrint;
    record.ORB_OutputMethode = kORB_OSX_METHOD_SERIAL;
    record.ORB_baudRate = 9600;
    record.ORB_dataBits = kORB_DataBits8;
    record.ORB_portFD = -1;
    platform::internFSRef(kJobPath, &record.ORB_JobFileRef);
    platform::internFSRef(kPlotPath, &record.ORB_PlotFileInRef);
    static const CFStringRef port = platform::constantString(kPort);
    record.ORB_CFSTR_bsdIn_VectorixDevice = port;
    return record;
}

inline ORB_JobReport lastReport() {
    ORB_JobReport report{};
    report.structSize = sizeof report;
    ORB_hostGetJobReport(&report);
    return report;
}

/// The last report, whole: "4, 27010/-1 at -1; 3+0+4, 1+0, 0" is the reason for the stop and the first failure, if there was
/// one; the bytes that were sent, failed and were withheld; the pieces that were sent and failed; the chunks without a cut.
inline std::string reportText() {
    const ORB_JobReport r = lastReport();
    EXPECT_EQ(r.fileBytes, r.sentBytes + r.failedBytes + r.withheldBytes);
    std::ostringstream text;
    text << r.stopReason;
    if (r.firstErrorID != kORB_NoError || r.firstStatus != 0 || r.firstErrorOffset != -1)
        text << ", " << r.firstErrorID << "/" << r.firstStatus << " at " << r.firstErrorOffset;
    text << "; " << r.sentBytes << "+" << r.failedBytes << "+" << r.withheldBytes << ", " << r.piecesSent << "+"
         << r.piecesFailed << ", " << r.uncutChunks;
    return text.str();
}

} // namespace jobs
