#include "printer_app/jobs/queue_config.h"

#include "virtual_plotter/drawing/sheet.h"

#include <algorithm>
#include <fmt/format.h>
#include <nlohmann/json.hpp>

namespace printer_app {

using nlohmann::json;
using virtual_plotter::Sheet;

namespace {

/// The names by which printing clients know the usual sheets (PWG 5101.1).
constexpr struct {
    const char *sheet, *name;
} kNames[] = {{"a4", "iso_a4_210x297mm"},       {"letter", "na_letter_8.5x11in"}, {"a3", "iso_a3_297x420mm"},
              {"tabloid", "na_ledger_11x17in"}, {"a2", "iso_a2_420x594mm"},       {"a1", "iso_a1_594x841mm"},
              {"a0", "iso_a0_841x1189mm"}};

Sheet sheetNamed(const std::string &name) {
    std::string error;
    return virtual_plotter::parseSheet(name, error).value();
}

/// A sheet without a name of its own; clients think of paper as standing.
Media customMedia(double width, double height) {
    return {fmt::format("custom_plotter_{:g}x{:g}mm", std::min(width, height), std::max(width, height)),
            fmt::format("{:g}x{:g}", width, height), width, height};
}

std::vector<Media> allMedia(bool stands) {
    std::vector<Media> media;
    for (const auto &row : kNames) {
        const Sheet sheet = sheetNamed(row.sheet);
        media.push_back(stands ? Media{row.name, std::string(row.sheet) + "-portrait", sheet.height, sheet.width}
                               : Media{row.name, row.sheet, sheet.width, sheet.height});
    }
    return media;
}

/// The sheets of a plotter that said what its pen reaches: the smallest that holds it, and those that lie within that.
std::vector<Media> mediaAround(const Area &area) {
    const double width = area.right - area.left, height = area.upper - area.lower;
    std::vector<Media> media = allMedia(height > width);
    const auto usual = std::ranges::find_if(media, [&](const Media &m) { return m.width >= width && m.height >= height; });
    std::vector<Media> result{usual == media.end() ? customMedia(width, height) : *usual};
    std::ranges::copy_if(media, std::back_inserter(result), [&](const Media &m) {
        return m.name != result[0].name && m.width <= result[0].width && m.height <= result[0].height;
    });
    return result;
}

/// What the profile calls the sheet that is mostly loaded.
void putFirst(std::vector<Media> &media, const std::string &sheet) {
    std::string error;
    const auto size = virtual_plotter::parseSheet(sheet, error);
    if (!size) return;
    const auto found =
        std::ranges::find_if(media, [&](const Media &m) { return m.width == size->width && m.height == size->height; });
    if (found != media.end())
        std::rotate(media.begin(), found, found + 1);
    else
        media.insert(media.begin(), customMedia(size->width, size->height));
}

/// "usb" is true for the only plotter.
std::string usbIn(const json &settings) {
    const auto usb = settings.find("usb");
    return usb != settings.end() && usb->is_string() ? usb->get<std::string>() : "";
}

QueueConfig queueFrom(const json &profile) {
    const json &settings = profile.at("settings");
    QueueConfig queue{.name = profile.at("name"),
                      .port = settings.value("port", ""),
                      .usb = usbIn(settings),
                      .area = {},
                      .confirms = settings.value("confirm", true),
                      .media = allMedia(false),
                      .alongX = 0,
                      .alongY = 0};
    std::string error;
    if (const auto area = virtual_plotter::parseArea(settings.value("area", ""), error)) {
        const auto &[lower, upper] = area->hardClip;
        queue.area = Area{lower.x / virtual_plotter::kUnitsPerMillimetre, lower.y / virtual_plotter::kUnitsPerMillimetre,
                          upper.x / virtual_plotter::kUnitsPerMillimetre, upper.y / virtual_plotter::kUnitsPerMillimetre};
        queue.media = mediaAround(*queue.area);
    }
    putFirst(queue.media, settings.value("sheet", ""));
    const Media &usual = queue.media.front();
    const Sheet sheet =
        queue.area ? *virtual_plotter::parseArea(settings.value("area", ""), error) : sheetNamed(usual.sheet);
    const auto &[lower, upper] = sheet.hardClip;
    queue.alongX = std::max(0.0, (usual.width - (upper.x - lower.x) / virtual_plotter::kUnitsPerMillimetre) / 2);
    queue.alongY = std::max(0.0, (usual.height - (upper.y - lower.y) / virtual_plotter::kUnitsPerMillimetre) / 2);
    return queue;
}

} // namespace

std::vector<QueueConfig> queuesFrom(const std::string &profileList) {
    std::vector<QueueConfig> queues;
    const json list = json::parse(profileList);
    for (const json &profile : list.at("profiles"))
        if (profile.contains("settings")) queues.push_back(queueFrom(profile)); // else it is unfit, which the command said
    return queues;
}

} // namespace printer_app
