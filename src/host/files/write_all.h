// Writing all of a text: write() alone may take a part of it, or be cut short by a signal.
#pragma once

#include <string_view>

namespace host {

/// False when not all of it could be written; errno says why. Goes on after a signal.
bool writeAll(int fd, std::string_view text);

} // namespace host
