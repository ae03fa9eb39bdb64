#include "host/profile_options.h"

#include "host/plotter_options.h"
#include "host/usb_target.h"

#include <CLI/CLI.hpp>
#include <algorithm>

namespace host {

const ProfileKey *findProfileKey(std::string_view name) {
    const auto *row = std::find_if(std::begin(kProfileKeys), std::end(kProfileKeys),
                                   [&](const ProfileKey &candidate) { return candidate.name == name; });
    return row == std::end(kProfileKeys) ? nullptr : row;
}

void addProfileOptions(CLI::App &app, ProfileOptions &options) {
    CLI::Option *port = addPort(app, options.port);
    CLI::Option *usb = addUsb(app, options.usbChoice)->excludes(port);
    addPlotterID(app, options.plotterID)->needs(usb);
    addVariant(app, options.variant);
    addLineOptions(app, options.line);
    addJobOptions(app, options.job);
}

void requireFit(const ProfileOptions &options) {
    parseUsbChoice(options.usbChoice);
    jobOf(options.job);
}

} // namespace host
