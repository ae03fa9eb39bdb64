// The measures, one function each. They throw std::exception when something breaks or bytes differ.
#pragma once

#include "figures.h"

#include <string>

namespace bench {

Row entryCopies(const Settings &settings);
Row serialProcessor(const Settings &settings);
Row serialInstructions(const Settings &settings);
Row instructionsLater(const Settings &settings);
Row usbProcessor(const Settings &settings);
/// For information: with transfers that cost nothing, what is left is the work of the plug-in itself. Nothing is wanted of
/// it.
Row usbOwnWork(const Settings &settings);
Row pacedLine(const Settings &settings);
Row wallSlopes(const Settings &settings);
Row processorSlopes(const Settings &settings);
Row peakMemory(const Settings &settings);
Row previewOutlines(const Settings &settings);
Row previewLongLines(const Settings &settings);
Row previewSmall(const Settings &settings);
Row convertDrawing(const Settings &settings);
Row orderStrokes(const Settings &settings);

/// What a process started by peakMemory does: prints the file on the port, then says its peak memory in kB.
int printAndTellMemory(const std::string &plotFile, const std::string &port);
/// What a process started by the instruction counts does, under callgrind: prints the file on a terminal that takes
/// everything, and has the counts written down at the 1000th and 2000th piece, and at piece `late` and 1000 after.
int printUnderCallgrind(const std::string &plotFile, long late);

} // namespace bench
