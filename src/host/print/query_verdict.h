// What a query for the hard-clip limits came to: its exit code, and what to tell. The plug-in's query report decides, for
// the record's own error identifier is that of closing the port. What the plotter said is told beside the record's values,
// which lose signs and decimals.
#pragma once

#include "host/devices/usb_devices.h"
#include "host/terminal/manual.h"
#include "host/terminal/telling.h"

#include <array>
#include <optional>
#include <orb/vectorix.h>
#include <string>

namespace host {

/// A query that is over.
struct QueryOutcome {
    ORB_QueryReport report;
    std::array<double, 4> values; ///< of the record, in the order of the reply
    bool stopped;                 ///< by the user
    bool isGivenUp;               ///< the command ended it: it took longer than was announced, or the plotter is gone
    std::string whyHeld;          ///< of a serial line, when it was given up
    double seconds;
    std::string source; ///< the port or the USB plotter
    int32_t emulation;
    std::optional<UsbDevice> usb; ///< when it was one
    uint8_t usbOutPipe;
    bool isUsbGone; ///< the USB plotter is not there any more
};

/// Judges by the query report.
Verdict judge(const QueryOutcome &outcome);

/// Lower left and upper right in plotter units as the plotter said them; none where the language has no corners, or the
/// reply not enough numbers.
using Corners = std::array<double, 4>;
std::optional<Corners> cornersOf(const QueryOutcome &outcome);

/// What the plotter was sent and what it said, safe to print.
std::string requestShown(const ORB_QueryReport &report);
std::string replyShown(const ORB_QueryReport &report);

/// The limits as lines for people: the corners as the plotter said them where that can be read, otherwise the record's
/// values.
std::string limitLines(const QueryOutcome &outcome);

/// The outcome as a JSON object.
Json queryJson(const QueryOutcome &outcome, const Verdict &verdict);

/// The JSON object's fields.
std::vector<JsonFields> queryFields();

} // namespace host
