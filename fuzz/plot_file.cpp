// Plot files, with every emulation, link and terminator, with short writes, failures and stops. What arrives is the file's
// beginning, or the report has a failure; whatever fails, it tells what did arrive.
#include "support/platform.h"

namespace {

constexpr int32_t kEmulations[] = {17001, 17002, 17005, 17008, 17009, 17010, 17011, 17012,
                                   17022, 17030, 17032, 17036, 17037, 0,     -1};
constexpr const char *kTerminators[] = {";", "\r", "}", "@", ";PU", "PU;PU", "D", ",", "\x03"};

std::string startOf(int32_t emulation, bool usb) {
    if (emulation == 17008) return usb ? ";:ECN,EF,P0,A,U,U0,0,K,;:ECN,EF,P0,A,U,U0,0,K," : ";:";
    return emulation == 17002 && usb ? "IN;" : "";
}

/// Stops the job after so many pieces.
int32_t countDown(const ORB_JobReport *, void *pieces) { return --*static_cast<int *>(pieces) == 0; }

/// What arrived is the file without what was withheld: each of its bytes in the file's order.
bool isPartOf(std::string_view arrived, std::string_view plot) {
    size_t matched = 0;
    for (char c : plot)
        matched += matched < arrived.size() && arrived[matched] == c ? 1 : 0;
    return matched == arrived.size();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    FuzzedDataProvider input(data, size);
    fuzz::Scenario scenario{.emulation = input.PickValueInArray(kEmulations)};
    scenario.terminator = input.PickValueInArray(kTerminators);
    const bool usb = input.ConsumeBool();
    if (usb) scenario.method = fuzz::kUsb;
    int piecesToStop = input.ConsumeIntegral<uint8_t>();
    const int mostTaken = input.ConsumeIntegral<uint8_t>() - 1;
    const std::string weather = input.ConsumeBytesAsString(input.ConsumeIntegral<uint8_t>());
    const std::string &plot = scenario.plot = input.ConsumeRemainingBytesAsString();
    scenario.job =
        "<dict><key>Plotter emulation ID :</key><integer>" + std::to_string(scenario.emulation) + "</integer></dict>";

    fuzz::Platform platform(scenario);
    platform.weather = weather;
    platform.mostTaken = mostTaken;
    ORB_hostSetProgress(countDown, &piecesToStop);
    const ORB_ServiceRecord returned = platform.call(recordOf(scenario));
    ORB_hostSetProgress(nullptr, nullptr);
    fuzz::require(platform.isClosed(returned), "a print closes what it opened");
    const auto report = fuzz::lastReport(ORB_hostGetJobReport);
    const std::string arrived = platform.terminal.written + platform.registry.written;
    const std::string start = startOf(scenario.emulation, usb);
    const auto sent = static_cast<size_t>(report.sentBytes);
    if (report.firstErrorID != kORB_NoError && report.firstErrorID != kORB_ErrorStopped) {
        const size_t most = start.size() + sent + static_cast<size_t>(report.failedBytes);
        fuzz::require(arrived.size() <= most && isPartOf(arrived, start + plot), "what arrived is of the file");
        return 0;
    }
    fuzz::require(report.fileBytes == static_cast<int64_t>(plot.size()), "the plot file is reported whole");
    fuzz::require(arrived.starts_with(start), "the start-up text comes first");
    fuzz::require(arrived.size() == start.size() + sent, "what is reported as sent arrived, and nothing else");
    const bool hasNul = plot.find('\0') != std::string::npos;
    const std::string drawn = arrived.substr(start.size());
    fuzz::require(hasNul ? isPartOf(drawn, plot) : plot.starts_with(drawn), "what arrived is the file's beginning");
    if (hasNul || report.stopReason != kORB_StopFinished) return 0;
    const bool endsWithAt = scenario.emulation == 17008 || scenario.emulation == 17030 || scenario.emulation == 17036;
    const std::string end = endsWithAt ? "@" : scenario.terminator;
    fuzz::require(plot.find(end, sent) == std::string::npos, "nothing that ends with a mark is withheld");
    return 0;
}
