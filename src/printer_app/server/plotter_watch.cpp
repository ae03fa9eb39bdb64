#include "printer_app/server/plotter_watch.h"

#include "host/devices/usb_devices.h"
#include "printer_app/children/child.h"

#include <algorithm>
#include <nlohmann/json.hpp>
#include <sys/stat.h>

namespace printer_app {

using nlohmann::json;

namespace {

constexpr auto kDoctorLimit = std::chrono::seconds(20);

std::string nodeOf(const QueueConfig &queue) { return queue.port[0] == '/' ? queue.port : "/dev/" + queue.port; }

bool isThere(const QueueConfig &queue) {
    if (!queue.port.empty()) {
        struct stat status;
        return stat(nodeOf(queue).c_str(), &status) == 0 && S_ISCHR(status.st_mode);
    }
    return std::ranges::any_of(host::usbDevices(), [&](const host::UsbDevice &device) {
        return device.isPlotter && device.id().starts_with(queue.usb);
    });
}

} // namespace

void watchPlotter(Queue &queue) {
    const bool is = isThere(queue.config);
    if (queue.isThere.exchange(is) == is) return;
    std::shared_lock alive(queue.isAlive);
    if (pappl_printer_t *printer = queue.printer)
        papplPrinterSetReasons(printer, is ? PAPPL_PREASON_NONE : PAPPL_PREASON_OFFLINE,
                               is ? PAPPL_PREASON_OFFLINE : PAPPL_PREASON_NONE);
}

std::vector<FindingView> askDoctor(const std::string &command, const QueueConfig &queue) try {
    std::vector<std::string> words{command, "doctor", "--json"};
    if (queue.port.empty())
        words.emplace_back(queue.usb.empty() ? "--usb" : "--usb=" + queue.usb);
    else
        words.insert(words.end(), {"--port", queue.port});
    const json report = json::parse(runToEnd(words, kDoctorLimit).output, nullptr, false);
    std::vector<FindingView> findings;
    if (report.is_discarded() || !report.contains("links")) return findings;
    for (const json &link : report["links"])
        for (const json &finding : link.value("findings", json::array()))
            findings.push_back({finding.value("text", ""), finding.value("command", ""), finding.value("then", ""),
                                finding.value("severity", "") == "in the way"});
    return findings;
} catch (const std::exception &) {
    return {}; // no process can be started now, or the command speaks otherwise; it is asked again
}

} // namespace printer_app
