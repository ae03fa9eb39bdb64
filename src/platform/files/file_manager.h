// The File Manager calls that the plug-in uses, and the class that carries them out.
//
// The plug-in reads its job and plot files by these calls. Here the data fork of a file is the file's content, the only fork
// that there is, and a reference stands for a path.
#pragma once

#include "orb/vectorix.h"
#include "platform/backends.h"

#include <cstdint>
#include <string>

using OSErr = int16_t;
using ByteCount = uint64_t;
using ForkRefNum = int16_t; // 0 = none

// File Manager result codes. Hosts see those of failures, so that the numbers stand in their header.
enum : OSErr {
    noErr = 0,
    ioErr = kORB_FileIOError,
    eofErr = kORB_FileEndOfFile,
    tmfoErr = kORB_FileTooManyOpen,
    fnfErr = kORB_FileNotFound,
    paramErr = kORB_FileBadArgument,
    rfNumErr = -51, // no such fork reference
    permErr = kORB_FileNoPermission,
    memFullErr = kORB_FileNoMemory,
    errFSNotAFile = kORB_FileNotAFile,
    errFSBadFSRef = kORB_FileBadReference,
};

enum : int8_t { fsRdPerm = 1 };
enum : uint16_t { fsFromStart = 1 };

struct HFSUniStr255 {
    uint16_t length = 0;
    uint16_t unicode[255] = {};
};

namespace platform {

/// Carries out the calls below, on regular files named by absolute paths. A fork has no position of its own: each read says
/// where it starts. Any call may block while the disk works, but not for a pipe or a device: those are refused.
class FileStore {
public:
    virtual ~FileStore() = default;
    /// Opens for reading; the caller closes *fork. fnfErr, permErr, errFSNotAFile (a directory, a pipe or a device),
    /// tmfoErr, memFullErr, ioErr.
    virtual OSErr open(const std::string &path, ForkRefNum *fork) = 0;
    /// The file's size at the time of the call, in bytes. rfNumErr for a fork that is not open, as with all calls below.
    virtual OSErr size(ForkRefNum fork, int64_t *bytes) = 0;
    /// Copies count bytes that start at offset (in bytes) into buffer, and stores in *actual how many it copied: fewer than
    /// count only on failure, with eofErr when the file ends before.
    virtual OSErr read(ForkRefNum fork, int64_t offset, ByteCount count, void *buffer, ByteCount *actual) = 0;
    virtual OSErr close(ForkRefNum fork) = 0;
};

/// Makes ref name the file at path, absolute or from the working directory, which must exist. It is not opened, and the path
/// is copied. fnfErr, permErr, paramErr (no path), memFullErr, ioErr.
OSErr makeFSRef(const char *path, ORB_FSRef *ref);

/// Makes ref name absolutePath, whether there is a file or not. paramErr for an empty path, memFullErr.
OSErr internFSRef(const std::string &absolutePath, ORB_FSRef *ref);

} // namespace platform

OSErr FSGetDataForkName(HFSUniStr255 *name);
/// Opens the data fork of the file that ref names. errFSBadFSRef when ref was not made in this process.
OSErr FSOpenFork(const ORB_FSRef *ref, uint16_t nameLength, const uint16_t *name, int8_t permission, ForkRefNum *fork);
OSErr FSGetForkSize(ForkRefNum fork, int64_t *bytes);
/// mode must be fsFromStart: offset counts from the start of the file. actual may be nullptr.
OSErr FSReadFork(ForkRefNum fork, uint16_t mode, int64_t offset, ByteCount count, void *buffer, ByteCount *actual);
OSErr FSCloseFork(ForkRefNum fork);
