// Writing all of a text.
#pragma once

#include <string_view>

namespace host {

/// False when not all of it could be written; errno says why. A signal does not end it.
bool writeAll(int fd, std::string_view text);

} // namespace host
