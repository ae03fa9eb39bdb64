// Keeps the computer from going to sleep while a plot runs: an hour with nobody at the keys looks like idleness. The login
// manager is asked over the system bus; where there is none, as in a container, nothing is held off.
#pragma once

#include "host/files/unique_fd.h"

#include <string>

namespace host {

/// Holds off sleep and idleness while it exists. Waits for the login manager for a second at most.
class Awake {
public:
    explicit Awake(const std::string &why);
    /// Empty when it is held off; else why not, for people.
    const std::string &problem() const { return problem_; }

private:
    UniqueFd inhibitor_;
    std::string problem_;
};

} // namespace host
