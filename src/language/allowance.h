// How much drawing a job may ask for.
#pragma once

#include <cstdint>

namespace language {

/// Some instructions of a few bytes repeat a lot of work: outlining or filling a large polygon again, cutting a line into
/// dashes. Each byte read earns kPerByte units of it (a line, or an edge crossed); real jobs need a few. It counts the bytes
/// actually reached, so that the way a job is cut into calls makes no difference.
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
