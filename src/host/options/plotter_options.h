// The options that say which plotter is meant. They are declared here once, so that every command that talks to a plotter,
// and the profiles, take them under the same names and with the same checks.
#pragma once

#include "host/terminal/command.h"

#include <cstdint>
#include <string>

namespace host {

/// Adds --port, a path or a name that 'ports' prints.
Option addPort(const Command &app, std::string &port);

/// Adds --usb, which may stand alone: the choice is empty then.
Option addUsb(const Command &app, std::string &choice);

/// What a plotter is sent around each plot, in the plot's language; as typed, with escapes.
struct PlotterTexts {
    std::string before, after; ///< empty for none
};

/// Adds --before and --after.
void addTexts(const Command &app, PlotterTexts &texts);

/// The bytes that they mean. Throws Failure (usage).
PlotterTexts bytesOf(const PlotterTexts &texts);

/// Adds --variant, of the emulation.
Option addVariant(const Command &app, uint32_t &variant);

/// Adds --plotter-id, of a USB plotter.
Option addPlotterID(const Command &app, int32_t &plotterID);

} // namespace host
