// UTF-8, by the bytes: lists are refused that are of anything else, and objects made of other texts.
#pragma once

#include <string_view>

namespace property_list {

/// Bytes of text before the first that belongs to no well-formed character; text.size() when all are.
size_t validUtf8Length(std::string_view text) noexcept;

bool isAscii(std::string_view text) noexcept;

} // namespace property_list
