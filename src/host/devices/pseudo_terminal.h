// Pseudo-terminals, known by their device numbers: they have no hardware, no modem lines, and a far end that plays the
// plotter, so that what holds for a port does not always hold for them.
#pragma once

#include <optional>
#include <sys/sysmacros.h>
#include <sys/types.h>

namespace host {

/// The N of a near end /dev/pts/N; none for another terminal.
inline std::optional<int> pseudoTerminalIndex(dev_t terminal) {
    constexpr unsigned kFirstMajor = 136, kLastMajor = 143, kMinors = 256; // fixed in Linux's device list
    if (major(terminal) < kFirstMajor || major(terminal) > kLastMajor) return {};
    return static_cast<int>((major(terminal) - kFirstMajor) * kMinors + minor(terminal));
}

inline bool isPseudoTerminal(dev_t terminal) { return pseudoTerminalIndex(terminal).has_value(); }

} // namespace host
