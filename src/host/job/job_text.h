// The texts inside a job file's elements, taken just as strictly as the plug-in takes them: a looser check would pass a file
// that then fails to print, a stricter one would refuse a file that prints.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace host {

/// The character that "&NAME;" stands for, in UTF-8: one of XML's own five, or one by its number. Empty for none.
std::string characterNamed(std::string_view name);

/// False unless the whole text is a number, with white space around it or none.
bool readNumber(std::string_view text, double &value);
/// The same for a whole number; hexadecimal behind "0x".
bool readNumber(std::string_view text, int64_t &value);

/// True for white space alone, or nothing.
bool isSpace(std::string_view text);
/// YYYY-MM-DDThh:mm:ssZ, with white space around it or none.
bool isDate(std::string_view text);
/// Base 64, with white space anywhere.
bool isBase64(std::string_view text);

} // namespace host
