// What HP-GL's instructions do, by family; the table in hpgl_instructions.cpp gives each mnemonic its function. Each takes
// the numbers that were given, no more and no fewer than the table allows, and answers false when they make no sense; then
// it has changed nothing.
#pragma once

#include "language/hpgl_plotter.h"

namespace language::hpgl {

// hpgl_setup.cpp
bool initializeInstruction(Plotter &, Numbers);
bool setDefaults(Plotter &, Numbers);
bool scalingPoints(Plotter &, Numbers);
bool relativeScalingPoints(Plotter &, Numbers);
bool scale(Plotter &, Numbers);
bool inputWindow(Plotter &, Numbers);
bool rotateCoordinates(Plotter &, Numbers);
void defaultLetters(Lettering &letters, const Rectangle &sheet);

// hpgl_pens.cpp
bool selectPen(Plotter &, Numbers);
bool penWidth(Plotter &, Numbers);
bool widthUnit(Plotter &, Numbers);
bool velocity(Plotter &, Numbers);
bool lineType(Plotter &, Numbers);
bool userLineType(Plotter &, Numbers);

// hpgl_moves.cpp: the first four are called once without numbers, then for each pair as it comes
bool plotAbsolute(Plotter &, Numbers);
bool plotRelative(Plotter &, Numbers);
bool penUp(Plotter &, Numbers);
bool penDown(Plotter &, Numbers);
bool tickLength(Plotter &, Numbers);
bool xTick(Plotter &, Numbers);
bool yTick(Plotter &, Numbers);

// hpgl_arcs.cpp
bool arcAbsolute(Plotter &, Numbers);
bool arcRelative(Plotter &, Numbers);
bool arcThroughAbsolute(Plotter &, Numbers);
bool arcThroughRelative(Plotter &, Numbers);
bool circle(Plotter &, Numbers);
bool chordTolerance(Plotter &, Numbers);

// hpgl_curves.cpp: called as those of moves, with three points at a time
bool curveAbsolute(Plotter &, Numbers);
bool curveRelative(Plotter &, Numbers);

// hpgl_polygons.cpp
bool polygonMode(Plotter &, Numbers);
bool edgePolygon(Plotter &, Numbers);
bool fillPolygon(Plotter &, Numbers);
bool fillType(Plotter &, Numbers);
bool edgeRectangleAbsolute(Plotter &, Numbers);
bool edgeRectangleRelative(Plotter &, Numbers);
bool fillRectangleAbsolute(Plotter &, Numbers);
bool fillRectangleRelative(Plotter &, Numbers);
bool edgeWedge(Plotter &, Numbers);
bool fillWedge(Plotter &, Numbers);

// hpgl_labels.cpp
bool absoluteSize(Plotter &, Numbers);
bool relativeSize(Plotter &, Numbers);
bool absoluteDirection(Plotter &, Numbers);
bool relativeDirection(Plotter &, Numbers);
bool slant(Plotter &, Numbers);
bool extraSpace(Plotter &, Numbers);
bool labelOrigin(Plotter &, Numbers);
bool characterPlot(Plotter &, Numbers);

} // namespace language::hpgl
