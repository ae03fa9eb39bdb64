#include "platform/files/file_manager.h"

#include "platform/files/fsref.h"

using platform::backends;

OSErr FSGetDataForkName(HFSUniStr255 *name) {
    if (name == nullptr) return paramErr;
    *name = {}; // the data fork is the one without a name
    return noErr;
}

OSErr FSOpenFork(const ORB_FSRef *ref, uint16_t nameLength, const uint16_t *, int8_t permission, ForkRefNum *fork) {
    if (ref == nullptr || fork == nullptr || nameLength != 0) return paramErr;
    if (permission != fsRdPerm) return permErr;
    const std::string *path = platform::pathOfFSRef(*ref);
    if (path == nullptr) return errFSBadFSRef;
    return backends().files->open(*path, fork);
}

OSErr FSGetForkSize(ForkRefNum fork, int64_t *bytes) {
    if (bytes == nullptr) return paramErr;
    return backends().files->size(fork, bytes);
}

OSErr FSReadFork(ForkRefNum fork, uint16_t mode, int64_t offset, ByteCount count, void *buffer, ByteCount *actual) {
    ByteCount copied = 0;
    if (actual == nullptr) actual = &copied;
    *actual = 0;
    if (mode != fsFromStart || offset < 0 || (buffer == nullptr && count != 0)) return paramErr;
    return backends().files->read(fork, offset, count, buffer, actual);
}

OSErr FSCloseFork(ForkRefNum fork) { return backends().files->close(fork); }
