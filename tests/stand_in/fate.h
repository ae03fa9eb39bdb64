// What befalls the calls on the stand-ins of the platform: each of them is a step, and asks here how it is to end.
//
// The stand-ins are shared by the tests, the fault sweep and the fuzz targets. These derive from Fate and differ in the
// answer: it comes from a script, from the sweep's turn to fail, or from the fuzzer's bytes.
#pragma once

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <string>
#include <string_view>
#include <vector>

namespace stand_in {

enum class Effect : uint8_t {
    None,
    Fails, ///< does nothing, and reports the code: an errno, an IOKit or File Manager code, 0 where NULL is the failure
    After, ///< does its work, or a part of it, and reports the code all the same
    Gives  ///< succeeds with the code as its value: a size, a count, a descriptor
};

struct Ending {
    Effect effect = Effect::None;
    long code = 0;
};

/// Where a call goes, and by that how it reports a failure: with an errno, an IOReturn, an OSErr, or not at all.
enum class Seam : uint8_t { Terminal, Registry, Files, Other };

/// One line for each call that a device or a user could see, in the order of the calls.
using Log = std::vector<std::string>;

/// What a platform of stand-ins derives from; by itself it lets every call do its work.
class Fate {
public:
    Fate() { current = this; }
    virtual ~Fate() { current = before_; }
    Fate(const Fate &) = delete;

    /// A call begins. One that closes or releases something has done so even if it then reports a failure.
    virtual Ending before(Seam, const char *) { return {}; }
    /// Bytes were offered to a link, and it took some. ok: the call said that it took them all.
    virtual void wrote(size_t /*offered*/, size_t /*taken*/, bool /*ok*/) {}
    /// Bytes were thrown away that a line had taken and not yet sent.
    virtual void discarded(size_t) {}
    /// A call that nobody should make.
    virtual void misuse(const std::string &what) = 0;
    /// A call on a descriptor that is not open.
    virtual void stray(const char *call, int fd) {
        misuse(std::string(call) + " on descriptor " + std::to_string(fd) + ", which is not open");
    }

    Log log;
    bool keepsLog = true;

    static inline Fate *current = nullptr; ///< of the platform that is in place

private:
    Fate *const before_ = current;
};

inline Fate &fate() { return *Fate::current; }

/// Bytes as they stand in a log.
inline std::string quoted(std::string_view bytes) {
    std::string text = "\"";
    for (const char c : bytes) {
        char hex[8];
        snprintf(hex, sizeof hex, "\\x%02x", static_cast<unsigned>(static_cast<unsigned char>(c)));
        text += c >= 0x20 && c < 0x7F ? std::string(1, c) : hex;
    }
    return text + "\"";
}

/// One call while it is under way.
class Step {
public:
    Step(Seam seam, const char *call) : call_(call), ending_((++underWay, fate().before(seam, call))) {}
    ~Step() { --underWay; }
    Step(const Step &) = delete;

    /// Calls that have begun and not ended. Memory that is asked for meanwhile is the test's own.
    static inline unsigned underWay = 0;

    const char *call() const noexcept { return call_; }
    /// The call does not do its work.
    bool fails() const noexcept { return ending_.effect == Effect::Fails; }
    bool failsAfter() const noexcept { return ending_.effect == Effect::After; }
    bool gives() const noexcept { return ending_.effect == Effect::Gives; }
    template <typename Code> Code code() const noexcept { return static_cast<Code>(ending_.code); }

    /// Of calls that report a code: what this one reports, but for a value that it gives.
    template <typename Code> Code result() const noexcept { return fails() || failsAfter() ? code<Code>() : Code{0}; }
    /// The same of POSIX calls, the errno set.
    int posixResult() const noexcept {
        if (gives()) return code<int>();
        if (!fails() && !failsAfter()) return 0;
        errno = code<int>();
        return -1;
    }
    /// Of calls that store a value and report a code.
    template <typename Code, typename Value> Code store(Value *out, Value value) const noexcept {
        if (!fails()) *out = gives() ? code<Value>() : value;
        return result<Code>();
    }

    /// Writes the call down, its arguments behind its name.
    template <typename... Arguments> void log(const Arguments &...arguments) const {
        if (!fate().keepsLog) return;
        std::string line = call_;
        ((line += ' ', line += text(arguments)), ...);
        fate().log.push_back(std::move(line));
    }

private:
    static std::string text(long number) { return std::to_string(number); }
    static std::string_view text(std::string_view text) { return text; }

    const char *const call_;
    const Ending ending_;
};

} // namespace stand_in
