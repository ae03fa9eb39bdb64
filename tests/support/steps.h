// What befalls the calls on a scripted platform, as a cell in a row of a table.
#pragma once

#include "support/scripted.h"

#include <vector>

namespace scripted {

struct Step {
    const char *call;
    Outcome outcome;
    int times = 1;
};
using Steps = std::vector<Step>;

inline void script(Platform &platform, const Steps &steps) {
    for (const Step &step : steps)
        platform.script(step.call, step.outcome, step.times);
}

} // namespace scripted
