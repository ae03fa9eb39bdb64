// How long a plan takes its plotter. Print, dry run and progress line all ask here, and what a preview says of the same plot
// comes from the same place: so the figures cannot differ.
#pragma once

#include "host/picture/estimate.h"
#include "host/print/plan.h"

namespace host {

/// True for a plotter; a file and a plotter in software take what they get at once.
bool takesItsTime(const Target &target);

/// Reads the plan's plot through, for the plan's line or, over USB, for the pen alone. Throws Failure.
Estimate estimateOf(const PrintPlan &plan);

/// Throws Failure (unfit) when the plot leaves the area that the options say the plotter's pen reaches.
void requireWithinArea(const PrintPlan &plan);

} // namespace host
