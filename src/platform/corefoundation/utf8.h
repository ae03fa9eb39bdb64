// UTF-8, by the bytes. Strings hold nothing else: it is checked when one is made, so that nobody who reads one has to.
#pragma once

#include <string_view>

namespace platform {

/// Bytes of text before the first that belongs to no well-formed character; text.size() when all are.
size_t validUtf8Length(std::string_view text) noexcept;

bool isAscii(std::string_view text) noexcept;

} // namespace platform
