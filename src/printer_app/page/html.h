// Texts on their way into HTML. Names and messages come from anywhere and may hold any bytes: what comes out is well-formed
// UTF-8 that neither ends what it stands in, nor steers the text around it.
#pragma once

#include <string>
#include <string_view>

namespace printer_app {

/// For text and for attributes in quotes. What is no UTF-8, controls something, or turns the direction of writing becomes
/// U+FFFD.
std::string escaped(std::string_view text);

/// A name that may be written from right to left, and leaves what stands beside it where it is.
std::string named(std::string_view name);

/// For the query of an address.
std::string inAddress(std::string_view text);

} // namespace printer_app
