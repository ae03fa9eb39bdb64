// Other processes, run to their end.
#pragma once

#include <string>
#include <vector>

namespace bench {

struct Finished {
    int status = 0;     ///< exit code, or 128 and the signal's number
    std::string said;   ///< its standard output
    double seconds = 0; ///< of user and system time
};

/// Runs a program, found through PATH, with these arguments (its name first). Throws std::system_error when it cannot start.
Finished run(const std::vector<std::string> &arguments);

} // namespace bench
