// Line setup of the serial port in ORB_portFD, and the small operations on its modem lines and exclusive use.
//
// Attributes are built in gORB_Termios from the record's line parameters: the single setters change them there, and only
// ORB_Serialsetc_cflag hands them to the port. No operation takes arguments, for each is exported, and a host may call it by
// itself. Failures go to ORB_errorID, some also leave a status text.
#pragma once

#include <cstdint>

extern "C" {

/// The whole setup: raw mode, rate, size, parity, stop bits, handshake, then DTR raised. Blocks while output is pending.
/// ORB_errorID: unchanged, or 24005 (attributes unreadable, nothing applied), or 24006 (attributes refused).
int32_t ORB_Serialsetc_cflag();
/// Reads the port's attributes into gOriginalTTYAttrs and gORB_Termios. Negative and 24005 on failure.
int32_t ORB_SerialgetgOriginalTTYAttrs();
/// Both speeds of gORB_Termios from ORB_baudRate (bit/s); 9600 for every rate outside the table.
void ORB_SerialsetBaudrate();

// Single parameters: each edits gORB_Termios only.
void ORB_SerialsetDatabits();
void ORB_SerialsetParity();
void ORB_SerialsetStopbits();
void ORB_SerialsetFlowControl();

int32_t ORB_Serialset_OpenExclusive();  ///< 1, or 0 and 24003
int32_t ORB_Serialset_OpenAuthorised(); ///< 1, or 0 and 24012
int32_t ORB_SerialsetDTR();             ///< the request's result
int32_t ORB_SerialclearDTR();           ///< the request's result

// The modem-line word (DTR 0x2, RTS 0x4, CTS 0x20, carrier 0x40, DSR 0x100), or the given value when it cannot be read.
int32_t ORB_SerialgetCurrentHandshake(); ///< 0x126; sets the status text
int32_t ORB_SerialgetDTR();              ///< 0x2
int32_t ORB_SerialgetDCD();              ///< 0x40
int32_t ORB_SerialgetCTS();              ///< waits for CTS, at most ten million requests; the last word read, or 0

/// Opens gORB_bsdPath for reading and writing, without line setup.
void ORB_Serialopen_std();
/// Opens gORB_bsdPath, drops the line for one second (speed 0), and closes it.
void ORB_Serial_forcePlotterHangUp();
}
