// Plot files: the first bytes choose the emulation, the terminator and the link, the rest is the file. What arrives is the
// file's beginning, or the report has a failure; whatever fails, it tells what did arrive.
#include "platform/corefoundation/corefoundation.h"
#include "support/input.h"
#include "support/platform.h"

#include <string>

namespace {

constexpr int32_t kEmulations[] = {17001, 17002, 17005, 17008, 17009, 17010, 17011, 17012,
                                   17022, 17030, 17032, 17036, 17037, 0,     -1};
constexpr const char *kTerminators[] = {";", "\r", "}", "@", ";PU", "PU;PU", "D", ",", "\x03"};

std::string jobOf(int32_t emulation) {
    return "<dict><key>Plotter emulation ID :</key><integer>" + std::to_string(emulation) + "</integer></dict>";
}

std::string startOf(int32_t emulation, bool usb) {
    if (emulation == 17008) return usb ? ";:ECN,EF,P0,A,U,U0,0,K,;:ECN,EF,P0,A,U,U0,0,K," : ";:";
    return emulation == 17002 && usb ? "IN;" : "";
}

/// Stops the job after so many pieces.
int32_t countDown(const ORB_JobReport *, void *pieces) { return --*static_cast<int *>(pieces) == 0; }

/// What arrived is the file without what was withheld: each of its bytes in the file's order.
bool isPartOf(std::string_view arrived, std::string_view plot) {
    size_t at = 0;
    for (char c : arrived) {
        at = plot.find(c, at);
        if (at++ == std::string_view::npos) return false;
    }
    return true;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    fuzz::Input input(data, size);
    fuzz::Platform platform;
    const int32_t emulation = input.pick(kEmulations);
    const std::string_view terminator = input.pick(kTerminators);
    const uint8_t link = input.byte();
    const bool usb = link % 2 != 0, isWhole = link < 0x80;
    int piecesToStop = input.byte();
    if (!isWhole) {
        if (link % 4 < 2) platform.mostTaken = link & 0x7C;
        platform.weather = input.upTo('\n');
    }
    platform.files.files[fuzz::kJobPath] = jobOf(emulation);
    const std::string &plot = platform.files.files[fuzz::kPlotPath] = input.rest();

    ORB_ServiceRecord record = platform.record();
    record.ORB_OutputMethode = usb ? kORB_OSX_METHOD_USB : kORB_OSX_METHOD_SERIAL;
    record.ORB_EmulationID = emulation;
    record.ORB_CFSTR_PlotfileTerminator = platform::constantString(terminator.data());
    ORB_hostSetProgress(countDown, &piecesToStop);
    const ORB_ServiceRecord returned = fuzz::call(platform, record);
    ORB_hostSetProgress(nullptr, nullptr);
    fuzz::releaseStrings(returned);
    fuzz::require(fuzz::isClosed(platform, returned), "a print closes what it opened");
    ORB_JobReport report{};
    report.structSize = sizeof report;
    ORB_hostGetJobReport(&report);
    const std::string arrived = platform.terminal.written + platform.registry.written;
    const std::string start = startOf(emulation, usb);
    const auto sent = static_cast<size_t>(report.sentBytes);
    if (report.firstErrorID != kORB_NoError && report.firstErrorID != kORB_ErrorStopped) {
        const size_t most = start.size() + sent + static_cast<size_t>(report.failedBytes);
        fuzz::require(arrived.size() >= sent && arrived.size() <= most, "what is reported as sent arrived");
        fuzz::require(isPartOf(arrived, start + plot), "what arrived is of the file");
        return 0;
    }
    fuzz::require(report.fileBytes == static_cast<int64_t>(plot.size()), "the plot file is reported whole");
    fuzz::require(report.failedBytes == 0 && report.piecesFailed == 0, "nothing failed");
    fuzz::require(arrived.starts_with(start), "the start-up text comes first");
    fuzz::require(arrived.size() == start.size() + sent, "what is reported as sent arrived, and nothing else");
    const std::string_view drawn = std::string_view(arrived).substr(start.size());
    if (plot.find('\0') != std::string_view::npos) {
        fuzz::require(isPartOf(drawn, plot), "what arrived is of the file");
        return 0;
    }
    fuzz::require(plot.starts_with(drawn), "what arrived is the file's beginning");
    if (report.stopReason != kORB_StopFinished) return 0;
    const bool endsWithAt = emulation == 17008 || emulation == 17030 || emulation == 17036;
    const std::string_view end = endsWithAt ? "@" : terminator;
    fuzz::require(plot.substr(sent).find(end) == std::string_view::npos, "nothing that ends with a mark is withheld");
    return 0;
}
