// The serial line's settings: options, checks, and the record's codes for them.
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
std::string describe(const LineSettings &settings);

/// How long the line takes for so many bytes when nobody holds it.
double secondsFor(int64_t bytes, const LineSettings &settings);

/// Why a line takes nothing, as far as it can be told: "CTS is down", or what it may be. fd is the open port.
const char *whyHeld(int fd, const LineSettings &settings);

/// What to do about settings that the port's driver refused, to stand behind a semicolon.
const char *settingsRemedy(const std::string &port);

void applyLineSettings(const LineSettings &settings, ORB_ServiceRecord &record);

} // namespace host
