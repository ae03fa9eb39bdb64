#include "host/options/plotter_options.h"

#include "host/job/job_options.h"

#include <climits>
#include <unistd.h>

namespace host {

namespace {

constexpr int kMostVariants = 8; // of the language that has most

/// A name that 'ports' prints, such as ttyUSB0, is that of a node below /dev, unless there is something of that name here.
void pathOfName(std::string &port) {
    const std::string below = "/dev/" + port;
    const bool isName = !port.empty() && port.find('/') == std::string::npos;
    if (isName && access(port.c_str(), F_OK) != 0 && access(below.c_str(), F_OK) == 0) port = below;
}

} // namespace

Option addPort(const Command &app, std::string &port) {
    return app.option("--port", port, "Serial port of the plotter, such as /dev/ttyUSB0 or ttyUSB0")
        .rewrite(pathOfName)
        .valueName("DEVICE");
}

Option addUsb(const Command &app, std::string &choice) {
    return app.option("--usb", choice, "USB plotter: the only one, or the one that 'plotters' shows so")
        .valueName("[V:P[@LOCATION]]")
        .mayStandAlone();
}

void addTexts(const Command &app, PlotterTexts &texts) {
    app.option("--before", texts.before, "Sent with each plot behind its initialisation, such as VS10;FS3;")
        .valueName("TEXT");
    app.option("--after", texts.after, "Sent at the end of each plot, such as PG;").valueName("TEXT");
}

PlotterTexts bytesOf(const PlotterTexts &texts) {
    return {plotterText(texts.before, "--before"), plotterText(texts.after, "--after")};
}

Option addVariant(const Command &app, uint32_t &variant) {
    return app.option("--variant", variant, "Variant of the emulation, 1 to 8 (1)").between(1, kMostVariants).valueName("N");
}

Option addPlotterID(const Command &app, int32_t &plotterID) {
    return app.option("--plotter-id", plotterID, "Identifier of a USB plotter, for the choice of its pipes (0)")
        .between(0, INT_MAX)
        .valueName("N");
}

} // namespace host
