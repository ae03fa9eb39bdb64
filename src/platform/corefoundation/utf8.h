// UTF-8, by the bytes.
#pragma once

#include <string_view>

namespace platform {

/// Bytes of text before the first that belongs to no well-formed character; text.size() when all are.
size_t validUtf8Length(std::string_view text) noexcept;

bool isAscii(std::string_view text) noexcept;

} // namespace platform
