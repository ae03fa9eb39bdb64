// What lies behind a file reference.
#pragma once

#include "platform/files/file_manager.h"

namespace platform {

/// The absolute path that ref names; nullptr when ref was not made by this process. Valid as long as the process.
const std::string *pathOfFSRef(const ORB_FSRef &ref) noexcept;

/// The File Manager's code for an errno.
OSErr fileErrorOf(int errnoValue) noexcept;

} // namespace platform
