// The right to a device's node.
#pragma once

#include <string>
#include <sys/stat.h>

namespace host {

enum class NodeAccess { Ok, NoPermission, NoNode };

/// To read and write; opens nothing.
NodeAccess accessTo(const std::string &node);

/// "ok", "no permission", "no node".
const char *describe(NodeAccess access);

/// The group that may read and write the node, other than root's; empty for none.
std::string groupWithAccess(const struct stat &node);

} // namespace host
