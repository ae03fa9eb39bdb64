// The serial line's settings: their options, their codes in the service record, and what to tell about them. The options
// refuse every rate that the plug-in does not set, because it would silently take 9600 bit/s instead, and the plotter would
// receive nothing that it can read.
#pragma once

#include "host/terminal/command.h"

#include <orb/vectorix.h>
#include <string>

namespace host {

struct LineSettings {
    int baud = 9600; ///< bit/s
    int bits = 8;
    std::string parity = "none";
    int stopBits = 1;
    std::string handshake = "xonxoff";
};

/// Adds --baud, --bits, --parity, --stop-bits and --handshake, each refusing what the plug-in would not do.
void addLineOptions(const Command &app, LineSettings &settings);

/// "9600 bit/s, 8 data bits, parity none, 1 stop bit, handshake xonxoff".
std::string settingsText(const LineSettings &settings);

/// Seconds that the line takes for so many bytes when the plotter never holds it.
double secondsFor(int64_t bytes, const LineSettings &settings);

/// Why a line takes no data, as far as it can be told: "CTS is down", or what else it may be. fd is the open port.
const char *whyHeld(int fd, const LineSettings &settings);

/// What to do about settings that the port's driver refused; a part of a sentence, to be put after "; ".
const char *settingsRemedy(const std::string &port);

/// Puts the settings into the record as the plug-in's codes, and makes the serial link its output.
void applyLineSettings(const LineSettings &settings, ORB_ServiceRecord &record);

} // namespace host
