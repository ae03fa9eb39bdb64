// The serial link: opens the port that ORB_CFSTR_bsdIn_VectorixDevice names, writes ORB_writeBuffer, closes the port.
//
// Each write waits until the line has sent it. That is slower than filling the queue, but of all pieces before the last it
// is then known that they went out. The descriptor lives in ORB_portFD (-1 and 0: none), and so outlasts a call of the
// entry. Outcomes are in ORB_errorID.
#pragma once

#include <cstdint>

extern "C" {

/// Opens with retries (up to 11, one second apart), sets the line up, sends the start-up bytes. -1 when no path was given,
/// else 0. ORB_errorID: 22007 (also when the path is not ASCII: nothing is opened then), 27010, 24001, 24005, 24006, 25002.
int32_t ORB_SerialopenPort();
/// One open with retries and the line setup.
int32_t ORB_Serialopen_Keyspan2Write();
/// One open with exclusive use and the line setup; no retry.
int32_t ORB_Serialopen_Keyspan2Read();
/// Sends what ORB_EmulationID wants to hear when the port is opened, if anything.
void ORB_Serial_initPlotter();
/// Sends the NUL-terminated text of ORB_writeBuffer (0 to 255 bytes), then waits for the line to drain; blocks for as long
/// as the plotter holds the line. ORB_errorID: 22007, or 25002 when no port is open or write() failed. Always returns 0; how
/// much was taken, and a drain that failed, is in gORB_FoundationStruct.lastWrite.
int32_t ORB_SerialwritePlotter();
/// Drains, waits two seconds, ends exclusive use, closes. After a stop the queued output is discarded first, so that the
/// close cannot hang. Always returns 0; what was lost is in gORB_FoundationStruct.lastClose.
int32_t ORB_SerialclosePort();

int32_t ORB_VectorixService4(); ///< opens the port
int32_t ORB_VectorixService5(); ///< opens the port and writes ORB_writeBuffer
int32_t ORB_VectorixService6(); ///< closes the port
}
