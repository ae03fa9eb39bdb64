// Faults: which call of a run fails, and how. Every call on the platform, and every request for memory, passes by here.
#pragma once

#include "stand_in/fate.h"

#include <cstdint>
#include <string>
#include <vector>

namespace sweep {

struct Failure {
    stand_in::Ending ending = {};
    bool lasting = true; ///< may be the outcome of every later call, too
    bool stops = false;  ///< the host stops the call of the entry meanwhile; when it fails, because it is interrupted
};

/// A call by the platform's name for it.
struct CallKind {
    const char *name;
    std::vector<Failure> failures; ///< the first one is what it does when everything fails
};

enum class Reach : uint8_t { once, sameCalls, allCalls };

/// A fault: the failure of call number `call` (from 1), and whether later calls fail, too. Call 0: none.
struct Injection {
    unsigned call = 0;
    Failure failure = {};
    Reach reach = Reach::once;
    std::string name() const;
};

/// Counts the calls of a run and says which of them fail.
class Faults {
public:
    explicit Faults(const Injection &injection);
    ~Faults();
    Faults(const Faults &) = delete;
    Faults &operator=(const Faults &) = delete;

    /// Faults happen only between these two.
    void begin() noexcept { active_ = true; }
    void end() noexcept { active_ = false; }

    const std::vector<const CallKind *> &trace() const noexcept { return trace_; }
    bool stopped() const noexcept { return stopped_; }

    /// For operator new: false when memory is refused.
    static bool memoryIsGiven() noexcept;

    /// Brackets a call of a backend. Backends live in the test: their memory never fails.
    stand_in::Ending enter(const char *call) noexcept;
    void leave() noexcept { --inBackend_; }

private:
    stand_in::Ending next(const char *call) noexcept;

    const Injection injection_;
    std::vector<const CallKind *> trace_;
    unsigned inBackend_ = 0;
    bool active_ = false, stopped_ = false;
};

} // namespace sweep
