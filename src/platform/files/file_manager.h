// The File Manager calls that the plug-in uses, and the seam under them.
#pragma once

#include "orb/vectorix.h"
#include "platform/backends.h"

#include <cstdint>
#include <string>

using OSErr = int16_t;
using ByteCount = uint64_t;
using ForkRefNum = int16_t; // 0 = none

// File Manager result codes (the platform's published numbers).
enum : OSErr {
    noErr = 0,
    ioErr = -36,
    eofErr = -39,
    tmfoErr = -42, // too many files open
    fnfErr = -43,  // no such file
    paramErr = -50,
    rfNumErr = -51, // no such fork reference
    permErr = -54,  // no permission
    memFullErr = -108,
    errFSNotAFile = -1302,
    errFSBadFSRef = -1401,
};

enum : int8_t { fsRdPerm = 1 };
enum : uint16_t { fsFromStart = 1 };

struct HFSUniStr255 {
    uint16_t length = 0;
    uint16_t unicode[255] = {};
};

namespace platform {

/// Forks of files named by absolute paths. No call moves a file position; all may block for as long as the disk does.
class FileStore {
public:
    virtual ~FileStore() = default;
    /// fnfErr, permErr, errFSNotAFile (a directory or a device), tmfoErr, ioErr.
    virtual OSErr open(const std::string &path, ForkRefNum *fork) = 0;
    /// The size of now, in bytes.
    virtual OSErr size(ForkRefNum fork, int64_t *bytes) = 0;
    /// Copies count bytes from offset; eofErr when the fork ends before, with *actual bytes copied.
    virtual OSErr read(ForkRefNum fork, int64_t offset, ByteCount count, void *buffer, ByteCount *actual) = 0;
    virtual OSErr close(ForkRefNum fork) = 0;
};

/// Makes ref name the file at path, which must exist. fnfErr, permErr, paramErr (no path), memFullErr, ioErr.
OSErr makeFSRef(const char *path, ORB_FSRef *ref);

/// Makes ref name absolutePath, whether a file is there or not.
OSErr internFSRef(const std::string &absolutePath, ORB_FSRef *ref);

} // namespace platform

OSErr FSGetDataForkName(HFSUniStr255 *name);
/// Opens the data fork of the file that ref names. errFSBadFSRef when ref was not made by makeFSRef.
OSErr FSOpenFork(const ORB_FSRef *ref, uint16_t nameLength, const uint16_t *name, int8_t permission, ForkRefNum *fork);
OSErr FSGetForkSize(ForkRefNum fork, int64_t *bytes);
/// mode is fsFromStart.
OSErr FSReadFork(ForkRefNum fork, uint16_t mode, int64_t offset, ByteCount count, void *buffer, ByteCount *actual);
OSErr FSCloseFork(ForkRefNum fork);
