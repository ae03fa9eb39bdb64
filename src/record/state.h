// The state of the plug-in: the record in work, and what lives beside it for the life of the process.
//
// The operations are exported under names of their own, and hardly one takes arguments: what they work on has to be global.
// It is for one call at a time. What the record has no field for (how much a link took, what a close lost) stands beside it.
#pragma once

#include "orb/vectorix.h"

#include <cstdint>
#include <termios.h>

/// What the last write on the link did.
struct LinkWrite {
    int64_t taken = 0;        ///< bytes that the link took
    int32_t status = 0;       ///< errno or IOKit code of the failure, 0 for none
    bool isPending = false;   ///< a stop came before the line had sent them
    bool portWasGone = false; ///< already when they were offered: what was taken before may be lost, too
};

/// What the close of a serial port found.
struct LinkClose {
    int32_t status = 0;    ///< errno of a line that did not send all, or is gone; 0 for none
    int64_t discarded = 0; ///< bytes that a stop threw away, at most
};

/// The report of a job of which nothing is done yet.
constexpr ORB_JobReport emptyJobReport() noexcept {
    ORB_JobReport report{};
    report.structSize = sizeof report;
    report.firstErrorID = kORB_NoError;
    report.firstErrorOffset = -1;
    return report;
}

struct FoundationState {
    ORB_ServiceRecord Answer{}; ///< every service reads its inputs and writes its outputs here
    LinkWrite lastWrite;
    LinkWrite startWrite;                    ///< of the start-up bytes of the serial port opened last
    LinkClose lastClose;                     ///< of a serial port
    ORB_JobReport report = emptyJobReport(); ///< of the last print
};

extern FoundationState gORB_FoundationStruct;
extern ORB_ServiceRecord gORB_FoundationAnswer; ///< staging copy of the record handed back
extern char gORB_bsdPath[256];                  ///< NUL-terminated ASCII path of the serial port
extern termios gORB_Termios;                    ///< attributes being built for the open serial port
extern termios gOriginalTTYAttrs;               ///< attributes of the port as found when it was opened

/// The record in work.
inline ORB_ServiceRecord &answer() noexcept { return gORB_FoundationStruct.Answer; }

/// Descriptors 0 and -1 both mean that no port is open.
inline bool portIsOpen() noexcept { return answer().ORB_portFD != 0 && answer().ORB_portFD != -1; }
