// Work on a page in bands of rows, which have nothing to do with each other: on all processors, and in no certain order.
#pragma once

#include <cstddef>
#include <functional>

namespace virtual_plotter {

/// What one thread does with a band, and what it keeps from band to band.
using BandWork = std::function<void(size_t band)>;

/// Has each number below count worked on once, and returns when all is done. begin makes a thread's work, for as many
/// threads as take part. Throws what these throw.
void forEachBand(size_t count, const std::function<BandWork()> &begin);

} // namespace virtual_plotter
