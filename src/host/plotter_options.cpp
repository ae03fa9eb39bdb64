#include "host/plotter_options.h"

#include <CLI/CLI.hpp>
#include <unistd.h>

namespace host {

namespace {

constexpr uint32_t kMostVariants = 8; // of the language that has most

/// A name that 'ports' prints, such as ttyUSB0, is that of a node below /dev, unless there is something of that name here.
std::string pathOfName(std::string &port) {
    const std::string below = "/dev/" + port;
    const bool isName = !port.empty() && port.find('/') == std::string::npos;
    if (isName && access(port.c_str(), F_OK) != 0 && access(below.c_str(), F_OK) == 0) port = below;
    return {};
}

} // namespace

CLI::Option *addPort(CLI::App &app, std::string &port) {
    return app.add_option("--port", port, "Serial port of the plotter, such as /dev/ttyUSB0 or ttyUSB0")
        ->transform(CLI::Validator(pathOfName, ""))
        ->type_name("DEVICE");
}

CLI::Option *addUsb(CLI::App &app, std::string &choice) {
    return app.add_option("--usb", choice, "USB plotter: the only one, or the one that 'plotters' shows so")
        ->type_name("[V:P[@LOCATION]]")
        ->expected(0, 1);
}

CLI::Option *addVariant(CLI::App &app, uint32_t &variant) {
    return app.add_option("--variant", variant, "Variant of the emulation, 1 to 8 (1)")
        ->check(CLI::Range(1U, kMostVariants).description(""))
        ->type_name("N");
}

CLI::Option *addPlotterID(CLI::App &app, int32_t &plotterID) {
    return app.add_option("--plotter-id", plotterID, "Identifier of a USB plotter, for the choice of its pipes (0)")
        ->type_name("N");
}

} // namespace host
