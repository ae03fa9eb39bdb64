// The pipes of the plotter's interface before a query: cleared of stalls, and listed on the console.
//
// The listing is not for the eye alone: the last in pipe that it meets is the one that the reply is read from. That is
// why a query does this and a print, which reads nothing, does not.
#pragma once

namespace hardclip {

/// Clears the out pipe; then lists all pipes, takes the endpoint number of the last in pipe as ORB_USB_PIPEIN, and clears
/// that. Failures are shown, with 29008 in ORB_errorID.
void preparePipes();

/// Shows the state of the in pipe, if it is one of those that have a line.
void showPipeStatus();

} // namespace hardclip
