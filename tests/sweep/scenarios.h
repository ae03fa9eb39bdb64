// The scenarios: one call of the entry each, and what comes of it when nothing fails.
#pragma once

#include "orb/vectorix.h"

#include <cstdint>
#include <string>
#include <vector>

namespace sweep {

/// What the host has done before.
enum class Before : uint8_t { nothing, interfaceOpen, portOpen };

struct Scenario {
    std::string name;
    uint32_t service = 0;
    unsigned seconds = 0; ///< the most that it may take, whatever fails
    uint32_t method = kORB_OSX_METHOD_SERIAL;
    Before before = Before::nothing;
    const char *port = "/dev/plotter";       ///< "" for none
    int32_t errorID = kORB_NoError;          ///< when nothing fails
    int32_t emulation = 17001;               ///< of the link, of a query, and of the job
    uint32_t variant = 0;                    ///< of the emulation
    uint16_t vendor = 0x0B75;                ///< of the USB plotter
    std::vector<std::string> replies = {};   ///< of the plotter to a query
    std::string plot = {}, job = {};         ///< files of a print; another job file than the usual, if any
    const char *terminator = ";";            ///< in the job; "" for none
    uint32_t stopReason = kORB_StopFinished; ///< of a print, when nothing fails
};

inline constexpr int32_t kHostsErrorID = 4711; ///< what the host leaves in ORB_errorID: no identifier of the table

const std::vector<Scenario> &scenarios();

} // namespace sweep
