// IOKit's return codes: X(name, number, description). The code is 0xE0000000 plus the number (IOKit's published constants).
// One list, for a code's name, its value and the description that the plug-in prints have to agree.
#pragma once

#include <cstdint>

using IOReturn = int32_t;

#define IOKIT_RETURN_CODES(X)                                                                                               \
    X(kIOReturnInvalid, 0x001, "should never be seen")                                                                      \
    X(kIOReturnError, 0x2bc, "general error")                                                                               \
    X(kIOReturnNoMemory, 0x2bd, "can't allocate memory")                                                                    \
    X(kIOReturnNoResources, 0x2be, "resource shortage")                                                                     \
    X(kIOReturnIPCError, 0x2bf, "error during IPC")                                                                         \
    X(kIOReturnNoDevice, 0x2c0, "no such device")                                                                           \
    X(kIOReturnNotPrivileged, 0x2c1, "privilege violation")                                                                 \
    X(kIOReturnBadArgument, 0x2c2, "invalid argument")                                                                      \
    X(kIOReturnLockedRead, 0x2c3, "device read locked")                                                                     \
    X(kIOReturnLockedWrite, 0x2c4, "device write locked")                                                                   \
    X(kIOReturnExclusiveAccess, 0x2c5, "exclusive access and device already open")                                          \
    X(kIOReturnUnsupported, 0x2c7, "unsupported function")                                                                  \
    X(kIOReturnVMError, 0x2c8, "misc. VM failure")                                                                          \
    X(kIOReturnInternalError, 0x2c9, "internal error")                                                                      \
    X(kIOReturnIOError, 0x2ca, "General I/O error")                                                                         \
    X(kIOReturnCannotLock, 0x2cc, "can't acquire lock")                                                                     \
    X(kIOReturnNotOpen, 0x2cd, "device not open")                                                                           \
    X(kIOReturnNotReadable, 0x2ce, "read not supported")                                                                    \
    X(kIOReturnNotWritable, 0x2cf, "write not supported")                                                                   \
    X(kIOReturnNotAligned, 0x2d0, "alignment error")                                                                        \
    X(kIOReturnBadMedia, 0x2d1, "Media Error")                                                                              \
    X(kIOReturnStillOpen, 0x2d2, "device(s) still open")                                                                    \
    X(kIOReturnRLDError, 0x2d3, "rld failure")                                                                              \
    X(kIOReturnDMAError, 0x2d4, "DMA failure")                                                                              \
    X(kIOReturnBusy, 0x2d5, "Device Busy")                                                                                  \
    X(kIOReturnTimeout, 0x2d6, "I/O Timeout")                                                                               \
    X(kIOReturnOffline, 0x2d7, "device offline")                                                                            \
    X(kIOReturnNotReady, 0x2d8, "not ready")                                                                                \
    X(kIOReturnNotAttached, 0x2d9, "device not attache")                                                                    \
    X(kIOReturnNoChannels, 0x2da, "no DMA channels left")                                                                   \
    X(kIOReturnNoSpace, 0x2db, "no space for data")                                                                         \
    X(kIOReturnPortExists, 0x2dd, "port already exists")                                                                    \
    X(kIOReturnCannotWire, 0x2de, "can't wire down physical memory")                                                        \
    X(kIOReturnNoInterrupt, 0x2df, "no interrupt attached")                                                                 \
    X(kIOReturnNoFrames, 0x2e0, "no DMA frames enqueued")                                                                   \
    X(kIOReturnMessageTooLarge, 0x2e1, "oversized msg received")                                                            \
    X(kIOReturnNotPermitted, 0x2e2, "not permitted")                                                                        \
    X(kIOReturnNoPower, 0x2e3, "no power to device")                                                                        \
    X(kIOReturnNoMedia, 0x2e4, "media not present")                                                                         \
    X(kIOReturnUnformattedMedia, 0x2e5, "media not formatted")                                                              \
    X(kIOReturnUnsupportedMode, 0x2e6, "no such mode")                                                                      \
    X(kIOReturnUnderrun, 0x2e7, "data underrun")                                                                            \
    X(kIOReturnOverrun, 0x2e8, "data overrun")                                                                              \
    X(kIOReturnDeviceError, 0x2e9, "the device is not working properly!")                                                   \
    X(kIOReturnNoCompletion, 0x2ea, "a completion routine is required")                                                     \
    X(kIOReturnAborted, 0x2eb, "operation aborted")                                                                         \
    X(kIOReturnNoBandwidth, 0x2ec, "bus bandwidth would be exceeded")                                                       \
    X(kIOReturnNotResponding, 0x2ed, "device not responding")                                                               \
    X(kIOReturnIsoTooOld, 0x2ee, "isochronous I/O request for distant past!")                                               \
    X(kIOReturnIsoTooNew, 0x2ef, "isochronous I/O request for distant future")                                              \
    X(kIOReturnNotFound, 0x2f0, "data was not found")

#define IOKIT_ENUMERATOR(name, number, description) name = static_cast<IOReturn>(0xE0000000U + (number)),
enum : IOReturn {
    kIOReturnSuccess = 0,
    IOKIT_RETURN_CODES(IOKIT_ENUMERATOR) kIOUSBUnknownPipeErr =
        static_cast<IOReturn>(0xE0004061U), // no pipe of that reference
    kIOUSBPipeStalled = static_cast<IOReturn>(0xE000404FU),
};
#undef IOKIT_ENUMERATOR
