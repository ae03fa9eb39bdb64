#include "host/options/profile_keys.h"

#include "host/plugin/usb_target.h"

#include <algorithm>

namespace host {

const ProfileKey *findProfileKey(std::string_view name) {
    const auto *row = std::find_if(std::begin(kProfileKeys), std::end(kProfileKeys),
                                   [&](const ProfileKey &candidate) { return candidate.name == name; });
    return row == std::end(kProfileKeys) ? nullptr : row;
}

void addProfileOptions(const Command &app, ProfileOptions &options) {
    Option port = addPort(app, options.port);
    Option usb = addUsb(app, options.usbChoice).excludes(port);
    addPlotterID(app, options.plotterID).needs(usb);
    addVariant(app, options.variant);
    addLineOptions(app, options.line);
    addJobOptions(app, options.job);
    addTexts(app, options.texts);
    addArea(app, options.drawing.area);
    addPensHeld(app, options.pensHeld);
    addSheet(app, options.drawing, "Sheet that is mostly drawn on: a0 to a4, letter, tabloid, or WxH in mm");
    app.flag("--no-confirm", options.isUnconfirmed,
             "Of a print queue: plot without a person who says that paper and pens are there");
}

void requireFitProfile(const ProfileOptions &options) {
    parseUsbChoice(options.usbChoice);
    jobOf(options.job);
    bytesOf(options.texts);
}

} // namespace host
