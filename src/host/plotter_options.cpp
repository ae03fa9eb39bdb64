#include "host/plotter_options.h"

#include <CLI/CLI.hpp>
#include <climits>
#include <fmt/format.h>
#include <unistd.h>

namespace host {

namespace {

constexpr int kMostVariants = 8; // of the language that has most

/// A name that 'ports' prints, such as ttyUSB0, is that of a node below /dev, unless there is something of that name here.
std::string pathOfName(std::string &port) {
    const std::string below = "/dev/" + port;
    const bool isName = !port.empty() && port.find('/') == std::string::npos;
    if (isName && access(port.c_str(), F_OK) != 0 && access(below.c_str(), F_OK) == 0) port = below;
    return {};
}

} // namespace

CLI::Validator wholeNumbers(int low, int high) {
    return CLI::Validator(
        [low, high](const std::string &text) {
            int64_t number = 0;
            if (CLI::detail::lexical_cast(text, number) && number >= low && number <= high) return std::string();
            return fmt::format("{} is no whole number from {} to {}", text, low, high);
        },
        "");
}

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
        ->check(wholeNumbers(1, kMostVariants))
        ->type_name("N");
}

CLI::Option *addPlotterID(CLI::App &app, int32_t &plotterID) {
    return app.add_option("--plotter-id", plotterID, "Identifier of a USB plotter, for the choice of its pipes (0)")
        ->check(wholeNumbers(0, INT_MAX))
        ->type_name("N");
}

} // namespace host
