// Prints of a plot through the entry, and the pieces that they consist of.
#pragma once

#include "floors.h"
#include "platform/posix/clock.h"
#include "plots.h"

#include <cstdint>
#include <string>
#include <vector>

namespace bench {

/// While it lives the plug-in's pauses take no time, and its console lines go nowhere.
class Hasty final : public platform::Clock {
public:
    Hasty();
    Hasty(const Hasty &) = delete;
    Hasty &operator=(const Hasty &) = delete;
    ~Hasty() override;
    void sleep(unsigned) override {}

private:
    platform::Clock *before_;
};

/// A job for emulation 17002, whose pieces have at most 64 bytes.
class PrintJob {
public:
    /// Over a serial port; over USB when port is empty. Throws std::runtime_error.
    PrintJob(const std::string &plotFile, const std::string &port);
    PrintJob(const PrintJob &) = delete;
    PrintJob &operator=(const PrintJob &) = delete;
    ~PrintJob();
    /// Throws std::runtime_error when not all of the file was sent.
    void run() const;

private:
    TemporaryFile job_;
    ORB_ServiceRecord record_{};
};

/// Prints once more and notes the sizes of the pieces.
std::vector<uint8_t> piecesOf(const PrintJob &job);

inline bench_Pieces known(const Plot &plot, const std::vector<uint8_t> &sizes) {
    return {plot.block(), Plot::kBlock, sizes.data(), sizes.size()};
}

} // namespace bench
