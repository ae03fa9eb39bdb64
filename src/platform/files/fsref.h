// What lies behind a file reference.
//
// A reference is 80 bytes that a host copies about and hands back; a path may be longer. So the paths are kept here, each
// once and for the life of the process, and a reference holds a path's number and checksum: one of another process finds
// nothing, unless it names the same file.
#pragma once

#include "platform/files/file_manager.h"

namespace platform {

/// The absolute path that ref names; nullptr when ref was not made by this process. Valid as long as the process.
const std::string *pathOfFSRef(const ORB_FSRef &ref) noexcept;

/// The File Manager's code for an errno.
OSErr fileErrorOf(int errnoValue) noexcept;

} // namespace platform
