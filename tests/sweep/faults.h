// Faults: which call of a run fails, and how. Every call on the platform, and every request for memory, passes by here.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace sweep {

enum class Effect : uint8_t {
    none,
    fails, ///< does nothing, and reports the code: an errno, an IOKit or File Manager code, 0 where NULL is the failure
    after, ///< does its work, or a part of it, and reports the code all the same
    gives, ///< succeeds with the code as its value: a size, a count, a descriptor
    stops  ///< the host stops the call of the entry meanwhile; a code: this call is interrupted and reports it
};

struct Failure {
    Effect effect = Effect::none;
    long code = 0;
    bool lasting = true; ///< may be the outcome of every later call, too
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

private:
    friend class Step;
    Failure enter(const char *call) noexcept;

    const Injection injection_;
    std::vector<const CallKind *> trace_;
    unsigned inBackend_ = 0; ///< backends live in the test: their memory never fails
    bool active_ = false, stopped_ = false;
};

/// One call while it is under way.
class Step {
public:
    Step(Faults &faults, const char *call) noexcept : faults_(faults), failure_(faults.enter(call)) { ++faults_.inBackend_; }
    ~Step() { --faults_.inBackend_; }
    Step(const Step &) = delete;
    Step &operator=(const Step &) = delete;

    /// The call does not do its work.
    bool fails() const noexcept { return failure_.effect == Effect::fails || (stops() && failure_.code != 0); }
    bool failsAfter() const noexcept { return failure_.effect == Effect::after; }
    bool gives() const noexcept { return failure_.effect == Effect::gives; }
    bool stops() const noexcept { return failure_.effect == Effect::stops; }
    template <typename Code> Code code() const noexcept { return static_cast<Code>(failure_.code); }

private:
    Faults &faults_;
    const Failure failure_;
};

} // namespace sweep
