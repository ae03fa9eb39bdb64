// One run of a program that is not trusted: limits, no network, and an end that nothing of it outlives.
#pragma once

#include <chrono>
#include <cstdint>
#include <string>
#include <vector>

namespace host {

struct ChildLimits {
    std::chrono::milliseconds time;
    uint64_t memory; ///< bytes of address space
    uint64_t output; ///< bytes
};

struct ChildResult {
    enum class End { Exited, Killed, Missing, OutOfTime, OutOfMemory, TooMuchOutput, Stopped } end = End::Exited;
    int code = 0;            ///< exit code, or the signal's number
    std::string output;      ///< what it wrote to standard output
    std::string diagnostics; ///< the last of what it wrote to standard error
};

/// Runs a program found in PATH, arguments[0], with a descriptor as its standard input. It and its own children can read
/// files, but write to none, nor open a network connection where the system allows to forbid that; it ends with this
/// process. Returns when it ended or was killed: at a limit, or when a StopOnSignal saw a stop. Throws Failure when no
/// process can be made.
ChildResult runChild(const std::vector<std::string> &arguments, int input, const ChildLimits &limits);

} // namespace host
