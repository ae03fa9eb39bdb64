// A platform in memory: serial ports and USB plotters that take all they are sent and answer what they are given to say, two
// files, and time that does not pass. Calls fail as the weather has it.
#pragma once

#include "orb/vectorix.h"
#include "stand_in/platform.h"

#include <optional>
#include <string_view>

namespace fuzz {

inline constexpr const char *kPort = "/dev/plotter";
inline constexpr const char *kJobPath = "/job.plist";
inline constexpr const char *kPlotPath = "/plot.plt";

inline constexpr uint16_t kVendor = 0x0B75;

/// Where the first plotter is; the others follow.
inline constexpr uint32_t kLocation = 6;

/// In place for as long as it lives. What was opened and not closed, or handed out and not released, is a finding.
class Platform final : public stand_in::Platform {
public:
    explicit Platform(uint16_t vendor = kVendor, size_t plotters = 1, size_t ports = 1);
    ~Platform() override;

    std::string_view weather;      ///< one byte for each call that can fail; past its end all is well
    std::optional<long> mostTaken; ///< of a write to a port

    /// What reads give, each up to a byte of 0xFF.
    void says(std::string_view replies);

    /// A record that leads to the port, to the USB plotter, and to the two files.
    ORB_ServiceRecord record() const;

    stand_in::Ending before(stand_in::Seam seam, const char *call) override;
    void misuse(const std::string &what) override;
    void stray(const char *, int) override {} // a record may hold any number

private:
    const uint16_t vendor_;
};

/// Calls the entry, and looks at what must hold of any call: reserved bytes as they were, an identifier of the table, time
/// within bounds, reports that add up.
ORB_ServiceRecord call(Platform &platform, const ORB_ServiceRecord &record);

/// Whether nothing is left open but a port that the record holds: one whose start-up text could not be written.
bool isClosed(const Platform &platform, const ORB_ServiceRecord &returned);

/// Releases every string of the record.
void releaseStrings(const ORB_ServiceRecord &record);

} // namespace fuzz
