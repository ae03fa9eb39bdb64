// How much drawing a plot may ask for. Instructions of a few bytes can ask for the same huge fill over and over, and plot
// files come from anywhere: the work is measured against the bytes read, so that the time for a file stays in proportion to
// its size.
#pragma once

#include <cstdint>

namespace language {

/// Each byte read earns kPerByte units of work (a line, or an edge crossed), besides the kAtOnce that every plot has; real
/// jobs need a few units a byte. The bytes are the reader's own count, which must outlive this: so the way a job is cut into
/// calls makes no difference.
class Allowance {
public:
    static constexpr uint64_t kAtOnce = 10'000'000;
    static constexpr uint64_t kPerByte = 64;

    explicit Allowance(const uint64_t &bytesRead) : bytes_(bytesRead) {}

    /// False, and nothing is spent, when so much work has not been earned.
    bool spend(uint64_t work) noexcept {
        if (work > kAtOnce + bytes_ * kPerByte - spent_) return false;
        spent_ += work;
        return true;
    }

private:
    const uint64_t &bytes_;
    uint64_t spent_ = 0;
};

} // namespace language
