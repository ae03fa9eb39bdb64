// Whether this user may use a device's node. Asked of the system without opening it: the open of a serial port raises DTR,
// which a plotter may take for a start.
#pragma once

#include <string>
#include <sys/stat.h>

namespace host {

enum class NodeAccess { Ok, NoPermission, NoNode };

/// Whether the node may be read and written. NoNode also when it cannot be reached for another reason than rights.
NodeAccess accessTo(const std::string &node);

/// "ok", "no permission", "no node".
const char *accessText(NodeAccess access);

/// The name of the group that may read and write the node, for advice to join it; empty when there is none but root's.
std::string groupWithAccess(const struct stat &node);

} // namespace host
