// The options that say which plotter, for every command that talks to one.
#pragma once

#include <cstdint>
#include <string>

namespace CLI {
class App;
class Option;
class Validator;
} // namespace CLI

namespace host {

/// Accepts whole numbers from low to high, and says so of anything else.
CLI::Validator wholeNumbers(int low, int high);

/// Adds --port, a path or a name that 'ports' prints.
CLI::Option *addPort(CLI::App &app, std::string &port);

/// Adds --usb, which may stand alone: the choice is empty then.
CLI::Option *addUsb(CLI::App &app, std::string &choice);

/// Adds --variant, of the emulation.
CLI::Option *addVariant(CLI::App &app, uint32_t &variant);

/// Adds --plotter-id, of a USB plotter.
CLI::Option *addPlotterID(CLI::App &app, int32_t &plotterID);

} // namespace host
