// One run of a scenario with one fault, and all that has to be true afterwards.
#pragma once

#include "sweep/faults.h"
#include "sweep/scenarios.h"

#include <string>
#include <vector>

namespace sweep {

struct Outcome {
    std::vector<const CallKind *> trace; ///< of the call of the entry
    std::vector<std::string> complaints; ///< what is wrong; empty when all is well
    std::string delivered;               ///< all that reached the plotter
    unsigned seconds = 0;                ///< of virtual time
};

/// clean: the outcome without a fault, nullptr for that run itself.
Outcome runScenario(const Scenario &scenario, const Injection &injection, const Outcome *clean);

} // namespace sweep
