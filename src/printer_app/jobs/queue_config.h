// What a queue is, as its profile says: the plotter's link, the sheets that it takes and what of them the pen reaches. Read
// from the command's own words ("vectorix profile list --json"), which alone knows the form of profiles.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace printer_app {

/// Paper that clients may ask for. Widths and heights lie as the plotter counts: mostly the long side along x.
struct Media {
    std::string name;     ///< in IPP: "iso_a4_210x297mm"
    std::string sheet;    ///< of the command: "a4", or "WxH"
    double width, height; ///< mm, as it lies in the plotter
};

struct Area {
    double left, lower, right, upper; ///< mm, as the plotter counts
};

struct QueueConfig {
    std::string name;         ///< of the profile
    std::string port;         ///< serial port; empty for USB
    std::string usb;          ///< which one on USB: "0b75:0402"; empty for the only one
    std::optional<Area> area; ///< what the pen reaches, from the plotter's own limits
    bool confirms = true;     ///< each sheet waits for a person
    std::vector<Media> media; ///< the usual one first
    double alongX, alongY;    ///< margins in mm, of the usual one: (paper - what the pen reaches) / 2
};

/// Reads what the command lists. Throws std::exception for what is none of its lists.
std::vector<QueueConfig> queuesFrom(const std::string &profileList);

} // namespace printer_app
